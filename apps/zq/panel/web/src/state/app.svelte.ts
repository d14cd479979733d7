// The page as a whole: how it comes up, what it hears from the program, and what it does when the program is gone.
import * as api from '../api/client.ts';
import { asApiError } from '../api/ApiError.ts';
import { EventStream, type Connection } from '../api/events.ts';
import type { Purchase, PurchaseState, Repository, Task } from '../api/types.ts';
import { currentLanguage, loadTexts, t } from '../i18n/texts.svelte.ts';
import { say } from '../i18n/say.ts';
import { purchaseSaid, taskEndSaid, taskSaid } from '../lib/wording.ts';
import { basket } from './basket.svelte.ts';
import { layout } from './layout.svelte.ts';
import { notices, type Notice } from './notices.svelte.ts';
import { previewTroubles } from './previewTroubles.svelte.ts';
import { project } from './project.svelte.ts';
import { purchases } from './purchases.svelte.ts';
import { repositories } from './repositories.svelte.ts';
import { results } from './results.svelte.ts';
import { search } from './search.svelte.ts';
import { settings } from './settings.svelte.ts';
import { tasks } from './tasks.svelte.ts';
import { Settle } from '../lib/settle.ts';

export type AppPhase = 'starting' | 'ready' | 'notEntered' | 'failed';

const noticeOf: Record<PurchaseState, Notice['kind']> = {
  running: 'info',
  done: 'good',
  waiting: 'info',
  doubtful: 'problem',
  refused: 'problem',
};

// Whoever only looks elsewhere for a moment has heard everything.
const hiddenFor_ms = 1000;

class App {
  phase = $state<AppPhase>('starting');
  failureText = $state('');
  connection = $state<Connection>('connecting');
  version = $state('');
  #isReading = false;
  #isStale = false;
  #repeats = false;
  #wasLost = false;
  #hiding: ReturnType<typeof setTimeout> | undefined;
  #refresh = new Settle(250, () => results.refresh());

  #stream = new EventStream(
    {
      reset: () => void this.#readState('again'),
      repository: (repository) => this.#onRepository(repository),
      options: ({ repository, results: depend }) => search.optionsChanged(repository, depend),
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
      preview: (news) => previewTroubles.take(news),
      settings: (next) => {
        settings.set(next);
        void this.#followLanguage(next.language);
      },
    },
    (connection) => this.#onConnection(connection),
  );

  // The stream is open before the state is read, so that nothing is missed between the two.
  async start(): Promise<void> {
    await this.#stream.open();
    await this.#readState();
    window.addEventListener('popstate', (event) => void search.onPopState(event.state));
    window.addEventListener('pagehide', () => search.keepPlace());
    document.addEventListener('visibilitychange', () => this.#onVisibility());
    this.#onVisibility();
  }

  // A page that nobody sees leaves its connection to those that somebody does.
  #onVisibility(): void {
    clearTimeout(this.#hiding);
    if (document.visibilityState === 'hidden') {
      this.#hiding = setTimeout(() => this.#stream.rest(), hiddenFor_ms);
    } else {
      this.#stream.wake();
    }
  }

  retry(): void {
    this.#stream.retry();
    if (this.phase !== 'ready') {
      this.phase = 'starting';
      void this.#readState();
    }
  }

  // With "again" the search is repeated; else it is where it had failed for want of the program. What is asked for
  // while a state is on its way is a newer one, which is read behind it.
  async #readState(repeat: 'again' | 'keep' = 'keep'): Promise<void> {
    this.#repeats ||= repeat === 'again';
    if (this.#isReading) {
      this.#isStale = true;
      return;
    }
    const first = this.phase !== 'ready';
    let isRead = false;
    this.#isReading = true;
    do {
      this.#isStale = false;
      isRead = await this.#readOnce(first);
    } while (isRead && this.#isStale);
    this.#isReading = false;
    if (!isRead) {
      return;
    }
    const how = first ? 'first' : this.#repeats ? 'again' : 'keep';
    this.#repeats = false;
    void settings.load();
    if (repositories.shortName !== '') {
      void basket.load();
      void purchases.load(repositories.shortName);
      await this.#showResults(how);
    }
  }

  // False where the state could not be read.
  async #readOnce(first: boolean): Promise<boolean> {
    this.#stream.hold();
    try {
      const state = await api.getState();
      this.version = state.version;
      if (first || state.language !== currentLanguage()) {
        await loadTexts();
      }
      settings.setTheme(state.theme);
      repositories.set(state.repositories);
      tasks.set(state.tasks);
      tasks.forgetLogs();
      previewTroubles.forget();
      project.set(state.project);
      this.phase = 'ready';
      this.#stream.release(state.event);
      return true;
    } catch (error) {
      this.#stream.releaseUnread();
      this.#onFailure(error);
      return false;
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
      // Without texts only the program's own words are there.
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
    const name = say(taskSaid(task));
    const end = taskEndSaid(task);
    if (task.state === 'done') {
      notices.add('good', t('tasks.ended_well', { name, text: end === null ? t('tasks.state.done') : say(end) }));
      this.#refresh.later();
    } else if (task.state === 'failed') {
      notices.add('problem', t('tasks.ended_badly', { name, text: end === null ? t('tasks.state.failed') : say(end) }));
    }
  }

  #onPurchase(repository: string, purchase: Purchase): void {
    const before = purchases.of(repository).find((other) => other.key === purchase.key);
    purchases.take(repository, purchase);
    if (purchase.state === 'done') {
      this.#refresh.later();
    }
    if (before?.state !== purchase.state && purchase.state !== 'running') {
      const said = purchaseSaid(purchase);
      if (layout.panel === 'basket') {
        notices.say(say(said));
      } else {
        notices.tell(noticeOf[purchase.state], said);
      }
    }
  }

  async #followLanguage(language: string): Promise<void> {
    if (language !== currentLanguage()) {
      await loadTexts().catch(() => undefined);
    }
  }
}

export const app = new App();
