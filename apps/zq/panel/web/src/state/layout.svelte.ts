// What of the page is open, and how much room there is.

export type PanelName = 'basket' | 'tasks' | 'log' | 'settings';
export type Room = 'narrow' | 'medium' | 'wide' | 'huge';

class Layout {
  room = $state<Room>('wide');
  panel = $state<PanelName | null>(null);
  signIn = $state(false);
  keyList = $state(false);
  // Where the focus goes back to when the panel or dialog is closed.
  #opener: HTMLElement | null = null;

  measure(width: number): void {
    this.room = width < 720 ? 'narrow' : width < 1100 ? 'medium' : width < 1640 ? 'wide' : 'huge';
  }

  open(panel: PanelName): void {
    this.#opener = document.activeElement instanceof HTMLElement ? document.activeElement : null;
    this.panel = panel;
  }

  close(): void {
    this.panel = null;
    this.#opener?.focus();
    this.#opener = null;
  }

  toggle(panel: PanelName): void {
    if (this.panel === panel) {
      this.close();
    } else {
      this.open(panel);
    }
  }
}

export const layout = new Layout();
