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

  step(text, work) {
    const before = structuredClone([...this.sequences]);
    work();
    this.past.push({ text, before, after: structuredClone([...this.sequences]) });
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
      const task = this.tasks.find((other) => other.state === 'running' && other.clips.includes(clip.id));
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
    this.step(`Place "${clip.name}"`, () => {
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
    this.step(`${change.at === undefined ? 'Trim' : 'Move'} "${clip.name}"`, () => {
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
    this.step(`Remove "${clip.name}"`, () => {
      this.sequences.set(name, pieces.filter((piece) => piece.piece !== number));
    });
    return this.tellSequence(name);
  }

  usage(name) {
    const { pieces } = this.tellSequence(name);
    const uses = pieces.map((piece) => {
      const clip = this.clipOf(piece);
      return {
        piece: piece.piece,
        clip: piece.clip,
        name: piece.name,
        ownership: clip.owned ? 'owned' : 'not owned',
        price: clip.owned ? '' : `$${clip.price}`,
        in: piece.in,
        out: piece.out,
        start: piece.start,
      };
    });
    const dear = [...new Set(uses.filter((use) => use.ownership !== 'owned').map((use) => use.clip))];
    const total = dear.reduce((sum, id) => sum + (uses.find((use) => use.clip === id) ? Number(uses.find((use) => use.clip === id).price.slice(1)) : 0), 0);
    return { sequence: name, uses, total: `$${total}`, clipsToBuy: dear.length, clipsWithoutPrice: 0, ownershipKnown: true, credits: 500 };
  }

  checkExport(name, format) {
    const previews = this.tellSequence(name).pieces.filter((piece) => piece.state !== 'full');
    const warnings = previews.map((piece) => `"${piece.name}" is still a preview.`);
    return { warnings: format === 'edl' ? [...warnings, 'An edit decision list keeps no names of more than 32 letters.'] : warnings };
  }

  fetch(repository, ids) {
    const clips = ids.map((id) => repository.find(id));
    const notOwned = clips.find((clip) => !clip.owned);
    if (notOwned) {
      throw new ApiError('conflict', 409, `"${notOwned.name}" is not owned.`);
    }
    const task = {
      task: this.tasks.length + 1,
      name: clips.length === 1 ? clips[0].name : `${clips.length} clips`,
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
      clips: ids,
    };
    this.tasks.push(task);
    this.logs.set(task.task, []);
    void this.runTask(task, clips);
    return task;
  }

  tellTask({ clips, ...task }) {
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
        task.failed.push({ id: clip.id, name: clip.name, reason });
      } else {
        clip.state = 'full';
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
    const ids = task.failed.length > 0 ? task.failed.map((clip) => clip.id) : task.clips;
    return this.fetch(this.repositories.get(task.repository), ids);
  }
}
