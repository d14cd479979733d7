// A clip of the results that a finger carries into the strip: it rests on the clip, then drags it. One that moves at once
// scrolls the results. Where it would go is marked as it is for what a mouse drags.
import type { DraggedClip } from '../../lib/draggedClip.ts';
import { FingerRest } from '../../lib/FingerRest.ts';
import { project } from '../../state/project.svelte.ts';
import { dropClip } from './actions.ts';
import { pieceDrag } from './pieceDrag.svelte.ts';
import { view } from './view.svelte.ts';

interface Carried {
  clip: DraggedClip;
  pointer: number;
  x: number; // in the page's view
  y: number;
}

class ClipTouch {
  carried = $state.raw<Carried | null>(null);
  #rest = new FingerRest();

  // For the element in which the clips are; `clipAt` tells the one of a target. Gives what detaches it.
  attach(element: HTMLElement, clipAt: (target: EventTarget | null) => DraggedClip | null): () => void {
    const keep = (event: Event): void => {
      if (this.carried !== null && event.cancelable) {
        event.preventDefault();
      }
    };
    const down = (event: PointerEvent): void => {
      const clip = event.pointerType === 'touch' && event.isPrimary && project.project.writable ? clipAt(event.target) : null;
      if (clip !== null) {
        this.#rest.begin(event, () => this.#carry({ clip, pointer: event.pointerId, x: event.clientX, y: event.clientY }));
      }
    };
    const move = (event: PointerEvent): void => {
      this.#rest.move(event);
      if (this.carried?.pointer === event.pointerId) {
        this.#carry({ ...this.carried, x: event.clientX, y: event.clientY });
      }
    };
    const up = (event: PointerEvent): void => {
      this.#rest.end();
      if (this.carried?.pointer === event.pointerId) {
        this.#drop();
      }
    };
    const cancel = (): void => {
      this.#rest.end();
      this.#leave();
    };
    const options = { passive: false, capture: true };
    const listeners: [string, (event: never) => void][] = [
      ['pointerdown', down],
      ['pointermove', move],
      ['pointerup', up],
      ['pointercancel', cancel],
      // While a finger has a clip, its movements are not the browser's, nor is the press a menu.
      ['touchmove', keep],
      ['contextmenu', keep],
      ['dragstart', keep],
    ];
    listeners.forEach(([name, listener]) => element.addEventListener(name, listener as EventListener, options));
    return () => {
      cancel();
      listeners.forEach(([name, listener]) => element.removeEventListener(name, listener as EventListener, options));
    };
  }

  #carry(carried: Carried): void {
    this.carried = carried;
    const box = view.scroller?.getBoundingClientRect();
    const { x, y } = carried;
    if (box !== undefined && x >= box.left && x <= box.right && y >= box.top && y <= box.bottom) {
      pieceDrag.over(x);
    } else {
      pieceDrag.leave();
    }
  }

  #drop(): void {
    const { carried } = this;
    const { place } = pieceDrag;
    this.#leave();
    if (carried !== null && place !== null) {
      dropClip(carried.clip, place);
    }
  }

  #leave(): void {
    if (this.carried !== null) {
      this.carried = null;
      pieceDrag.leave();
    }
  }
}

export const clipTouch = new ClipTouch();
