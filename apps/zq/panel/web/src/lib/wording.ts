// Which text of the page says what the program tells by a code. The program's own words are English: they stand behind
// such a text as its detail, and only where they tell more, such as a service's reason.
import type {
  Check,
  Difference,
  ErrorCode,
  ExportWarning,
  FailedClip,
  Purchase,
  ServerTest,
  SignInResult,
  Step,
  Task,
} from '../api/types.ts';

export interface Said {
  key: string;
  count?: number; // takes the form of the text for it
  values?: Record<string, string | number | Said>;
  detail: string; // empty: the text says it all
}

const said = (key: string, values: Said['values'] = {}, detail = ''): Said => ({ key, values, detail });
const counted = (key: string, count: number, values: Said['values'] = {}): Said => ({ key, count, values, detail: '' });

// Failures

// With the detail that the program's words are to them.
const reasons: Record<string, boolean> = {
  service_unreachable: true,
  service_failed: true,
  service_refused: true,
  not_signed_in: false,
  sells_nothing: false,
  not_owned: false,
  unknown_clip: false,
  being_bought: false,
  already_bought: false,
  order_unwritten: true,
  in_doubt: false,
  being_fetched: false,
  superseded: false,
  cancelled: false,
  option_inactive: false,
  read_only: false,
  no_edit: true,
  no_sequence: false,
  no_piece: false,
  not_placeable: true,
  nothing_to_undo: false,
  nothing_to_redo: false,
  unknown_task: false,
  task_runs: false,
  task_ended: false,
  all_fetched: false,
  no_picture: false,
  no_preview: false,
  no_media: false,
  too_many_previews: false,
  unknown_link: false,
  no_browser: false,
  no_path: false,
  no_folder: false,
  no_address: false,
  out_of_range: true,
  unusable_value: true,
  settings_file: true,
};

export interface Failure {
  code: ErrorCode | 'unreachable';
  reason: string;
  text: string;
}

function reasonSaid(reason: string, text: string): Said | null {
  const hasDetail = Object.hasOwn(reasons, reason) ? reasons[reason] : undefined;
  return hasDetail === undefined ? null : said(`failure.reason.${reason}`, {}, hasDetail ? text : '');
}

export function failureSaid({ code, reason, text }: Failure): Said {
  if (code === 'unreachable') {
    return said('failure.unreachable');
  }
  const known = reasonSaid(reason, text);
  if (known !== null) {
    return known;
  }
  return code === 'internal' ? said('failure.internal') : said('failure.unknown', {}, text);
}

const signIns: Record<number, string> = { 2: 'account.no_such_user', 7: 'account.wrong_password' };

// Why nobody is signed in now, or is still.
export function signInSaid({ code, reason, text }: SignInResult): Said {
  const key = signIns[code];
  if (key !== undefined) {
    return said(key);
  }
  const refused = said('account.refused', {}, reason === 'service_refused' ? text : '');
  return reason === 'service_refused' ? refused : (reasonSaid(reason, text) ?? refused);
}

// Purchases

const cannotPay = 3;

export function purchaseSaid({ state, code, text }: Pick<Purchase, 'state' | 'code' | 'text'>): Said {
  if (state !== 'refused') {
    return said(`basket.told.${state}`);
  }
  return code === cannotPay ? said('basket.told.cannot_pay', {}, text) : said('basket.told.refused', {}, text);
}

// Tasks

// What the task does.
export function taskSaid(task: Pick<Task, 'kind' | 'clips' | 'name'>): Said {
  if (task.kind !== 'fetch') {
    return said('tasks.of_program', {}, task.name);
  }
  const [only] = task.clips;
  return task.clips.length === 1 && only !== undefined && only.trim() !== ''
    ? said('tasks.fetch_one', { clip: only })
    : counted('tasks.fetch_many', task.clips.length);
}

// How it ended; null while it runs, and of a task that is no fetch.
export function taskEndSaid(task: Pick<Task, 'kind' | 'state' | 'fetched' | 'clips'>): Said | null {
  if (task.kind !== 'fetch' || (task.state !== 'done' && task.state !== 'failed' && task.state !== 'cancelled')) {
    return null;
  }
  return task.fetched === task.clips.length
    ? counted('tasks.all_here', task.fetched)
    : counted('tasks.some_here', task.clips.length, { fetched: task.fetched });
}

// Why a clip was not fetched; a line of the import log is in the log's words.
export function unfetchedSaid({ why, reason }: Pick<FailedClip, 'why' | 'reason'>): Said {
  return said(`tasks.why.${why}`, {}, why === 'transfer' || why === 'media' ? reason : '');
}

export function checkSaid({ outcome, cutShort, text }: Pick<Check, 'outcome' | 'cutShort' | 'text'>): Said {
  return outcome === 'cut_short'
    ? counted('tasks.cut_short', cutShort)
    : said(`tasks.outcome.${outcome}`, {}, outcome === 'unusable' ? text : '');
}

// The project

export function stepSaid({ kind, clip, sequence }: Step): Said {
  return clip.trim() === '' ? said(`step.nameless.${kind}`, { sequence }) : said(`step.${kind}`, { clip, sequence });
}

// "12.48 s", "2 channels", "no sound": the other values are the same in every language.
function valueSaid(what: Difference['what'], value: string): string | Said {
  const number = Number.parseFloat(value);
  if (what === 'length' && /^[\d.]+ s$/.test(value)) {
    return said('settings.seconds', { seconds: number });
  }
  if (what === 'sound') {
    return /^\d+ channels?$/.test(value) ? counted('player.channels', number) : said('difference.no_sound');
  }
  return what === 'rate' && value !== '' && Number.isNaN(number) ? said('difference.unknown') : value;
}

export function differenceSaid({ what, promised, found }: Difference): Said {
  return said(`difference.${what}`, { promised: valueSaid(what, promised), found: valueSaid(what, found) });
}

export function warningSaid({ kind, clip }: ExportWarning): Said {
  return said(`sequence.warning.${kind}`, { clip });
}

// The connection

export function serverSaid({ reason, status, text }: Pick<ServerTest, 'reason' | 'status' | 'text'>): Said {
  return said(`settings.server.${reason}`, { status }, reason === 'no_answer' ? text : '');
}
