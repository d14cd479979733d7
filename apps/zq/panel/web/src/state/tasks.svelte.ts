// The tasks in their order, and the lines of their import logs that have come so far.
import type { Task, TaskLogLine } from '../api/types.ts';

const isRunning = (task: Task): boolean => ['waiting', 'running', 'cancelling'].includes(task.state);

class TasksState {
  list = $state.raw<Task[]>([]);
  logs = $state.raw<Record<number, TaskLogLine[]>>({});
  running = $derived(this.list.filter(isRunning).length);

  // How many downloads of that repository run.
  fetchesOf(repository: string): number {
    return this.list.filter((task) => task.kind === 'fetch' && task.repository === repository && isRunning(task)).length;
  }

  set(list: Task[]): void {
    this.list = list;
  }

  take(task: Task): void {
    const known = this.list.some((other) => other.task === task.task);
    this.list = known
      ? this.list.map((other) => (other.task === task.task ? task : other))
      : [...this.list, task];
  }

  // Lines may come twice: by event, and with an answer to a request.
  addLines(task: number, lines: TaskLogLine[]): void {
    const had = this.logs[task] ?? [];
    const last = had.at(-1)?.number ?? 0;
    const fresh = lines.filter((line) => line.number > last);
    if (fresh.length > 0) {
      this.logs = { ...this.logs, [task]: [...had, ...fresh] };
    }
  }

  // All lines so far, with those that events brought while they were asked for.
  replaceLog(task: number, lines: TaskLogLine[]): void {
    const last = lines.at(-1)?.number ?? 0;
    const later = (this.logs[task] ?? []).filter((line) => line.number > last);
    this.logs = { ...this.logs, [task]: [...lines, ...later] };
  }

  // Line numbers and tasks may be of another run from now on.
  forgetLogs(): void {
    this.logs = {};
  }
}

export const tasks = new TasksState();
