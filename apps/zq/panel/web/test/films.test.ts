import assert from 'node:assert/strict';
import { test } from 'node:test';
import { mediaAddress, previewAddress } from '../src/api/client.ts';
import { isMediaAddress, lacksPicture } from '../src/lib/films.ts';

test('an address tells full media from a preview, whatever the id of the clip', () => {
  for (const id of ['12', '../media', 'a/b?c#d', '']) {
    assert.equal(isMediaAddress(mediaAddress('T7', id)), id !== '', id);
    assert.equal(isMediaAddress(previewAddress('T7', id)), false, id);
  }
  assert.equal(isMediaAddress(`${previewAddress('T7', '12')}?quality=/media`), false);
  assert.equal(isMediaAddress(previewAddress('media', 'media')), false);
});

test('full media that opens without a picture is not taken for a film, a preview may be sound alone', () => {
  assert.equal(lacksPicture(mediaAddress('T7', '12'), { videoWidth: 0 }), true);
  assert.equal(lacksPicture(mediaAddress('T7', '12'), { videoWidth: 320 }), false);
  assert.equal(lacksPicture(previewAddress('T7', '12'), { videoWidth: 0 }), false);
});
