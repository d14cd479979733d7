// A hundred texts that a service could send to make a page, a file, a log or a shell do something.
const unlike = [
  '<img src=x onerror=alert(1)>',
  '"><script>alert(document.cookie)</script>',
  '<svg onload=alert(1)>',
  '<iframe src="javascript:alert(1)">',
  '<style>*{display:none}</style>',
  '</title><h1>title</h1>',
  '<!-- comment',
  ']]>',
  '&lt;b&gt;bold&lt;/b&gt; &amp;',
  "' onmouseover='alert(1)",
  'javascript:alert(1)',
  'data:text/html,<script>alert(1)</script>',
  '{{constructor.constructor("alert(1)")()}}',
  '${alert(1)}',
  '{@html "<b>x</b>"}',
  '{#each x}',
  '$CLIP$ $COUNT$ $SEQUENCE$',
  '%s%n%d%p%x',
  "'; DROP TABLE clips; --",
  '$(touch x) `touch x` | touch x',
  '../../../../etc/passwd',
  'C:\\CON\\aux.mov',
  '\u202Egnirts desrever a\u202C and on',
  '\u2067right\u2069 to left',
  'غروب الشمس في الصحراء',
  'שקיעה מעל הים',
  '東京の夕日、渋谷のスクランブル交差点を渡る人々の長い長い題名',
  'Ηλιοβασίλεμα στο Αιγαίο',
  'Z̷̢̛a̸l̵g̶o̷ ̴s̶u̵n̸s̷e̶t̴',
  '👩‍👩‍👧‍👦 family at the beach 🏖️',
  '\u0007bell and \u001b[31mescape\u001b[0m',
  'zero\u200bwidth\ufeffmarks',
  'line\u2028and paragraph\u2029separators',
  'a'.repeat(500),
  'https://example.com/?a=b&c=d#e',
  '__proto__',
  'constructor',
  'null',
  'NaN',
  '-1',
];
// The others are each markup with another event or tag, so that no single one of them is let through.
const tags = ['a', 'b', 'body', 'div', 'form', 'input', 'link', 'math', 'meta', 'object', 'p', 'table'];
const events = ['onclick', 'onerror', 'onfocus', 'onload', 'onpointerenter'];
const made = tags.flatMap((tag) => events.map((event) => `<${tag} ${event}=alert(1) autofocus tabindex=1>${tag}`));

export const hostileTexts = [...unlike, ...made].slice(0, 100);

// Elements and handlers that only such a text could have brought into the page, its scripts and its title.
export const strangers = (panel) =>
  panel.page.evaluate(() => ({
    elements: document.querySelectorAll(
      'iframe, object, embed, math, body table:not(.usage-report table), form[onclick], [onclick], [onerror], [onfocus], ' +
        '[onload], [onmouseover], [onpointerenter], [autofocus], h1:not(.visually-hidden):not(.usage-report h1), ' +
        'body style, body link, body meta, body img:not([src^="/api/"])',
    ).length,
    scripts: document.scripts.length,
    title: document.title,
  }));
