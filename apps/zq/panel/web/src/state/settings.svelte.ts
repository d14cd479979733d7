// The program's settings, and what of them the page itself follows: theme, picture size, view.
import { isAbort } from '../api/ApiError.ts';
import * as api from '../api/client.ts';
import type { ChangeableSettings, Settings, Theme } from '../api/types.ts';
import type { Said } from '../lib/wording.ts';
import { attempt, saidOf } from './failure.ts';

const saveAfter_ms = 400;

class SettingsState {
  settings = $state.raw<Settings | null>(null);
  theme = $state<Theme>('system');
  // What of the two is on screen.
  isDark = $state(false);
  readonly #system = window.matchMedia('(prefers-color-scheme: dark)');
  #waiting: ChangeableSettings = {};
  #timer: ReturnType<typeof setTimeout> | undefined;

  constructor() {
    this.#system.addEventListener('change', () => this.setTheme(this.theme));
    this.setTheme(this.theme);
  }

  set(settings: Settings): void {
    // What a person has just chosen and is on its way wins over an answer that does not have it yet.
    this.settings = { ...settings, ...this.#waiting };
    this.setTheme(this.settings.theme);
  }

  setTheme(theme: Theme): void {
    this.theme = theme;
    this.isDark = theme === 'dark' || (theme === 'system' && this.#system.matches);
    document.documentElement.dataset['theme'] = this.isDark ? 'dark' : 'light';
  }

  async load(): Promise<void> {
    const settings = await attempt(() => api.getSettings());
    if (settings !== undefined) {
      this.set(settings);
    }
  }

  // Shown at once and saved a moment later, so that a slider may be dragged.
  changeSoon(change: ChangeableSettings): void {
    this.#waiting = { ...this.#waiting, ...change };
    if (this.settings !== null) {
      this.settings = { ...this.settings, ...change };
    }
    if (change.theme !== undefined) {
      this.setTheme(change.theme);
    }
    clearTimeout(this.#timer);
    this.#timer = setTimeout(() => void this.#save(), saveAfter_ms);
  }

  // Saved at once. True where the program took it.
  async change(change: ChangeableSettings): Promise<boolean> {
    const settings = await attempt(() => api.changeSettings(change));
    if (settings !== undefined) {
      this.set(settings);
    }
    return settings !== undefined;
  }

  // The same for a field that says itself why it was refused: null where the program took it.
  async tryChange(change: ChangeableSettings): Promise<Said | null> {
    try {
      this.set(await api.changeSettings(change));
    } catch (error) {
      return isAbort(error) ? null : saidOf(error);
    }
    return null;
  }

  async #save(): Promise<void> {
    const change = this.#waiting;
    this.#waiting = {};
    await this.change(change);
  }
}

export const settings = new SettingsState();
