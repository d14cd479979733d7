// One request to the panel's program: JSON there and back, failures as ApiError.
import { ApiError, isAbort } from './ApiError.ts';
import { pageKey } from './pageKey.ts';
import type { ErrorCode } from './types.ts';

export interface RequestOptions {
  method?: 'GET' | 'POST' | 'PUT' | 'PATCH' | 'DELETE';
  query?: Record<string, string | number>;
  body?: object;
  signal?: AbortSignal | undefined;
}

// Each part is percent-encoded on its own, so that an id may hold any character.
export function path(...parts: (string | number)[]): string {
  return '/api/' + parts.map((part) => encodeURIComponent(part)).join('/');
}

export function withQuery(address: string, query: Record<string, string | number> = {}): string {
  const pairs = Object.entries(query).map(
    ([key, value]) => `${encodeURIComponent(key)}=${encodeURIComponent(value)}`,
  );
  return pairs.length === 0 ? address : `${address}?${pairs.join('&')}`;
}

// What an answer from 400 on says.
export async function errorOf(response: Response): Promise<ApiError> {
  try {
    const { error } = (await response.json()) as { error?: { code?: ErrorCode; text?: string; reason?: string } };
    return new ApiError(error?.code ?? 'internal', error?.text ?? '', response.status, error?.reason ?? '');
  } catch {
    return new ApiError('internal', response.statusText, response.status);
  }
}

export async function request<Answer>(address: string, options: RequestOptions = {}): Promise<Answer> {
  const init: RequestInit = { method: options.method ?? 'GET', credentials: 'same-origin' };
  const headers: Record<string, string> = {};
  if (init.method !== 'GET') {
    headers['X-Zq-Panel-Key'] = pageKey();
  }
  if (options.body !== undefined) {
    init.body = JSON.stringify(options.body);
    headers['Content-Type'] = 'application/json';
  }
  init.headers = headers;
  if (options.signal !== undefined) {
    init.signal = options.signal;
  }
  let response: Response;
  try {
    response = await fetch(withQuery(address, options.query), init);
  } catch (error) {
    if (isAbort(error)) {
      throw error;
    }
    throw new ApiError('unreachable', '', 0);
  }
  if (!response.ok) {
    throw await errorOf(response);
  }
  const text = await response.text();
  return (text === '' ? {} : JSON.parse(text)) as Answer;
}
