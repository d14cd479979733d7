// The key that each change shows to the program. Browsers send the cookie to every server of this machine; the key is
// given to the page that enters, in its head, and goes to the program's own port alone.
import { read, write } from '../state/memory.ts';

const place = 'key';
let own = '';

// Takes the key out of the page that has just entered, whose address, with the token in it, is left.
export function takePageKey(): void {
  const said = (name: string) => document.querySelector<HTMLMetaElement>(`meta[name="${name}"]`);
  const key = said('zq-panel-key');
  const address = said('zq-panel-address');
  if (key === null || address === null) {
    return;
  }
  own = key.content;
  // The storage is that of this port: pages that were opened without the token, and this one anew, find it there.
  write(place, own);
  history.replaceState(history.state, '', address.content);
  key.remove();
  address.remove();
}

export function pageKey(): string {
  return read(place) || own;
}
