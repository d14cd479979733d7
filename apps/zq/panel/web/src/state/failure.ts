import { asApiError, isAbort } from '../api/ApiError.ts';
import { t } from '../i18n/texts.svelte.ts';
import { notices } from './notices.svelte.ts';

// The words for a failure that a person sees.
export function failureText(error: unknown): string {
  const failure = asApiError(error);
  if (failure.code === 'unreachable') {
    return t('failure.unreachable');
  }
  return failure.text === '' ? t('failure.internal') : failure.text;
}

// Runs what a person asked for; a failure becomes a notice. Undefined then, and when it was aborted.
export async function attempt<Result>(work: () => Promise<Result>): Promise<Result | undefined> {
  try {
    return await work();
  } catch (error) {
    if (!isAbort(error)) {
      notices.add('problem', failureText(error));
    }
    return undefined;
  }
}
