// The list of keys that "?" shows, as data. A text is the key of a text; keys stand as they are printed on a keyboard,
// and the alternatives of one row beside each other.

export interface KeyRow {
  keys: string[];
  text: string;
}

export interface KeySection {
  title: string;
  rows: KeyRow[];
}

export const keyTable: KeySection[] = [
  {
    title: 'keys.page',
    rows: [
      { keys: ['/'], text: 'keys.to_search' },
      { keys: ['↓'], text: 'keys.to_results' },
      { keys: ['F6'], text: 'keys.next_region' },
      { keys: ['G'], text: 'keys.switch_view' },
      { keys: ['Alt+←', 'Alt+→'], text: 'keys.past_searches' },
      { keys: ['Esc'], text: 'keys.close' },
      { keys: ['?'], text: 'keys.list' },
    ],
  },
  {
    title: 'keys.results',
    rows: [
      { keys: ['←', '→', '↑', '↓'], text: 'keys.move' },
      { keys: ['Home', 'End'], text: 'keys.ends' },
      { keys: ['PgUp', 'PgDn'], text: 'keys.pages' },
      { keys: ['Enter'], text: 'keys.play' },
      { keys: ['Space'], text: 'keys.play_here' },
      { keys: ['P'], text: 'keys.place' },
      { keys: ['B'], text: 'keys.basket' },
    ],
  },
  {
    title: 'keys.player',
    rows: [
      { keys: ['J', 'K', 'L'], text: 'keys.shuttle' },
      { keys: ['Space'], text: 'keys.play_pause' },
      { keys: ['←', '→'], text: 'keys.frames' },
      { keys: ['Home', 'End'], text: 'keys.frame_ends' },
      { keys: ['↑', '↓'], text: 'keys.cuts' },
      { keys: ['I', 'O'], text: 'keys.mark' },
      { keys: ['X'], text: 'keys.clear_marks' },
      { keys: ['M'], text: 'keys.mute' },
      { keys: ['P'], text: 'keys.place' },
      { keys: ['Shift+P'], text: 'keys.place_before' },
      { keys: ['B'], text: 'keys.basket' },
      { keys: ['F'], text: 'keys.match' },
    ],
  },
  {
    title: 'keys.sequence',
    rows: [
      { keys: ['←', '→'], text: 'keys.choose_piece' },
      { keys: ['Home', 'End'], text: 'keys.piece_ends' },
      { keys: ['Space'], text: 'keys.play_sequence' },
      { keys: ['↑', '↓'], text: 'keys.cuts' },
      { keys: ['Enter'], text: 'keys.play_piece' },
      { keys: ['Alt+←', 'Alt+→'], text: 'keys.reorder' },
      { keys: ['[', ']'], text: 'keys.trim' },
      { keys: ['E'], text: 'keys.edge' },
      { keys: ['Del', 'Backspace'], text: 'keys.remove_piece' },
      { keys: ['+', '−'], text: 'keys.zoom' },
      { keys: ['0'], text: 'keys.fit' },
      { keys: ['Esc'], text: 'keys.let_go' },
      { keys: ['Ctrl+Z'], text: 'keys.undo' },
      { keys: ['Ctrl+Y'], text: 'keys.redo' },
    ],
  },
];
