// 128 random bits as a text. A purchase has one, however often it is sent; so has a page.
export function newKey(random: (bytes: Uint8Array) => Uint8Array = (bytes) => crypto.getRandomValues(bytes)): string {
  return [...random(new Uint8Array(16))].map((byte) => byte.toString(16).padStart(2, '0')).join('');
}
