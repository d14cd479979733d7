// Plays a preview under the pointer: its position across the picture is the position in the film. One film at a time
// in the whole page, made when it is first wanted.
import { withQuality } from '../state/previews.svelte.ts';
import './scrub.css';

const dwell_ms = 140;

export class HoverScrub {
  #video: HTMLVideoElement | null = null;
  #line: HTMLElement | null = null;
  #picture: HTMLElement | null = null;
  #timer: ReturnType<typeof setTimeout> | undefined;
  #fraction = 0;

  // The pointer is over that picture, at that part of its width. A pointer that only passes begins nothing.
  over(picture: HTMLElement, address: string, fraction: number): void {
    this.#fraction = Math.min(Math.max(fraction, 0), 1);
    if (picture !== this.#picture) {
      this.leave();
      this.#picture = picture;
      this.#timer = setTimeout(() => this.#begin(picture, address), dwell_ms);
      return;
    }
    this.#line?.style.setProperty('--scrub', String(this.#fraction));
    this.#seek();
  }

  leave(): void {
    clearTimeout(this.#timer);
    this.#picture = null;
    this.#line?.remove();
    if (this.#video?.hasAttribute('src')) {
      this.#video.remove();
      this.#video.classList.remove('shown');
      // Ends the transfer.
      this.#video.removeAttribute('src');
      this.#video.load();
    }
  }

  #begin(picture: HTMLElement, address: string): void {
    const video = (this.#video ??= this.#makeVideo());
    const line = (this.#line ??= makeLine());
    line.style.setProperty('--scrub', String(this.#fraction));
    video.src = withQuality(address);
    picture.append(video, line);
  }

  #makeVideo(): HTMLVideoElement {
    const video = document.createElement('video');
    video.className = 'scrub-video';
    video.muted = true;
    video.playsInline = true;
    video.preload = 'auto';
    video.disablePictureInPicture = true;
    video.setAttribute('aria-hidden', 'true');
    video.tabIndex = -1;
    video.addEventListener('loadedmetadata', () => this.#seek());
    video.addEventListener('seeked', () => {
      video.classList.add('shown');
      this.#seek();
    });
    video.addEventListener('error', () => video.classList.remove('shown'));
    return video;
  }

  // One seek at a time: where the pointer is by the end of one is where the next one goes.
  #seek(): void {
    const video = this.#video;
    if (video === null || video.seeking || !Number.isFinite(video.duration)) {
      return;
    }
    const wanted = Math.min(this.#fraction * video.duration, Math.max(0, video.duration - 0.05));
    if (Math.abs(wanted - video.currentTime) > 0.02 || !video.classList.contains('shown')) {
      video.currentTime = wanted;
    }
  }
}

function makeLine(): HTMLElement {
  const line = document.createElement('div');
  line.className = 'scrub-line';
  return line;
}
