// The page's pictures, as they are asked of the program.
import { PictureQueue, type Fetched } from '../lib/pictureQueue.ts';

const notYet = 202;

async function fetchPicture(address: string, signal: AbortSignal): Promise<Fetched> {
  const response = await fetch(address, { credentials: 'same-origin', priority: 'low', signal });
  await response.arrayBuffer(); // to its end, so that the browser keeps it
  if (response.status === notYet) {
    return 'later';
  }
  return response.ok ? 'there' : 'none';
}

export const pictures = new PictureQueue(fetchPicture);
