// Small pictures as PNG, drawn here so that the stand-in needs no files.
import { deflateSync } from 'node:zlib';

const crcTable = Array.from({ length: 256 }, (_, n) => {
  let c = n;
  for (let k = 0; k < 8; k++) {
    c = c & 1 ? 0xedb88320 ^ (c >>> 1) : c >>> 1;
  }
  return c >>> 0;
});

function crc(bytes) {
  let c = 0xffffffff;
  for (const byte of bytes) {
    c = crcTable[(c ^ byte) & 0xff] ^ (c >>> 8);
  }
  return (c ^ 0xffffffff) >>> 0;
}

function chunk(type, data) {
  const body = Buffer.concat([Buffer.from(type, 'latin1'), data]);
  const result = Buffer.alloc(body.length + 8);
  result.writeUInt32BE(data.length, 0);
  body.copy(result, 4);
  result.writeUInt32BE(crc(body), body.length + 4);
  return result;
}

// `colourAt(x, y)`, both 0 to 1, gives red, green and blue of 0 to 255.
export function png(width, height, colourAt) {
  const rows = Buffer.alloc(height * (1 + width * 3));
  for (let y = 0; y < height; y++) {
    let offset = y * (1 + width * 3) + 1;
    for (let x = 0; x < width; x++) {
      for (const part of colourAt(x / (width - 1), y / (height - 1))) {
        rows[offset++] = Math.max(0, Math.min(255, Math.round(part)));
      }
    }
  }
  const header = Buffer.alloc(13);
  header.writeUInt32BE(width, 0);
  header.writeUInt32BE(height, 4);
  header.set([8, 2, 0, 0, 0], 8);
  const signature = Buffer.from([0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a]);
  return Buffer.concat([
    signature,
    chunk('IHDR', header),
    chunk('IDAT', deflateSync(rows)),
    chunk('IEND', Buffer.alloc(0)),
  ]);
}

function hash(text) {
  let h = 2166136261;
  for (const c of text) {
    h = Math.imul(h ^ c.codePointAt(0), 16777619);
  }
  return h >>> 0;
}

function mix(a, b, t) {
  return a.map((part, index) => part + (b[index] - part) * t);
}

function hsl(hue, saturation, lightness) {
  const f = (n) => {
    const k = (n + hue / 30) % 12;
    const a = saturation * Math.min(lightness, 1 - lightness);
    return 255 * (lightness - a * Math.max(-1, Math.min(k - 3, 9 - k, 1)));
  };
  return [f(0), f(8), f(4)];
}

// A landscape that differs with the clip: sky, sun or moon, hills.
export function landscape(id, width = 240, height = 135) {
  const seed = hash(`clip ${id}`);
  const part = (n) => ((seed >>> n) & 255) / 255;
  const hue = [12, 28, 200, 215, 260, 340, 185, 40][seed % 8] + part(3) * 20;
  const top = hsl((hue + 40) % 360, 0.55, 0.16 + part(5) * 0.25);
  const bottom = hsl(hue, 0.7, 0.5 + part(9) * 0.2);
  const sun = { x: 0.2 + part(11) * 0.6, y: 0.3 + part(13) * 0.3, r: 0.06 + part(17) * 0.06 };
  const land = hsl((hue + 180) % 360, 0.25, 0.1 + part(19) * 0.1);
  return png(width, height, (x, y) => {
    let colour = mix(top, bottom, Math.min(1, y * 1.4));
    const d = Math.hypot((x - sun.x) * (width / height), y - sun.y);
    const glow = Math.max(0, 1 - d / (sun.r * 5));
    colour = mix(colour, [255, 236, 190], d < sun.r ? 0.95 : glow * glow * 0.5);
    for (let layer = 0; layer < 3; layer++) {
      const line =
        0.62 + layer * 0.12 + 0.06 * Math.sin(x * (5 + layer * 3) + part(layer * 5) * 6) +
        0.025 * Math.sin(x * 17 + part(7) * 6 + layer);
      if (y > line) {
        colour = mix(land, colour, 0.45 - layer * 0.2);
      }
    }
    return colour;
  });
}
