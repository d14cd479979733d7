// Why a preview does not play. The browser tells a page next to nothing, so the program is asked for the first byte.
import { ApiError } from '../../api/ApiError.ts';
import type { ErrorCode } from '../../api/types.ts';
import { t } from '../../i18n/texts.svelte.ts';
import { failureText } from '../../state/failure.ts';

export async function previewFailure(address: string): Promise<string> {
  let response: Response;
  try {
    response = await fetch(address, { headers: { Range: 'bytes=0-0' }, credentials: 'same-origin' });
  } catch {
    return failureText(new ApiError('unreachable', '', 0));
  }
  if (response.ok) {
    void response.body?.cancel();
    return t('player.not_playable');
  }
  try {
    const answer = (await response.json()) as { error?: { code?: ErrorCode; text?: string } };
    return failureText(new ApiError(answer.error?.code ?? 'internal', answer.error?.text ?? '', response.status));
  } catch {
    return failureText(new ApiError('internal', '', response.status));
  }
}
