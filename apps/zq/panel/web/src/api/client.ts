// Every call of docs/panel-api.md, typed. A call that fails throws ApiError; one that is aborted throws what fetch
// throws then (isAbort).
import { newKey } from '../lib/newKey.ts';
import { path, request, withQuery } from './request.ts';
import type {
  Basket,
  ChangeableSettings,
  Check,
  Clip,
  ExportWarning,
  HostLogLine,
  OptionGroup,
  PageOfClips,
  Payment,
  Project,
  Purchase,
  Sequence,
  ServerTest,
  Settings,
  SignInForms,
  SignInResult,
  State,
  TaskLogLine,
  Texts,
  Usage,
} from './types.ts';

type Signal = AbortSignal | undefined;

export const getState = (signal?: Signal) => request<State>(path('state'), { signal });
export const getTexts = (signal?: Signal) => request<Texts>(path('texts'), { signal });
export const openLink = (url: string) =>
  request<object>(path('links'), { method: 'POST', body: { url } });

// Repositories

const of = (repository: string, ...rest: (string | number)[]) => path('repositories', repository, ...rest);

export const getSignInForms = (repository: string, signal?: Signal) =>
  request<SignInForms>(of(repository, 'login'), { signal });
export const signIn = (repository: string, values: Record<string, string>) =>
  request<SignInResult>(of(repository, 'login'), { method: 'POST', body: { values } });
export const signOut = (repository: string) => request<SignInResult>(of(repository, 'logout'), { method: 'POST' });
export const getOptions = (repository: string, signal?: Signal) =>
  request<{ groups: OptionGroup[] }>(of(repository, 'options'), { signal });
export const setOption = (repository: string, group: number, index: number, value: string) =>
  request<{ groups: OptionGroup[] }>(of(repository, 'options', group, index), { method: 'PUT', body: { value } });

// Clips

// This page, told from others at the same program: a search gives way to those of its own page alone.
const asker = newKey();

// `turn`: which of this page's searches. Requests may arrive in another order than they were made in.
export const search = (repository: string, words: string, page: number, pageSize: number, turn: number, signal?: Signal) =>
  request<PageOfClips>(of(repository, 'search'), { query: { words, page, pageSize, asker, turn }, signal });
// Those up to that turn.
export const cancelSearch = (repository: string, turn: number) =>
  request<object>(of(repository, 'search'), { method: 'DELETE', query: { asker, turn } });
export const getOwned = (repository: string, signal?: Signal) =>
  request<PageOfClips>(of(repository, 'owned'), { signal });
export const getClip = (repository: string, clip: string, signal?: Signal) =>
  request<Clip>(of(repository, 'clips', clip), { signal });
export const thumbnailAddress = (repository: string, clip: string) => of(repository, 'clips', clip, 'thumbnail');
export const previewAddress = (repository: string, clip: string) => of(repository, 'clips', clip, 'preview');
export const mediaAddress = (repository: string, clip: string) => of(repository, 'clips', clip, 'media');

// Basket, purchases, fetches

export const getBasket = (repository: string, signal?: Signal) =>
  request<Basket>(of(repository, 'basket'), { signal });
export const setBasket = (repository: string, clips: string[]) =>
  request<Basket>(of(repository, 'basket'), { method: 'PUT', body: { clips } });
export const buy = (repository: string, key: string, clips: string[], payment: Payment) =>
  request<Purchase>(of(repository, 'purchases'), { method: 'POST', body: { key, clips, payment } });
// An order whose answer was lost: where the program does not have it, it never will. That one has no clips.
export const withdrawOrder = (repository: string, key: string) =>
  request<Purchase>(of(repository, 'purchases', key), { method: 'DELETE' });
export const getPurchases = (repository: string, signal?: Signal) =>
  request<{ purchases: Purchase[] }>(of(repository, 'purchases'), { signal });
export const fetchClips = (repository: string, clips: string[]) =>
  request<{ task: number }>(of(repository, 'fetches'), { method: 'POST', body: { clips } });
export const checkClips = (repository: string, clips: string[]) =>
  request<{ checks: Check[] }>(of(repository, 'checks'), { method: 'POST', body: { clips } });

// Project and sequences

export interface NewPiece {
  repository: string;
  clip: string;
  in?: number;
  out?: number;
  at?: number;
}

const piecesOf = (sequence: string, ...rest: number[]) => path('sequences', sequence, 'pieces', ...rest);

export const undo = () => request<{ text: string; project: Project }>(path('project', 'undo'), { method: 'POST' });
export const redo = () => request<{ text: string; project: Project }>(path('project', 'redo'), { method: 'POST' });
export const getSequence = (sequence: string, signal?: Signal) =>
  request<Sequence>(path('sequences', sequence), { signal });
export const placePiece = (sequence: string, piece: NewPiece) =>
  request<Sequence>(piecesOf(sequence), { method: 'POST', body: piece });
export const changePiece = (sequence: string, piece: number, change: { in?: number; out?: number; at?: number }) =>
  request<Sequence>(piecesOf(sequence, piece), { method: 'PATCH', body: change });
export const removePiece = (sequence: string, piece: number) =>
  request<Sequence>(piecesOf(sequence, piece), { method: 'DELETE' });
export const getUsage = (sequence: string, signal?: Signal) =>
  request<Usage>(path('sequences', sequence, 'usage'), { signal });

export type ExportFormat = 'mlt' | 'edl' | 'fcpxml' | 'otio';
export const checkExport = (sequence: string, format: ExportFormat, signal?: Signal) =>
  request<{ warnings: ExportWarning[] }>(path('sequences', sequence, 'export'), { query: { format, check: 1 }, signal });

// Addresses of files to keep; a link with the attribute "download" leads there.
export const usageFileAddress = (sequence: string, format: 'csv' | 'json') =>
  withQuery(path('sequences', sequence, 'usage'), { format });
export const exportAddress = (sequence: string, format: ExportFormat) =>
  withQuery(path('sequences', sequence, 'export'), { format });

// Tasks, logs, settings

export const cancelTask = (task: number) => request<object>(path('tasks', task), { method: 'DELETE' });
export const retryTask = (task: number) =>
  request<{ task: number }>(path('tasks', task, 'retry'), { method: 'POST' });
export const getTaskLog = (task: number, since = 0, signal?: Signal) =>
  request<{ lines: TaskLogLine[] }>(path('tasks', task, 'log'), { query: { since }, signal });
export const getHostLog = (signal?: Signal) => request<{ lines: HostLogLine[] }>(path('log'), { signal });
export const reportAddress = () => path('report');
export const getSettings = (signal?: Signal) => request<Settings>(path('settings'), { signal });
export const changeSettings = (change: ChangeableSettings) =>
  request<Settings>(path('settings'), { method: 'PATCH', body: change });
export const clearCache = () => request<{ freed: number }>(path('settings', 'clear-cache'), { method: 'POST' });
export const testConnection = () =>
  request<{ servers: ServerTest[] }>(path('settings', 'test-connection'), { method: 'POST' });
