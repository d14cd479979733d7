// A made-up catalogue: a thousand clips, some with names that a careless page would stumble over.

const hostileNames = [
  '<img src=x onerror=alert(1)>',
  '"><script>alert(document.cookie)</script>',
  "'; DROP TABLE clips; --",
  '$CLIP$ $COUNT$ {{constructor}} ${1+1}',
  '%s%n%d &amp; &lt;b&gt;bold&lt;/b&gt;',
  '\u202Egnirts desrever a\u202C and on',
  'غروب الشمس في الصحراء',
  '東京の夕日、渋谷のスクランブル交差点を渡る人々の長い長い題名',
  'Ηλιοβασίλεμα στο Αιγαίο',
  'Donaudampfschifffahrtsgesellschaftskapitänsmützenabzeichenverleihungsfeier',
  'Z̷̢̛a̸l̵g̶o̷ ̴s̶u̵n̸s̷e̶t̴',
  '👩‍👩‍👧‍👦 family at the beach 🏖️',
  'line one\nline two\ttab',
  '../../../../etc/passwd',
  'C:\\CON\\aux.mov',
  '   ',
  'a'.repeat(300),
  'javascript:alert(1)',
  'https://example.com/?a=b&c=d#e',
  '\u0000\u0007\u001b[31mred',
];

const places = ['Harbour', 'Desert', 'Forest', 'Old town', 'Glacier', 'Coast road', 'Market', 'Rooftops', 'River', 'Station'];
const moments = ['at sunset', 'in the rain', 'time-lapse', 'from above', 'at dawn', 'in slow motion', 'by night', 'in fog'];
const formats = [
  ['720p, H.264 (high, avc1)', '23.976', [24000, 1001]],
  ['1080p, Apple ProRes 422 (hq)', '24', [24, 1]],
  ['1080p, H.264 (high, avc1)', '59.94', [60000, 1001]],
  ['4k, Apple ProRes (apcs)', '25', [25, 1]],
  ['4k, H.265 (main 10, hvc1)', '29.97', [30000, 1001]],
  ['486i 4:3, dvc', '29.97', [30000, 1001]],
];
const prices = [4, 9, 19, 49, 79, 125, 249];
const lengths = [5, 8, 12, 20, 31, 61, 135];

export function makeClips(count) {
  return Array.from({ length: count }, (_, index) => {
    const number = index + 1;
    const hostile = index % 50 === 7 ? hostileNames[Math.floor(index / 50) % hostileNames.length] : null;
    const [format, rate, rateFraction] = formats[(index * 7) % formats.length];
    const length = lengths[(index * 5) % lengths.length];
    const price = prices[(index * 3) % prices.length];
    return {
      id: hostile !== null && index % 100 === 7 ? `id/${number}?&#"<>` : String(number),
      name: hostile ?? `${places[index % places.length]} ${moments[(index * 3) % moments.length]}, take ${(index % 9) + 1}`,
      owned: index % 11 === 3,
      price,
      length,
      height: format.startsWith('4k') ? 2160 : format.startsWith('1080') ? 1080 : format.startsWith('720') ? 720 : 486,
      format,
      rate: index % 41 === 20 ? '' : rate,
      rateFraction: index % 41 === 20 ? null : rateFraction,
      hasThumbnail: index % 17 !== 9,
      // Announced, and then not there.
      thumbnailFails: index % 37 === 13,
      hasPreview: index % 29 !== 17,
      audioChannels: [2, 0, 1, 6][index % 4],
      edit: '',
      state: '',
    };
  });
}

function durationText(seconds) {
  return `${Math.floor(seconds / 60)}:${String(Math.floor(seconds % 60)).padStart(2, '0')}`;
}

// A clip as the interface tells it.
export function told(clip) {
  return {
    id: clip.id,
    name: clip.name,
    owned: clip.owned,
    attributes: {
      1: clip.name,
      45: clip.format,
      18: clip.rate,
      59: clip.owned ? 'Purchased' : clip.price === 79 ? '' : `$${clip.price}`,
      1003: durationText(clip.length),
    },
    rate: clip.rate,
    rateFraction: clip.rateFraction,
    hasThumbnail: clip.hasThumbnail,
    hasPreview: clip.hasPreview,
    audioChannels: clip.audioChannels,
    edit: clip.edit,
    state: clip.state,
  };
}
