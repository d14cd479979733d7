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
  value: string;
  initial: string | null; // the value that filters nothing
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
  total: string; // empty where the prices do not tell
  credits: number | null;
  unpriced: number;
}

export interface BasketClip {
  id: string;
  name: string;
  price: string;
  owned: boolean;
  used: number;
}

export type Payment = 'credits' | 'page';
export type PurchaseState = 'running' | 'done' | 'waiting' | 'doubtful' | 'refused';

export interface Purchase {
  key: string;
  clips: string[];
  payment: Payment;
  state: PurchaseState;
  code: number | null;
  text: string;
  page: string; // address of a payment page; empty: none
}

// What relinking a clip to what is on this machine would do; the program decides what it tells of each clip.
export interface Check {
  clip: string;
  name: string;
  ok: boolean;
  text: string;
  differences: string[];
}

export interface Project {
  revision: number;
  writable: boolean;
  undo: string; // what it would take back; empty: nothing
  redo: string;
  sequences: string[];
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
  differences: string[];
}

export type Ownership = 'owned' | 'not owned' | 'unknown';

export interface Usage {
  sequence: string;
  uses: Use[];
  total: string;
  clipsToBuy: number;
  clipsWithoutPrice: number;
  ownershipKnown: boolean;
  credits: number | null;
}

export interface Use {
  piece: number;
  clip: string;
  name: string;
  ownership: Ownership;
  price: string;
  in: number;
  out: number;
  start: number;
}

export type TaskState = 'waiting' | 'running' | 'cancelling' | 'done' | 'failed' | 'cancelled';

export interface Task {
  task: number;
  name: string;
  state: TaskState;
  step: string;
  progress: number; // 0 to 1
  bytes: number;
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
  text: string;
  seconds: number;
}

export interface EventData {
  reset: null;
  repository: Repository;
  options: { repository: string };
  project: Project;
  task: Task;
  log: { task: number; lines: TaskLogLine[] };
  basket: { repository: string };
  purchase: { repository: string; purchase: Purchase };
  settings: Settings;
}

export type EventName = keyof EventData;
