// One made-up repository: account, options, search, basket, purchases.
import { makeClips, told } from './clips.mjs';
import { ApiError, delay } from './http.mjs';

const columns = [
  { type: 1, name: 'Name', kind: 'text', width: 1, editable: false },
  { type: 45, name: 'Format', kind: 'text', width: 200, editable: false },
  { type: 18, name: 'Frame rate', kind: 'text', width: 90, editable: false },
  { type: 59, name: 'Price', kind: 'text', width: 90, editable: false },
  { type: 1003, name: 'Duration', kind: 'duration', width: 1, editable: false },
];

const any = { value: '-1', text: 'Any' };

function choice(legend, id, rows) {
  return {
    legend,
    type: 'choice',
    id,
    tooltip: '',
    active: true,
    hidden: false,
    value: '-1',
    initial: '-1',
    choices: [any, ...rows.map(([text], index) => ({ value: String(index), text }))],
    rows,
  };
}

export class Repository {
  constructor(shortName, name, { needsSignIn, clipCount, say }) {
    this.shortName = shortName;
    this.name = name;
    this.needsSignIn = needsSignIn;
    this.say = say;
    this.user = '';
    this.credits = null;
    this.clips = makeClips(clipCount);
    this.basket = [];
    this.purchases = [];
    this.withdrawn = new Map(); // orders by key
    this.words = '';
    this.cancelled = new Map(); // how often, by asker
    this.groups = [
      {
        legend: 'Filters',
        options: [
          choice('Maximum price', 'price', [5, 10, 20, 50, 100].map((value) => [`$${value}`, value])),
          choice('Minimum size', 'size', [['HD (720)', 720], ['HD (1080)', 1080], ['4k', 2160]]),
          choice('Minimum length', 'len', [5, 10, 20, 30, 45, 60].map((value) => [`${value} secs`, value])),
          { legend: 'Without the word', type: 'text', id: 'not', tooltip: '', active: true, hidden: false, value: '', initial: '' },
        ],
      },
      {
        legend: 'Options',
        options: [
          { legend: 'High-quality previews', type: 'boolean', id: 'price', tooltip: '', active: true, hidden: false, value: 'true', initial: null },
        ],
      },
    ];
  }

  describe() {
    return {
      shortName: this.shortName,
      name: this.name,
      summary: [{ text: 'Bring your vision to life, without compromise.  Find inspiration by searching a library of royalty-free HD and 4k stock video.' }],
      legalNotice: [
        { text: `All ${this.name} clips are subject to the `, quiet: true },
        { text: 'Terms of Service', link: 'https://example.com/legal/terms', quiet: true },
      ],
      webLink: 'http://example.com/',
      user: this.user,
      needsSignIn: this.needsSignIn,
      credits: this.user === '' ? null : this.credits,
      columns,
      thumbnailAspect: 16 / 9,
      words: this.words,
    };
  }

  changed() {
    this.say('repository', this.describe());
  }

  forms() {
    const field = (name, legend, more) => ({ name, legend, type: 'text', obfuscated: false, advance: false, hint: '', value: '', ...more });
    return {
      form: this.needsSignIn
        ? [
            field('username', 'Username', { hint: '[ type your username ]', value: 'editor' }),
            field('password', 'Password', { hint: '[ type your password ]', obfuscated: true, advance: true }),
          ]
        : [],
      linkForm: [
        field('link', '', {
          type: 'label',
          rich: [{ text: 'No account yet? Sign up at ' }, { text: 'example.com', link: 'http://example.com/login' }],
        }),
      ],
    };
  }

  async signIn(values) {
    await delay(300);
    if (values.username === 'nobody') {
      return { code: 2, text: 'There is no such user.', user: this.user, reason: '' };
    }
    if (values.password === 'wrong') {
      return { code: 7, text: 'The password is wrong.', user: this.user, reason: '' };
    }
    if (values.password === '') {
      return { code: 17, text: 'Signing in failed. Check the connection and try again.', user: this.user, reason: '' };
    }
    this.user = values.username;
    this.credits = 500;
    this.changed();
    return { code: 0, text: 'You are signed in.', user: this.user, reason: '' };
  }

  signOut() {
    this.user = '';
    this.changed();
  }

  toldGroups() {
    return this.groups.map((group) => ({
      legend: group.legend,
      options: group.options.map(({ rows, ...option }) => option),
    }));
  }

  setOption(group, index, value) {
    const option = this.groups[group]?.options[index];
    if (!option) {
      throw new ApiError('not_found', 404, 'There is no such option.');
    }
    if (option.choices && !option.choices.some((other) => other.value === value)) {
      throw new ApiError('bad_request', 400, 'The option has no such value.');
    }
    option.value = value;
    this.say('options', { repository: this.shortName, results: option.type !== 'boolean' });
    return { groups: this.toldGroups() };
  }

  // Words with a meaning of their own, to look at what is seldom seen: "nothing", "fail", "slow", "later".
  async search(words, page, pageSize, asker) {
    const ticket = this.cancelled.get(asker);
    this.words = words;
    await delay(words.includes('slow') ? 2500 : 60);
    if (ticket !== this.cancelled.get(asker)) {
      throw new ApiError('conflict', 409, 'The search was cancelled.');
    }
    if (words.includes('fail') || (words.includes('later') && page > 1)) {
      throw new ApiError('failed', 502, 'The service did not answer within 30 seconds.');
    }
    const chosen = (index) => {
      const option = this.groups[0].options[index];
      return option.value === '-1' ? null : option.rows[Number(option.value)][1];
    };
    const [price, height, length] = [chosen(0), chosen(1), chosen(2)];
    const unwanted = this.groups[0].options[3].value.trim().toLowerCase();
    const plain = words.replace(/\b(slow|later)\b/g, '').trim().toLowerCase();
    const hits = this.clips.filter(
      (clip) =>
        (plain === '' || clip.name.toLowerCase().includes(plain)) &&
        (unwanted === '' || !clip.name.toLowerCase().includes(unwanted)) &&
        (price === null || clip.price <= price) &&
        (height === null || clip.height >= height) &&
        (length === null || clip.length >= length),
    );
    return this.page(hits, page, pageSize);
  }

  cancelSearch(asker) {
    this.cancelled.set(asker, (this.cancelled.get(asker) ?? 0) + 1);
  }

  page(hits, page, pageSize) {
    return {
      page,
      pageSize,
      pageCount: Math.ceil(hits.length / pageSize),
      totalCount: hits.length,
      clips: hits.slice((page - 1) * pageSize, page * pageSize).map(told),
    };
  }

  owned() {
    const hits = this.user === '' ? [] : this.clips.filter((clip) => clip.owned);
    return this.page(hits, 1, Math.max(hits.length, 1));
  }

  find(id) {
    const clip = this.clips.find((other) => other.id === id);
    if (!clip) {
      throw new ApiError('not_found', 404, 'There is no such clip.');
    }
    return clip;
  }

  tellBasket(pieces) {
    const clips = this.basket.map((id) => this.find(id));
    const open = new Set(
      this.purchases
        .filter((purchase) => purchase.user === this.user && ['running', 'doubtful'].includes(purchase.state))
        .flatMap((purchase) => purchase.clips),
    );
    const dear = clips.filter((clip) => !clip.owned && !open.has(clip.id));
    const unpriced = dear.filter((clip) => clip.price === 79).length;
    const total = dear.reduce((sum, clip) => sum + (clip.price === 79 ? 0 : clip.price), 0);
    return {
      clips: clips.map((clip) => ({
        id: clip.id,
        name: clip.name,
        price: told(clip).attributes[59],
        owned: clip.owned,
        undecided: !clip.owned && open.has(clip.id),
        used: pieces.filter((piece) => piece.clip === clip.id).length,
      })),
      clipsToBuy: dear.length,
      total: dear.length > 0 && unpriced === 0 ? `$${total}` : '',
      credits: this.user === '' ? null : this.credits,
      unpriced,
    };
  }

  setBasket(ids) {
    ids.forEach((id) => this.find(id));
    this.basket = [...new Set(ids)];
    this.say('basket', { repository: this.shortName });
  }

  // A clip of 249 is refused, one of 125 leaves the answer in doubt for a while.
  buy({ key, clips, payment }) {
    const earlier = this.withdrawn.get(key) ?? this.purchases.find((purchase) => purchase.key === key);
    if (earlier) {
      return earlier;
    }
    if (this.user === '') {
      throw new ApiError('conflict', 409, 'You are not signed in.');
    }
    const busy = this.purchases.some(
      (other) =>
        other.user === this.user && ['running', 'doubtful'].includes(other.state) && other.clips.some((id) => clips.includes(id)),
    );
    if (busy) {
      throw new ApiError('conflict', 409, 'These clips are in a purchase that is not decided yet.');
    }
    const purchase = {
      key, user: this.user, clips, payment, state: 'running', code: null, text: '', trouble: '', page: '',
      time: Math.floor(Date.now() / 1000),
    };
    this.purchases.unshift(purchase);
    void this.finishPurchase(purchase);
    return purchase;
  }

  withdraw(key) {
    let order = this.withdrawn.get(key) ?? this.purchases.find((purchase) => purchase.key === key);
    if (!order) {
      order = {
        key, user: '', clips: [], payment: 'credits', state: 'refused', code: null,
        text: 'The order had not reached the program.', trouble: '', page: '', time: 0,
      };
      this.withdrawn.set(key, order);
    }
    return order;
  }

  async finishPurchase(purchase) {
    const wanted = purchase.clips.map((id) => this.find(id));
    const become = async (wait, change) => {
      await delay(wait);
      Object.assign(purchase, change);
      this.say('purchase', { repository: this.shortName, purchase });
    };
    await become(0, {});
    if (wanted.some((clip) => clip.price === 249)) {
      await become(900, { state: 'refused', code: 3, text: 'The service refused the purchase: not enough credits.' });
      return;
    }
    if (purchase.payment === 'page') {
      await become(400, { state: 'waiting', text: 'The payment page is open in your web browser.', page: 'http://example.com/pay/1' });
      await delay(6000);
    } else if (wanted.some((clip) => clip.price === 125)) {
      await become(900, { state: 'doubtful', text: 'The answer was lost. Whether the clips were bought is not known yet.' });
      await delay(6000);
    }
    wanted.forEach((clip) => {
      clip.owned = true;
    });
    this.credits -= wanted.reduce((sum, clip) => sum + clip.price, 0);
    this.basket = this.basket.filter((id) => !purchase.clips.includes(id));
    await become(700, { state: 'done', code: 2, text: 'The purchase is done.' });
    this.changed();
    this.say('basket', { repository: this.shortName });
  }
}
