// The values that the panel's program and its page exchange, as docs/panel-api.md has them.

export type Theme = 'dark' | 'light' | 'system';
export type ResultView = 'grid' | 'list';
export type Fraction = [numerator: number, denominator: number];

export type ErrorCode =
  | 'bad_request'
  | 'not_json'
  | 'not_entered'
  | 'foreign_origin'
  | 'not_found'
  | 'not_allowed'
  | 'conflict'
  | 'too_large'
  | 'wrong_host'
  | 'failed'
  | 'internal';

export interface State {
  version: string;
  language: string;
  theme: Theme;
  repositories: Repository[];
  project: Project;
  tasks: Task[];
  event: number;
}

export interface Repository {
  shortName: string;
  name: string;
  summary: RichText;
  legalNotice: RichText;
  webLink: string;
  user: string; // empty: nobody is signed in
  needsSignIn: boolean;
  credits: number | null;
  columns: Column[];
  thumbnailAspect: number;
  words: string; // of the last search, of any page
}

export type ColumnKind = 'text' | 'number' | 'duration';

export interface Column {
  type: number;
  name: string;
  kind: ColumnKind;
  width: number; // pixels; 1 leaves it to the page
  editable: boolean;
}

export type RichText = RichPiece[];

export interface RichPiece {
  text: string;
  link?: string;
  quiet?: boolean;
}

export interface SignInForms {
  form: Field[];
  linkForm: Field[];
}

export interface Field {
  name: string;
  legend: string;
  rich?: RichText; // of a label
  type: 'text' | 'label';
  obfuscated: boolean;
  advance: boolean; // Enter in it goes on: signs in
  hint: string;
  value: string;
}

export interface SignInResult {
  code: number; // 0: signed in
  text: string;
  user: string;
  reason: string; // of a failure that the code does not tell
}

export interface OptionGroup {
  legend: string;
  options: SearchOption[];
}

export interface SearchOption {
  legend: string;
  type: 'choice' | 'boolean' | 'text';
  id: string; // need not be unique
  tooltip: string;
  active: boolean;
  hidden: boolean; // not to be shown at the moment
  value: string;
  initial: string | null; // the value that filters nothing; null: there is none, or no result is known to depend on it
  choices?: Choice[];
}

export interface Choice {
  value: string;
  text: string;
}

export interface PageOfClips {
  page: number;
  pageSize: number;
  pageCount: number;
  totalCount: number;
  clips: Clip[];
}

export type PieceState = 'preview' | 'downloading' | 'full' | 'missing';

export interface Clip {
  id: string;
  name: string;
  owned: boolean;
  attributes: Record<string, string>; // by the column's type
  rate: string;
  rateFraction: Fraction | null;
  hasThumbnail: boolean;
  hasPreview: boolean;
  audioChannels: number;
  edit: string; // empty: the project has no edit of it
  state: PieceState | '';
}

export interface Basket {
  clips: BasketClip[];
  clipsToBuy: number; // neither owned nor undecided
  total: string; // of these; empty where the prices do not tell
  credits: number | null;
  unpriced: number; // of these
}

export interface BasketClip {
  id: string;
  name: string;
  price: string;
  owned: boolean;
  undecided: boolean; // in a purchase of this account that runs or is in doubt
  used: number;
}

export type Payment = 'credits' | 'page';
export type PurchaseState = 'running' | 'done' | 'waiting' | 'doubtful' | 'refused';

export interface Purchase {
  key: string;
  user: string; // whose account pays; empty where nothing has been sent yet
  clips: string[];
  payment: Payment;
  state: PurchaseState;
  code: number | null;
  text: string;
  trouble: string; // why the list of what is owned could not be read; empty: nothing wrong with it
  page: string; // address of a payment page; empty: none
  time: number; // when it was sent, in seconds since 1970; 0: not yet
}

// What relinking a clip to what is on this machine would do; the program decides what it tells of each clip.
export interface Check {
  clip: string;
  name: string;
  ok: boolean;
  outcome: 'same' | 'cut_short' | 'no_edit' | 'no_file' | 'unusable';
  cutShort: number;
  text: string;
  file: MediaFile;
  differences: Difference[];
  uses: CheckedUse[];
}

export interface MediaFile {
  container: string;
  videoCodec: string;
  audioCodec: string;
  width: number;
  height: number;
  rateNumerator: number;
  rateDenominator: number;
  frames: number;
  duration_s: number;
  audioChannels: number;
}

export interface CheckedUse {
  number: number;
  sequence: string;
  recordIn: string;
  cutShort: boolean;
}

// What the full media does not keep of what was promised; the values are the program's texts.
export interface Difference {
  what: 'rate' | 'length' | 'size' | 'sound';
  promised: string;
  found: string;
}

export interface Project {
  revision: number;
  writable: boolean;
  undo: string; // what it would take back, in the program's words; empty: nothing
  redo: string;
  undoStep: Step | null;
  redoStep: Step | null;
  sequences: string[];
}

export interface Step {
  kind: 'placing' | 'relinking' | 'moving' | 'trimming' | 'removing';
  clip: string; // its name
  sequence: string; // empty of a relinking
}

export interface Sequence {
  name: string;
  rate: Fraction | null;
  duration: number;
  pieces: Piece[];
}

export interface Piece {
  piece: number;
  index: number;
  edit: string;
  repository: string;
  clip: string;
  name: string;
  state: PieceState;
  task: number; // 0: nothing fetches it
  in: number;
  out: number;
  start: number;
  clipDuration: number;
  rate: Fraction | null;
  sourceIn: string;
  sourceOut: string;
  recordIn: string;
  recordOut: string;
  differences: Difference[];
}

export type Ownership = 'owned' | 'not owned' | 'unknown';

export interface Usage {
  sequence: string;
  uses: Use[];
  others: UsedPiece[]; // of no repository that is loaded
  repositories: Licensor[];
  clipsToBuy: number;
  clipsWithoutPrice: number;
  total: number | null;
  totalText: string; // empty where no price is in it
  ownershipKnown: boolean;
  credits: number | null;
}

export interface UsedPiece {
  number: number; // of the piece
  clip: string;
  name: string;
  sourceIn: string;
  sourceOut: string;
  recordIn: string;
  recordOut: string;
}

export interface Use extends UsedPiece {
  repository: string;
  owned: Ownership;
  priceText: string;
}

export interface Licensor {
  shortName: string;
  name: string;
  user: string;
  legalNotice: string;
  credits: number | null;
}

export interface ExportWarning {
  kind: 'preview' | 'other_rate' | 'too_many_events';
  clip: string;
  text: string;
}

export type TaskState = 'waiting' | 'running' | 'cancelling' | 'done' | 'failed' | 'cancelled';

export interface Task {
  task: number;
  kind: 'fetch' | 'other';
  name: string;
  clips: string[]; // their names
  clip: number; // place of the one that is fetched now, from 1; 0: none
  fetched: number;
  state: TaskState;
  step: string;
  progress: number; // 0 to 1
  bytes: number | null; // these three null where unknown
  totalBytes: number | null;
  secondsLeft: number | null;
  text: string; // how it ended
  failed: FailedClip[];
  canRetry: boolean;
  repository: string;
}

export interface FailedClip {
  id: string;
  name: string;
  reason: string;
  why: 'cancelled' | 'transfer' | 'refused' | 'media' | 'preview';
}

export interface TaskLogLine {
  number: number;
  text: string;
  kind: 'plain' | 'starts' | 'failed';
  indent: number;
}

export interface HostLogLine {
  number: number;
  text: string;
}

export interface Settings {
  language: string;
  languages: { code: string; name: string }[];
  theme: Theme;
  mediaFolder: string;
  cacheFolder: string;
  cacheLimitMiB: number;
  cacheUsed: number;
  proxy: string;
  caFile: string;
  connect: [asked: string, reached: string][];
  thumbnailSize: number; // pixels
  view: ResultView;
  needsRestart: string[];
  path: string;
}

export type ChangeableSettings = Partial<
  Pick<
    Settings,
    | 'language'
    | 'theme'
    | 'mediaFolder'
    | 'cacheFolder'
    | 'cacheLimitMiB'
    | 'proxy'
    | 'caFile'
    | 'thumbnailSize'
    | 'view'
  >
>;

export interface ServerTest {
  name: string;
  ok: boolean;
  reason: 'answered' | 'no_answer' | 'late' | 'no_address';
  status: number; // of the answer; 0: none
  text: string;
  seconds: number;
}

export interface Texts {
  language: string;
  texts: Record<string, string>;
}

// Why the bytes of a preview that is being read do not come; an empty reason: they come again.
export interface PreviewNews {
  repository: string;
  clip: string;
  reason: string;
  text: string;
}

export interface EventData {
  reset: null;
  repository: Repository;
  options: { repository: string; results: boolean }; // whether results are to be asked for again
  project: Project;
  task: Task;
  log: { task: number; lines: TaskLogLine[] };
  basket: { repository: string };
  purchase: { repository: string; purchase: Purchase };
  preview: PreviewNews;
  settings: Settings;
}

export type EventName = keyof EventData;
