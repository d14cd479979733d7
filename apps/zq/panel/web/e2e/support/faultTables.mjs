// What can go wrong with an answer of the service, and what a person reads of it: the tables of the tests of faults.
import assert from 'node:assert/strict';

const cut = /cut short/;
const unreadable = /cannot be understood/;
const status = (number) => [`the status ${number}`, 'status', { status: number }, new RegExp(`error status ${number}`)];

// Of a request with a command. Each: its name, the kind, its numbers, and what the text says of it; without words
// nothing is said, since the request only takes longer.
export const commandFaults = [
  ['a late answer', 'delay', { ms: 600 }, null],
  ['an answer that is cut', 'cut', { bytes: 20 }, cut],
  ['an answer that stops and ends', 'stall', { bytes: 20, ms: 300 }, cut],
  ['an answer that is shorter than announced', 'wrong-length', { bytes: 100 }, cut],
  ['an answer whose end is missing', 'wrong-length', { bytes: -10 }, unreadable],
  status(401),
  status(403),
  status(404),
  ['the status 429', 'status', { status: 429, retry_after: 1 }, /error status 429/],
  status(500),
  status(503),
  ['a page in the place of the answer', 'not-json', {}, unreadable],
  ['a connection that ends without an answer', 'lost-answer', {}, /closed the connection|Connection died|cut short/],
].map(([name, kind, values, says]) => ({ name, kind, values, says }));

// Of a file: its name, the kind and its numbers. `harmless`: the file comes all the same, however often it happens.
export const fileFaults = [
  ['a late answer', 'delay', { ms: 400 }, true],
  ['a file that is cut', 'cut', { bytes: 2000 }],
  ['a file that stops and ends', 'stall', { bytes: 1000, ms: 300 }],
  ['a file that is shorter than announced', 'wrong-length', { bytes: 1000 }],
  ['a file whose end is missing', 'wrong-length', { bytes: -400 }],
  ['no ranges', 'no-ranges', {}, true],
  ['a file that is another one each time', 'changed-validator', {}],
  ['the status 401', 'status', { status: 401 }],
  ['the status 403', 'status', { status: 403 }],
  ['the status 404', 'status', { status: 404 }],
  ['the status 429', 'status', { status: 429, retry_after: 1 }],
  ['the status 500', 'status', { status: 500 }],
  ['the status 503', 'status', { status: 503 }],
  ['a page in the place of the file', 'not-json', {}],
  ['an address that has expired', 'expired-address', {}],
  ['a connection that ends without an answer', 'lost-answer', {}],
].map(([name, kind, values, harmless = false]) => ({ name, kind, values, harmless }));

// A text for a person: there is one, and it is none for a programmer.
export function assertReadable(text, what) {
  assert.ok(text.trim().length >= 10, `${what}: nothing is said, but "${text}"`);
  assert.doesNotMatch(
    text,
    /undefined|\bnull\b|NaN|\[object|(Type|Syntax|Range|Reference)Error|Failed to fetch|\bstd::|\.(cpp|h|ts|js|svelte):\d|\n\s+at /,
    what,
  );
}
