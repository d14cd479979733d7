// What part of the sequence the strip shows, and at which scale.
import { indexAt, spansOf } from '../../lib/sequenceTime.ts';
import { anchorOf, bounded, fittingScale, keptScroll, layOut, mostScale, readableScale } from '../../lib/stripLayout.ts';
import { framesPerSecond } from '../../lib/timecode.ts';
import { project } from '../../state/project.svelte.ts';
import { sequencePlayback } from '../player/SequencePlayback.svelte.ts';
import { selection } from './selection.svelte.ts';
import { trim } from './trim.svelte.ts';

export const endSpace = 24; // pixels behind the last piece
const step = 1.5;
const margin = 40; // pixels that are left between the playhead and the edge of the view

class StripView {
  width = $state(0);
  scroll = $state(0);
  scroller: HTMLElement | null = null;
  // Pixels for a second; null: what reads well.
  #chosen = $state<number | null>(null);
  #turned = 0;
  #scrollTo: number | null = null; // what a change of scale leaves to be done

  pieces = $derived(project.sequence?.pieces ?? []);
  perSecond = $derived(framesPerSecond(project.sequence?.rate) ?? 25);
  // As they are while one is trimmed, and as they were: a trim does not change the scale under the pointer.
  spans = $derived(spansOf(this.pieces, project.sequence?.duration ?? 0, this.pieces.map((piece) => trim.timesOf(piece))));
  #resting = $derived(spansOf(this.pieces, project.sequence?.duration ?? 0));
  fitting = $derived(fittingScale(this.#resting.at(-1)?.end ?? 0, this.width - endSpace));
  scale = $derived(Math.max(this.#chosen ?? readableScale(this.#resting, this.width - endSpace), this.fitting));
  boxes = $derived(layOut(this.spans, this.scale));
  total = $derived((this.spans.at(-1)?.end ?? 0) * this.scale);
  // The piece that begins left of the view and ends within it.
  entering = $derived(this.scroll > 0 ? indexAt(this.spans, this.scroll / this.scale) : -1);
  playhead = $derived(sequencePlayback.time * this.scale);

  // Where the scale is between that which shows all and the largest, from 0 to 1.
  get zoom(): number {
    const range = Math.log(mostScale / this.fitting);
    return range <= 0 ? 0 : Math.log(this.scale / this.fitting) / range;
  }
  get isFitting(): boolean {
    return this.scale <= this.fitting * 1.001;
  }
  get isLargest(): boolean {
    return this.scale >= mostScale * 0.999;
  }

  setZoom(zoom: number): void {
    this.#setScale(this.fitting * (mostScale / this.fitting) ** Math.min(Math.max(zoom, 0), 1));
  }

  // `anchor`: the place in the view, in pixels, that stays where it is.
  zoomBy(steps: number, anchor?: number): void {
    this.#setScale(this.scale * step ** steps, anchor);
  }

  // The same for a wheel that turns faster than the screen draws.
  zoomSoon(steps: number, anchor: number): void {
    if (this.#turned === 0) {
      requestAnimationFrame(() => {
        const turned = this.#turned;
        this.#turned = 0;
        this.zoomBy(turned, anchor);
      });
    }
    this.#turned += steps;
  }

  // Shows all of it; where it does so already, what reads well.
  fit(): void {
    this.#setScale(this.isFitting ? readableScale(this.#resting, this.width - endSpace) : this.fitting);
  }

  // Another sequence begins at its beginning.
  reset(): void {
    this.#chosen = null;
    this.scroller?.scrollTo(0, 0);
  }

  timeAt(x: number): number {
    return Math.min(Math.max(x / this.scale, 0), this.spans.at(-1)?.end ?? 0);
  }

  // Leafs on when the playhead leaves the view.
  follow(): void {
    const { scroller, playhead } = this;
    if (scroller !== null && (playhead < scroller.scrollLeft || playhead > scroller.scrollLeft + this.width - margin / 4)) {
      scroller.scrollLeft = Math.max(0, playhead - margin);
    }
  }

  #setScale(wanted: number, anchor?: number): void {
    const before = this.scale;
    const scroll = this.#scrollTo ?? this.scroll;
    const index = selection.piece?.index ?? -1;
    const piece = this.boxes[index];
    const middle = piece === undefined ? null : piece.left + piece.width / 2;
    const held = anchor ?? anchorOf([middle, this.playhead], scroll, this.width);
    this.#chosen = Math.max(bounded(wanted), this.fitting);
    let to = keptScroll(scroll, held, before, this.scale);
    // The piece that is worked on does not grow out of the view as long as there is room for it.
    const grown = this.boxes[index];
    if (anchor === undefined && middle === held + scroll && grown !== undefined && grown.width <= this.width) {
      to = Math.min(Math.max(to, grown.left + grown.width - this.width), grown.left);
    }
    this.#scrollTo = to;
  }

  // For the strip, once it is as wide as the new scale makes it.
  settle(): void {
    const { scroller } = this;
    if (scroller !== null && this.#scrollTo !== null) {
      scroller.scrollLeft = this.#scrollTo;
      this.scroll = scroller.scrollLeft;
      this.#scrollTo = null;
    }
  }
}

export const view = new StripView();
