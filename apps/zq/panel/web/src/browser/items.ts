// One clip in the results, whatever it looks like there.
import type { Clip, Column } from '../api/types.ts';

export interface Item {
  repository: string;
  clip: Clip | undefined; // undefined: its page has not come yet
  index: number;
  columns: readonly Column[];
  active: boolean; // the one that the focus goes to
  chosen: boolean;
  inBasket: boolean;
  playing: boolean;
  showsActions: boolean; // made only where somebody is: most clips of a long scroll pass by
}

// What the view needs of an item's element, for the focus, for keys and presses, and for dragging.
export function itemAttributes({ clip, index, active, chosen }: Item) {
  return {
    tabindex: active ? 0 : -1,
    'aria-selected': chosen,
    'aria-busy': clip === undefined,
    'data-first-focus': active ? '' : undefined,
    'data-index': index,
    draggable: clip !== undefined,
  };
}

// Whether there is a sign to show: a frame for none costs something in every tile that scrolls by.
export function hasSigns(clip: Clip, inBasket: boolean): boolean {
  return clip.owned || inBasket || clip.state !== '';
}

// What a row asks of the view that it stands in.
export interface View {
  itemAt(index: number): Item;
  isOnScreen(row: number): boolean; // at this moment; nothing is told when it changes
  isPassing(): boolean; // one scrolls so fast that nobody sees a picture
}
