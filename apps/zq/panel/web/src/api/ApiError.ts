import type { ErrorCode } from './types.ts';

// A request that the program refused, or that did not reach it.
export class ApiError extends Error {
  constructor(
    readonly code: ErrorCode | 'unreachable',
    readonly text: string, // in the program's words; empty where it was not reached
    readonly status: number, // 0: not reached
    readonly reason: string = '', // what the page goes by; empty: the code alone
  ) {
    super(`${code}: ${text}`);
    this.name = 'ApiError';
  }
}

export function isAbort(error: unknown): boolean {
  return error instanceof DOMException && error.name === 'AbortError';
}

// Anything thrown, as what the page shows.
export function asApiError(error: unknown): ApiError {
  return error instanceof ApiError ? error : new ApiError('internal', String(error), 500);
}
