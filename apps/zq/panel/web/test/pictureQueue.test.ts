import assert from 'node:assert/strict';
import { test } from 'node:test';
import { atOnce, PictureQueue, type Fetched } from '../src/lib/pictureQueue.ts';

// Transfers that end when the test says so.
function makeQueue() {
  const begun: string[] = [];
  const aborted: string[] = [];
  const postponed: (() => void)[] = [];
  const ends = new Map<string, (fetched: Fetched) => void>();
  const queue = new PictureQueue(
    (address, signal) =>
      new Promise((resolve, reject) => {
        begun.push(address);
        ends.set(address, resolve);
        signal.addEventListener('abort', () => {
          aborted.push(address);
          reject(signal.reason as Error);
        });
      }),
    (work) => postponed.push(work),
  );
  const told: string[] = [];
  return {
    queue,
    begun,
    aborted,
    told,
    ask: (address: string, isOnScreen = () => true) =>
      queue.ask(address, isOnScreen, (isThere) => told.push(`${address} ${isThere ? 'there' : 'none'}`)),
    goOn: () => postponed.splice(0).forEach((work) => work()),
    async end(address: string, fetched: Fetched): Promise<void> {
      ends.get(address)?.(fetched);
      await settled();
    },
  };
}

const settled = () => new Promise((resolve) => setImmediate(resolve));

test('only so many are under way at a time', async () => {
  const { ask, begun, end, told } = makeQueue();
  ['a', 'b', 'c', 'd'].forEach((address) => ask(address));
  assert.equal(begun.length, atOnce);
  await end('a', 'there');
  assert.deepEqual(begun, ['a', 'b', 'c']);
  await end('b', 'none');
  assert.deepEqual(begun, ['a', 'b', 'c', 'd']);
  assert.deepEqual(told, ['a there', 'b none']);
});

test('what is on screen goes first, also what has come there meanwhile', async () => {
  const { ask, begun, end } = makeQueue();
  ask('a');
  ask('b');
  let scrolled = false;
  ask('below', () => false);
  ask('far below', () => scrolled);
  ask('seen');
  scrolled = true;
  await end('a', 'there');
  await end('b', 'there');
  assert.deepEqual(begun, ['a', 'b', 'far below', 'seen']);
});

test('what is scrolled past makes room at once and is told nothing', async () => {
  const { ask, begun, aborted, told } = makeQueue();
  const first = ask('a');
  ask('b');
  const third = ask('c');
  ask('d');
  third.cancel();
  first.cancel();
  await settled();
  assert.deepEqual(aborted, ['a']);
  assert.deepEqual(begun, ['a', 'b', 'd']);
  assert.deepEqual(told, []);
});

test('one that is not there yet lets the others go first and is asked for again', async () => {
  const { queue, ask, begun, end, goOn, told } = makeQueue();
  ['slow', 'b', 'c', 'd'].forEach((address) => ask(address));
  await end('slow', 'later');
  assert.deepEqual(begun, ['slow', 'b', 'c']);
  await end('b', 'there');
  await end('c', 'there');
  await end('d', 'there');
  assert.deepEqual(begun, ['slow', 'b', 'c', 'd']);
  goOn();
  assert.deepEqual(begun, ['slow', 'b', 'c', 'd', 'slow']);
  assert.ok(!queue.has('slow'));
  await end('slow', 'there');
  assert.ok(queue.has('slow'));
  assert.deepEqual(told, ['b there', 'c there', 'd there', 'slow there']);
});

test('one that nobody waits for any more is not asked for again', async () => {
  const { ask, begun, end, goOn } = makeQueue();
  const wish = ask('slow');
  await end('slow', 'later');
  wish.cancel();
  goOn();
  assert.deepEqual(begun, ['slow']);
});

test('a transfer that fails is a picture that is not there, until it is asked for again', async () => {
  const told: boolean[] = [];
  let isBack = false;
  const queue = new PictureQueue(() => (isBack ? Promise.resolve('there') : Promise.reject(new Error('no network'))));
  queue.ask('a', () => true, (isThere) => told.push(isThere));
  await settled();
  isBack = true;
  queue.ask('a', () => true, (isThere) => told.push(isThere));
  await settled();
  assert.deepEqual(told, [false, true]);
  queue.forget('a');
  assert.ok(!queue.has('a'));
});
