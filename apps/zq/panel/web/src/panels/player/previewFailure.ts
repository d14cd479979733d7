// Why a preview does not play. The browser tells a page next to nothing, so the program is asked for its bytes.
import { ApiError } from '../../api/ApiError.ts';
import { errorOf } from '../../api/request.ts';
import { t } from '../../i18n/texts.svelte.ts';
import { failureText } from '../../state/failure.ts';

// One of these holds the index without which no film opens.
const ranges = ['bytes=0-1048575', 'bytes=-65536'];

// `hasPlayed`: the film was open, so that its format is one that the browser plays.
export async function previewFailure(address: string, hasPlayed: boolean): Promise<string> {
  let response: Response | undefined;
  for (const range of ranges) {
    try {
      response = await fetch(address, { headers: { Range: range }, credentials: 'same-origin' });
    } catch {
      return failureText(new ApiError('unreachable', '', 0));
    }
    if (!response.ok) {
      return failureText(await errorOf(response));
    }
    try {
      await response.arrayBuffer();
    } catch {
      return t('player.interrupted');
    }
  }
  return t(hasPlayed ? 'player.interrupted' : isKnownFormat(response) ? 'player.not_opened' : 'player.not_playable');
}

// A known container may hold what the browser cannot decode, or may have been a broken one a moment ago.
function isKnownFormat(response: Response | undefined): boolean {
  return document.createElement('video').canPlayType(response?.headers.get('Content-Type') ?? '') !== '';
}
