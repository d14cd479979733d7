// The project, and the sequence that is worked on. The sequence is read anew whenever the project's revision rises,
// whoever raised it.
import * as api from '../api/client.ts';
import type { Project, Sequence, Step } from '../api/types.ts';
import { say } from '../i18n/say.ts';
import { t } from '../i18n/texts.svelte.ts';
import { stepSaid } from '../lib/wording.ts';
import { attempt } from './failure.ts';
import { read, write } from './memory.ts';
import { notices } from './notices.svelte.ts';

const none: Project = { revision: 0, writable: false, undo: '', redo: '', undoStep: null, redoStep: null, sequences: [] };

// A clip whose placing the program has not answered yet: it asks each repository for one thing at a time.
export interface Placing {
  key: string; // the same for the same piece at the same place
  repository: string;
  clip: string;
  name: string;
  isLate: boolean;
}

const late_ms = 300; // until it is told

const stepText = (step: Step | null): string => (step === null ? '' : say(stepSaid(step)));

class ProjectState {
  project = $state.raw<Project>(none);
  sequence = $state.raw<Sequence | null>(null);
  // Of the sequence that is worked on; it need not exist yet.
  name = $state('');
  placing = $state.raw<readonly Placing[]>([]);
  #asked = 0;

  // What would be taken back, and done again; empty where there is nothing.
  get undoText(): string {
    return stepText(this.project.undoStep);
  }
  get redoText(): string {
    return stepText(this.project.redoStep);
  }

  set(project: Project): void {
    const changed = project.revision !== this.project.revision;
    this.project = project;
    if (this.name === '') {
      const last = read('sequence');
      this.name = last !== '' ? last : (project.sequences[0] ?? t('sequence.first_name'));
    }
    if (changed || this.sequence === null) {
      void this.load();
    }
  }

  choose(name: string): void {
    this.name = name;
    write('sequence', name);
    this.sequence = null;
    void this.load();
  }

  async load(): Promise<void> {
    const asked = ++this.#asked;
    const sequence = await attempt(() => api.getSequence(this.name));
    if (sequence !== undefined && asked === this.#asked) {
      this.sequence = sequence;
    }
  }

  // Places the clip, or what lies between the times, at the end or before the piece at that index. What is asked for
  // again before it is there is placed once.
  async place(piece: api.NewPiece, clipName: string): Promise<void> {
    const sequence = this.name;
    const key = JSON.stringify([sequence, piece.repository, piece.clip, piece.in, piece.out, piece.at]);
    if (this.placing.some((other) => other.key === key)) {
      notices.say(t('sequence.placing', { clip: clipName }));
      return;
    }
    this.placing = [...this.placing, { key, repository: piece.repository, clip: piece.clip, name: clipName, isLate: false }];
    const timer = setTimeout(() => {
      this.placing = this.placing.map((other) => (other.key === key ? { ...other, isLate: true } : other));
    }, late_ms);
    const isPlaced = await this.#change(() => api.placePiece(sequence, piece));
    clearTimeout(timer);
    this.placing = this.placing.filter((other) => other.key !== key);
    if (isPlaced) {
      notices.add('good', t('sequence.placed', { clip: clipName, sequence }));
    }
  }

  change(piece: number, change: { in?: number; out?: number; at?: number }): Promise<boolean> {
    return this.#change(() => api.changePiece(this.name, piece, change));
  }

  remove(piece: number): Promise<boolean> {
    return this.#change(() => api.removePiece(this.name, piece));
  }

  async undo(): Promise<void> {
    const answer = await attempt(api.undo);
    if (answer !== undefined) {
      this.set(answer.project);
      notices.add('info', t('sequence.undone', { what: stepText(answer.project.redoStep) }));
    }
  }

  async redo(): Promise<void> {
    const answer = await attempt(api.redo);
    if (answer !== undefined) {
      this.set(answer.project);
      notices.add('info', t('sequence.redone', { what: stepText(answer.project.undoStep) }));
    }
  }

  // An answer is newer than whatever was asked for before it.
  async #change(work: () => Promise<Sequence>): Promise<boolean> {
    const { name } = this;
    const sequence = await attempt(work);
    if (sequence === undefined) {
      return false;
    }
    if (name !== this.name) {
      return true; // it is of the sequence that was worked on before
    }
    this.#asked++;
    this.sequence = sequence;
    write('sequence', this.name);
    return true;
  }
}

export const project = new ProjectState();
