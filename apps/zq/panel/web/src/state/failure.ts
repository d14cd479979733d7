import { asApiError, isAbort } from '../api/ApiError.ts';
import { say } from '../i18n/say.ts';
import { failureSaid, type Said } from '../lib/wording.ts';
import { notices } from './notices.svelte.ts';

// What a person sees of a failure.
export function saidOf(error: unknown): Said {
  return failureSaid(asApiError(error));
}

// The same without the program's own words.
export function failureText(error: unknown): string {
  return say(saidOf(error));
}

// Runs what a person asked for; a failure becomes a notice. Undefined then, and when it was aborted.
export async function attempt<Result>(work: () => Promise<Result>): Promise<Result | undefined> {
  try {
    return await work();
  } catch (error) {
    if (!isAbort(error)) {
      notices.tell('problem', saidOf(error));
    }
    return undefined;
  }
}
