// The page as a whole: how it comes up, what it hears from the program, and what it does when the program is gone.
import * as api from '../api/client.ts';
import { asApiError } from '../api/ApiError.ts';
import { EventStream, type Connection } from '../api/events.ts';
import type { Purchase, Repository, Task } from '../api/types.ts';
import { currentLanguage, loadTexts, t } from '../i18n/texts.svelte.ts';
import { basket } from './basket.svelte.ts';
import { notices } from './notices.svelte.ts';
import { project } from './project.svelte.ts';
import { purchases } from './purchases.svelte.ts';
import { repositories } from './repositories.svelte.ts';
import { results } from './results.svelte.ts';
import { search } from './search.svelte.ts';
import { settings } from './settings.svelte.ts';
import { tasks } from './tasks.svelte.ts';
import { Settle } from '../lib/settle.ts';

export type AppPhase = 'starting' | 'ready' | 'notEntered' | 'failed';

class App {
  phase = $state<AppPhase>('starting');
  failureText = $state('');
  connection = $state<Connection>('connecting');
  version = $state('');
  #reading = false;
  #wasLost = false;
  #refresh = new Settle(250, () => results.refresh());

  #stream = new EventStream(
    {
      reset: () => void this.#readState('again'),
      repository: (repository) => this.#onRepository(repository),
      options: ({ repository }) => search.optionsChanged(repository),
      project: (next) => {
        project.set(next);
        this.#refresh.later();
      },
      task: (task) => this.#onTask(task),
      log: ({ task, lines }) => tasks.addLines(task, lines),
      basket: ({ repository }) => {
        if (repository === repositories.shortName) {
          void basket.load();
        }
      },
      purchase: ({ repository, purchase }) => this.#onPurchase(repository, purchase),
      settings: (next) => {
        settings.set(next);
        void this.#followLanguage(next.language);
      },
    },
    (connection) => this.#onConnection(connection),
  );

  // The stream is opened before the state is read, so that nothing is missed between the two.
  async start(): Promise<void> {
    this.#stream.open();
    await this.#readState();
    window.addEventListener('popstate', (event) => void search.onPopState(event.state));
    window.addEventListener('pagehide', () => search.keepPlace());
  }

  retry(): void {
    this.#stream.retry();
    if (this.phase !== 'ready') {
      this.phase = 'starting';
      void this.#readState();
    }
  }

  // With "again" the search is repeated; else it is where it had failed for want of the program.
  async #readState(repeat: 'again' | 'keep' = 'keep'): Promise<void> {
    if (this.#reading) {
      return;
    }
    this.#reading = true;
    const first = this.phase !== 'ready';
    try {
      const state = await api.getState();
      this.#stream.known = state.event;
      this.version = state.version;
      if (first || state.language !== currentLanguage()) {
        await loadTexts(state.language);
      }
      settings.setTheme(state.theme);
      repositories.set(state.repositories);
      tasks.set(state.tasks);
      tasks.forgetLogs();
      project.set(state.project);
      this.phase = 'ready';
    } catch (error) {
      this.#onFailure(error);
      return;
    } finally {
      this.#reading = false;
    }
    void settings.load();
    if (repositories.shortName !== '') {
      void basket.load();
      void purchases.load(repositories.shortName);
      await this.#showResults(first ? 'first' : repeat);
    }
  }

  async #showResults(how: 'first' | 'again' | 'keep'): Promise<void> {
    if (how === 'first') {
      await search.start();
    } else if (how === 'again' || results.failure?.code === 'unreachable') {
      await search.run();
    } else {
      results.retryPages();
      results.refresh();
    }
  }

  #onFailure(error: unknown): void {
    const failure = asApiError(error);
    if (failure.code === 'not_entered') {
      this.phase = 'notEntered';
      this.#stream.close();
    } else if (this.phase !== 'ready') {
      this.phase = 'failed';
      this.failureText = failure.text;
    }
  }

  // A stream that ends may mean a program that was started anew, whose cookie this page does not have.
  #onConnection(connection: Connection): void {
    const before = this.connection;
    this.connection = connection;
    this.#wasLost ||= connection === 'lost' && this.phase === 'ready';
    if (connection === 'lost' && before !== 'lost' && this.phase === 'ready') {
      api.getState().catch((error: unknown) => this.#onFailure(error));
    }
    if (connection === 'live' && this.#wasLost) {
      this.#wasLost = false;
      notices.say(t('connection.back'));
      results.pictureAttempt++;
      // What came before the first event of a stream is in no event that it can be given afterwards.
      void this.#readState();
    }
  }

  #onRepository(repository: Repository): void {
    const before = repositories.find(repository.shortName);
    repositories.replace(repository);
    if (repository.shortName !== repositories.shortName) {
      return;
    }
    void basket.load();
    if (before?.user !== repository.user) {
      void search.run();
    } else {
      this.#refresh.later();
    }
  }

  #onTask(task: Task): void {
    const before = tasks.list.find((other) => other.task === task.task);
    tasks.take(task);
    if (before?.state === task.state) {
      return;
    }
    if (task.state === 'done') {
      notices.add('good', t('tasks.ended_well', { name: task.name }));
      this.#refresh.later();
    } else if (task.state === 'failed') {
      notices.add('problem', t('tasks.ended_badly', { name: task.name, text: task.text }));
    }
  }

  #onPurchase(repository: string, purchase: Purchase): void {
    purchases.take(repository, purchase);
    if (purchase.state === 'done') {
      this.#refresh.later();
    }
  }

  async #followLanguage(language: string): Promise<void> {
    if (language !== currentLanguage()) {
      await loadTexts(language).catch(() => undefined);
    }
  }
}

export const app = new App();
