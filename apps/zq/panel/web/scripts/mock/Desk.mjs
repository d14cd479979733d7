// The project, its sequences, and the tasks of the stand-in.
import { ApiError, delay } from './http.mjs';

export class Desk {
  constructor(repositories, say) {
    this.repositories = repositories;
    this.say = say;
    this.revision = 1;
    this.sequences = new Map();
    this.past = [];
    this.future = [];
    this.nextPiece = 1;
    this.tasks = [];
    this.logs = new Map();
    this.hostLog = [{ number: 1, text: 'The panel stand-in has started.' }];
  }

  tellProject() {
    return {
      revision: this.revision,
      writable: true,
      undo: this.past.at(-1)?.text ?? '',
      redo: this.future.at(-1)?.text ?? '',
      undoStep: this.past.at(-1)?.facts ?? null,
      redoStep: this.future.at(-1)?.facts ?? null,
      sequences: [...this.sequences.keys()],
    };
  }

  changed() {
    this.revision++;
    this.markClips();
    this.say('project', this.tellProject());
  }

  markClips() {
    const used = new Set([...this.sequences.values()].flat().map((piece) => `${piece.repository} ${piece.clip}`));
    for (const repository of this.repositories.values()) {
      for (const clip of repository.clips) {
        if (clip.edit === '' && used.has(`${repository.shortName} ${clip.id}`)) {
          clip.edit = `C${clip.id}`;
          clip.state = clip.state || 'preview';
        }
      }
    }
  }

  step(facts, work) {
    const text = `${facts.kind} "${facts.clip}" in "${facts.sequence}"`;
    const before = structuredClone([...this.sequences]);
    work();
    this.past.push({ text, facts, before, after: structuredClone([...this.sequences]) });
    this.future = [];
    this.changed();
  }

  undo() {
    const step = this.past.pop();
    if (!step) {
      throw new ApiError('conflict', 409, 'There is nothing to undo.');
    }
    this.future.push(step);
    this.sequences = new Map(structuredClone(step.before));
    this.changed();
    return { text: step.text, project: this.tellProject() };
  }

  redo() {
    const step = this.future.pop();
    if (!step) {
      throw new ApiError('conflict', 409, 'There is nothing to do again.');
    }
    this.past.push(step);
    this.sequences = new Map(structuredClone(step.after));
    this.changed();
    return { text: step.text, project: this.tellProject() };
  }

  clipOf(piece) {
    const repository = this.repositories.get(piece.repository);
    if (!repository) {
      throw new ApiError('not_found', 404, 'There is no such repository.');
    }
    return repository.find(piece.clip);
  }

  tellSequence(name) {
    const pieces = this.sequences.get(name) ?? [];
    let start = 0;
    const told = pieces.map((piece, index) => {
      const clip = this.clipOf(piece);
      const [rate] = clip.rateFraction ?? [25, 1];
      const perSecond = rate > 1000 ? Math.round(rate / 1001) : rate;
      const timecode = (seconds) => {
        const frames = Math.round(seconds * perSecond);
        const two = (value) => String(value).padStart(2, '0');
        const whole = Math.floor(frames / perSecond);
        return `${two(Math.floor(whole / 3600))}:${two(Math.floor(whole / 60) % 60)}:${two(whole % 60)}:${two(frames % perSecond)}`;
      };
      const task = this.tasks.find((other) => other.state === 'running' && other.ids.includes(clip.id));
      const result = {
        piece: piece.piece,
        index,
        edit: clip.edit,
        repository: piece.repository,
        clip: piece.clip,
        name: clip.name,
        state: task ? 'downloading' : clip.state || 'preview',
        task: task?.task ?? 0,
        in: piece.in,
        out: piece.out,
        start,
        clipDuration: clip.length,
        rate: clip.rateFraction,
        sourceIn: timecode(piece.in),
        sourceOut: timecode(piece.out),
        recordIn: timecode(start),
        recordOut: timecode(start + piece.out - piece.in),
        differences: [],
      };
      start += piece.out - piece.in;
      return result;
    });
    return { name, rate: told[0]?.rate ?? null, duration: start, pieces: told };
  }

  place(name, { repository, clip: id, in: begin, out: end, at }) {
    const clip = this.clipOf({ repository, clip: id });
    this.step({ kind: 'placing', clip: clip.name, sequence: name }, () => {
      const pieces = [...(this.sequences.get(name) ?? [])];
      const piece = { piece: this.nextPiece++, repository, clip: id, in: begin ?? 0, out: end ?? clip.length };
      pieces.splice(at ?? pieces.length, 0, piece);
      this.sequences.set(name, pieces);
    });
    return this.tellSequence(name);
  }

  find(name, number) {
    const pieces = this.sequences.get(name) ?? [];
    const index = pieces.findIndex((piece) => piece.piece === number);
    if (index < 0) {
      throw new ApiError('not_found', 404, 'There is no such piece.');
    }
    return { pieces, index };
  }

  change(name, number, change) {
    const { pieces, index } = this.find(name, number);
    const clip = this.clipOf(pieces[index]);
    this.step({ kind: change.at === undefined ? 'trimming' : 'moving', clip: clip.name, sequence: name }, () => {
      const next = [...pieces];
      const [piece] = next.splice(index, 1);
      const trimmed = { ...piece, in: change.in ?? piece.in, out: Math.min(change.out ?? piece.out, clip.length) };
      next.splice(change.at ?? index, 0, trimmed);
      this.sequences.set(name, next);
    });
    return this.tellSequence(name);
  }

  remove(name, number) {
    const { pieces, index } = this.find(name, number);
    const clip = this.clipOf(pieces[index]);
    this.step({ kind: 'removing', clip: clip.name, sequence: name }, () => {
      this.sequences.set(name, pieces.filter((piece) => piece.piece !== number));
    });
    return this.tellSequence(name);
  }

  usage(name) {
    const { pieces } = this.tellSequence(name);
    const uses = pieces.map(({ piece, repository, clip: id, name: title, sourceIn, sourceOut, recordIn, recordOut }) => {
      const clip = this.clipOf({ repository, clip: id });
      return {
        repository, number: piece, clip: id, name: title, sourceIn, sourceOut, recordIn, recordOut,
        owned: clip.owned ? 'owned' : 'not owned',
        priceText: clip.owned ? '' : `$${clip.price}`,
        price: clip.owned ? null : clip.price,
      };
    });
    const dear = new Map(uses.filter((use) => use.owned !== 'owned').map((use) => [use.clip, use.price]));
    const total = [...dear.values()].reduce((sum, price) => sum + price, 0);
    const used = new Set(uses.map((use) => use.repository));
    return {
      sequence: name, uses, others: [],
      repositories: [...this.repositories.values()].filter(({ shortName }) => used.has(shortName)).map(({ shortName, name: title, user }) => ({
        shortName, name: title, user, legalNotice: `All ${title} clips are subject to the Terms of Service`, credits: 500,
      })),
      clipsToBuy: dear.size, clipsWithoutPrice: 0, total, totalText: dear.size === 0 ? '' : `$${total}`, ownershipKnown: true, credits: 500,
    };
  }

  checkExport(name, format) {
    const previews = this.tellSequence(name).pieces.filter((piece) => piece.state !== 'full');
    const warnings = previews.map((piece) => ({ kind: 'preview', clip: piece.name, text: `"${piece.name}" is still a preview.` }));
    const many = { kind: 'too_many_events', clip: '', text: 'The list has more than 999 events.' };
    return { warnings: format === 'edl' ? [...warnings, many] : warnings };
  }

  fetch(repository, ids) {
    const clips = ids.map((id) => repository.find(id));
    const notOwned = clips.find((clip) => !clip.owned);
    if (notOwned) {
      throw new ApiError('conflict', 409, `"${notOwned.name}" is not owned.`);
    }
    const task = {
      task: this.tasks.length + 1,
      kind: 'fetch',
      name: clips.length === 1 ? `fetch clip ${clips[0].id}` : `fetch ${clips.length} clips`,
      clip: 0,
      fetched: 0,
      state: 'running',
      step: '',
      progress: 0,
      bytes: 0,
      totalBytes: clips.length * 48_000_000,
      secondsLeft: null,
      text: '',
      failed: [],
      canRetry: false,
      repository: repository.shortName,
      clips: clips.map((clip) => clip.name),
      ids,
    };
    this.tasks.push(task);
    this.logs.set(task.task, []);
    void this.runTask(task, clips);
    return task;
  }

  tellTask({ ids, ...task }) {
    return task;
  }

  // A clip whose number is a multiple of five cannot be fetched.
  async runTask(task, clips) {
    const say = () => this.say('task', this.tellTask(task));
    for (const [index, clip] of clips.entries()) {
      this.log(task.task, 'starts', 0, clip.name);
      this.log(task.task, 'plain', 1, 'Downloading');
      this.changed();
      for (let step = 1; step <= 20 && task.state === 'running'; step++) {
        await delay(200);
        task.step = clip.name;
        task.clip = index + 1;
        task.progress = (index + step / 20) / clips.length;
        task.bytes = Math.round(task.totalBytes * task.progress);
        task.secondsLeft = Math.round((1 - task.progress) * clips.length * 4);
        say();
      }
      if (task.state !== 'running') {
        task.state = 'cancelled';
        task.text = 'Cancelled.';
        task.canRetry = true;
        break;
      }
      if (Number(clip.id) % 5 === 0) {
        const reason = `The download of "${clip.name}" failed (404)`;
        this.log(task.task, 'failed', 1, reason);
        task.failed.push({ id: clip.id, name: clip.name, reason, why: 'transfer' });
      } else {
        clip.state = 'full';
        task.fetched++;
        clip.edit = clip.edit || `C${clip.id}`;
      }
    }
    if (task.state === 'running') {
      task.state = task.failed.length > 0 ? 'failed' : 'done';
      task.text = task.failed.length > 0 ? `${task.failed.length} of ${clips.length} clips could not be fetched.` : '';
      task.canRetry = task.failed.length > 0;
      task.progress = 1;
    }
    task.secondsLeft = null;
    task.clip = 0;
    say();
    this.changed();
  }

  log(task, kind, indent, text) {
    const lines = this.logs.get(task);
    const line = { number: lines.length + 1, text, kind, indent };
    lines.push(line);
    this.say('log', { task, lines: [line] });
    this.hostLog.push({ number: this.hostLog.length + 1, text });
  }

  findTask(number) {
    const task = this.tasks.find((other) => other.task === number);
    if (!task) {
      throw new ApiError('not_found', 404, 'There is no such task.');
    }
    return task;
  }

  cancelTask(number) {
    const task = this.findTask(number);
    if (task.state === 'running') {
      task.state = 'cancelling';
      this.say('task', this.tellTask(task));
    }
  }

  retryTask(number) {
    const task = this.findTask(number);
    if (!task.canRetry) {
      throw new ApiError('conflict', 409, 'There is nothing to fetch again.');
    }
    task.canRetry = false;
    this.say('task', this.tellTask(task));
    const ids = task.failed.length > 0 ? task.failed.map((clip) => clip.id) : task.ids;
    return this.fetch(this.repositories.get(task.repository), ids);
  }
}
