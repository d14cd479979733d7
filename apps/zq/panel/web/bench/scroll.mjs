// How a result of a thousand clips scrolls, and how soon the first of them are on screen: the real programs and the
// built page in a browser, beside an empty page of the same length, which is what this machine can do at all.
//   node bench/scroll.mjs [SECONDS]
//
// The frames that were drawn hold for a machine that does nothing else. What the page's thread computes for a frame is
// told beside them, as processor time: that can be compared on a busy machine, with the same build type of the programs.
import { existsSync, readFileSync } from 'node:fs';
import { join } from 'node:path';
import { build } from '../e2e/support/places.mjs';
import { World } from '../e2e/support/World.mjs';
import { drawnFrames, framesOf, late_ms, mainWork, median, traced } from './Trace.mjs';

const clipCount = 1000;
const searches = 15;
const turns = 3; // of each page, one after the other, since other work on this machine comes and goes
const seconds = Number(process.argv[2] ?? 10);
const size = { width: 1280, height: 800 };

// Runs in the page: in how many of its frames a part of what is on screen had no rows as the frame began. The browser
// scrolls before the page has answered, so what is not there by then may have been seen to be missing.
function watchRows() {
  const seen = { frames: 0, bare: 0 };
  const isCovered = (scroller) => {
    const box = scroller.getBoundingClientRect();
    const rows = [...scroller.querySelectorAll('.place')]
      .map((place) => place.getBoundingClientRect())
      .filter((row) => row.bottom > box.top && row.top < box.bottom);
    const between = 50; // padding, and the head of a list
    return (
      Math.min(...rows.map((row) => row.top)) < box.top + between &&
      Math.max(...rows.map((row) => row.bottom)) > box.bottom - between
    );
  };
  const step = () => {
    const scroller = document.querySelector('[role="grid"]');
    seen.frames++;
    seen.bare += scroller === null || isCovered(scroller) ? 0 : 1;
    seen.handle = requestAnimationFrame(step);
  };
  seen.handle = requestAnimationFrame(step);
  window.seenRows = seen;
}

function watchedRows() {
  cancelAnimationFrame(window.seenRows.handle);
  return { frames: window.seenRows.frames, bare: window.seenRows.bare };
}

// Scrolls that element from its top to its end, as a finger does it.
async function scroll(page, selector) {
  const session = await page.context().newCDPSession(page);
  const { x, y, distance } = await page.locator(selector).evaluate((element) => {
    document.activeElement?.blur(); // a blinking caret is drawn too
    element.scrollTop = 0;
    const box = element.getBoundingClientRect();
    return { x: box.left + box.width / 2, y: box.top + box.height / 2, distance: element.scrollHeight - element.clientHeight };
  });
  await page.evaluate(watchRows);
  const events = await traced(session, () =>
    session.send('Input.synthesizeScrollGesture', {
      x,
      y,
      yDistance: -distance,
      speed: Math.ceil(distance / seconds),
      gestureSourceType: 'mouse',
      preventFling: true,
    }),
  );
  const { bare } = await page.evaluate(watchedRows);
  await session.detach();
  return { ...drawnFrames(events), work: mainWork(events), bare, distance };
}

// Scrolls that were made in turns, as one.
function together(scrolls) {
  const sum = (member) => scrolls.reduce((soFar, scroll) => soFar + member(scroll), 0);
  const tasks = scrolls.flatMap(({ work }) => work.tasks);
  const work_ms = tasks.reduce((soFar, task) => soFar + task, 0);
  return {
    drawn: framesOf(scrolls.flatMap(({ gaps }) => gaps)),
    dropped: sum(({ dropped }) => dropped),
    bare: sum(({ bare }) => bare),
    perFrame: work_ms / Math.max(1, sum(({ work }) => work.frames)),
    perScreen: (work_ms * 1000) / sum(({ distance }) => distance),
    longest: Math.max(0, ...tasks),
  };
}

// A page that has nothing to do but to be drawn, of that length.
async function plainPage(browser, height) {
  const context = await browser.newContext({ viewport: size });
  const page = await context.newPage();
  await page.setContent(
    '<body style="margin:0"><div id="plain" style="height:100vh;overflow-y:scroll">' +
      `<div style="height:${height}px;background:repeating-linear-gradient(#456 0 80px,#9ab 80px 160px)"></div></div>`,
  );
  return page;
}

const heads = ['frames', 'late', 'dropped', 'p50', 'p99', 'bare', 'ms/frame', 'ms/1000px', 'longest'];

function row(name, { drawn, dropped, bare, perFrame, perScreen, longest }) {
  const figures = [drawn.count, drawn.late, dropped, drawn.p50.toFixed(1), drawn.p99.toFixed(1), bare];
  const work = [perFrame, perScreen, longest].map((figure) => figure.toFixed(2));
  return [name.padEnd(12), ...[...figures, ...work].map((figure) => String(figure).padStart(10))].join('');
}

// Programs that were built for finding faults answer later than those that people use.
function buildType() {
  const cache = join(build, 'CMakeCache.txt');
  const type = existsSync(cache) ? /^CMAKE_BUILD_TYPE:\w+=(.*)$/m.exec(readFileSync(cache, 'utf8'))?.[1] : undefined;
  return type || 'unknown';
}

// From the end of the answer to a search until the first of its clips is painted, in milliseconds. The page's own
// clock tells both.
async function firstResults(panel, words) {
  return panel.page.evaluate(
    (wanted) =>
      new Promise((resolve) => {
        const isAnswer = (entry) =>
          new URL(entry.name).pathname.endsWith('/search') && new URL(entry.name).searchParams.get('words') === wanted;
        performance.clearResourceTimings();
        let painted = 0;
        let answered = 0;
        const tell = () => painted > 0 && answered > 0 && resolve(painted - answered);
        const answers = new PerformanceObserver((list) => {
          const entry = list.getEntries().find(isAnswer);
          if (entry !== undefined) {
            answers.disconnect();
            answered = entry.responseEnd;
            tell();
          }
        });
        answers.observe({ type: 'resource' });
        const grid = document.querySelector('[role="grid"]');
        const changes = new MutationObserver(() => {
          const name = grid.querySelector('[data-index="0"][aria-busy="false"] .name');
          if (name?.textContent.toLowerCase().includes(wanted) !== true) {
            return;
          }
          changes.disconnect();
          // What comes behind a frame's own work has the frame painted.
          requestAnimationFrame(() => {
            const channel = new MessageChannel();
            channel.port1.onmessage = () => {
              painted = performance.now();
              tell();
            };
            channel.port2.postMessage(null);
          });
        });
        changes.observe(grid, { subtree: true, childList: true, characterData: true });
        const field = document.getElementById('search-words');
        field.value = wanted;
        field.dispatchEvent(new Event('input', { bubbles: true }));
        field.form.requestSubmit();
      }),
    words,
  );
}

const layoutShifts = `
  window.layoutShifts = [];
  new PerformanceObserver((list) => window.layoutShifts.push(...list.getEntries().map(({ value }) => value)))
    .observe({ type: 'layout-shift', buffered: true });
`;

const clips = Array.from({ length: clipCount }, (_, index) => ({
  film: 'small.mov',
  title: `Take ${String(index).padStart(4, '0')} of the harbour`,
  price: 9,
}));
const world = await World.start({ clips });
try {
  const panel = await world.openPanel({ ...size, init: layoutShifts });
  await panel.until(async () => (await panel.get('repositories/T7/search?words=')).totalCount === clipCount, undefined, 120_000);
  await panel.search('');
  await panel.clips.first().waitFor();

  const view = async (which, role) => {
    await panel.button(`results.${which}`).click();
    await panel.page.locator(`[role="grid"] [role="${role}"][data-index]`).first().waitFor();
  };
  const plainOne = await plainPage(world.browser, await panel.page.locator('[role="grid"]').evaluate((element) => element.scrollHeight));
  const scrolls = { plain: [], grid: [], list: [] };
  for (let turn = 0; turn < turns; turn++) {
    await plainOne.bringToFront();
    scrolls.plain.push(await scroll(plainOne, '#plain'));
    await panel.page.bringToFront();
    await view('grid', 'gridcell');
    scrolls.grid.push(await scroll(panel.page, '[role="grid"]'));
    await view('list', 'row');
    scrolls.list.push(await scroll(panel.page, '[role="grid"]'));
  }
  await plainOne.context().close();
  const shifts = await panel.page.evaluate(() => window.layoutShifts);
  await view('grid', 'gridcell');
  const waits = [];
  for (let turn = 0; turn < searches; turn++) {
    waits.push(await firstResults(panel, `take 0${turn % 10}${turn % 3}`));
  }
  await world.closePanels();

  const [plain, grid, list] = [together(scrolls.plain), together(scrolls.grid), together(scrolls.list)];
  console.log(`${clipCount} clips in ${seconds} s, ${turns} times, in turn; build type of the programs: ${buildType()}`);
  console.log(`frame times in ms (late: over ${late_ms}); of the page's thread the processor time, and its longest task`);
  console.log(' '.repeat(12) + heads.map((head) => head.padStart(10)).join(''));
  console.log([row('plain page', plain), row('grid', grid), row('list', list)].join('\n'));
  for (const [name, { drawn }] of [['grid', grid], ['list', list]]) {
    const [frames, p50] = [drawn.count / plain.drawn.count, drawn.p50 / plain.drawn.p50];
    console.log(`${name}/plain page: frames ${frames.toFixed(2)} (goal: >= 0.98), p50 ${p50.toFixed(2)} (goal: <= 1.02)`);
  }
  console.log(`layout shifts: ${shifts.length}, in sum ${shifts.reduce((sum, value) => sum + value, 0).toFixed(4)} (goal: 0)`);
  console.log(`first results: ${median(waits).toFixed(1)} ms after the answer, at most ${Math.max(...waits).toFixed(1)} ms (goal: <= 100)`);
} finally {
  await world.end();
}
