// What the browser's own trace tells of the frames of a page and of the work behind them.

const categories = [
  'disabled-by-default-devtools.timeline.frame', 'devtools.timeline.frame', 'devtools.timeline',
  'disabled-by-default-devtools.timeline', // each task of a thread, with the processor time that it took
];
// A display of 60 pictures a second waits 16.7 ms for each; beyond this one was left out.
export const late_ms = 17.5;

// Runs the work with tracing on. Gives the events.
export async function traced(session, work) {
  const events = [];
  const take = ({ value }) => events.push(...value);
  session.on('Tracing.dataCollected', take);
  await session.send('Tracing.start', {
    transferMode: 'ReportEvents',
    traceConfig: { includedCategories: categories, excludedCategories: ['*'] },
  });
  await work();
  const complete = new Promise((resolve) => session.once('Tracing.tracingComplete', resolve));
  await session.send('Tracing.end');
  await complete;
  session.off('Tracing.dataCollected', take);
  return events;
}

function quantile(sorted, part) {
  return sorted.length === 0 ? 0 : sorted[Math.min(sorted.length - 1, Math.floor(sorted.length * part))];
}

export function median(values) {
  return quantile([...values].sort((a, b) => a - b), 0.5);
}

// What times from frame to frame amount to.
export function framesOf(gaps) {
  const sorted = [...gaps].sort((a, b) => a - b);
  return {
    count: gaps.length,
    late: gaps.filter((gap) => gap > late_ms).length,
    p50: quantile(sorted, 0.5),
    p99: quantile(sorted, 0.99),
  };
}

// The times from frame to frame as they were drawn, and how many the browser itself says it left out.
export function drawnFrames(events) {
  const named = (name) => events.filter((event) => event.name === name);
  const times = named('DrawFrame')
    .map((event) => event.ts / 1000)
    .sort((a, b) => a - b);
  return { gaps: times.slice(1).map((time, index) => time - times[index]), dropped: named('DroppedFrame').length };
}

// The work of the thread that runs the page, which is the one that begins its frames: how many, and of each task the
// processor time in milliseconds. Other programs on the machine add little to it, while they take whole frames away.
export function mainWork(events) {
  const thread = ({ pid, tid }) => `${pid}:${tid}`;
  const frames = new Map();
  for (const event of events) {
    if (event.name === 'BeginMainThreadFrame') {
      frames.set(thread(event), (frames.get(thread(event)) ?? 0) + 1);
    }
  }
  const [main, count] = [...frames].sort((one, other) => other[1] - one[1])[0] ?? ['', 0];
  const tasks = events.filter((event) => event.name === 'RunTask' && event.ph === 'X' && thread(event) === main);
  return { frames: count, tasks: tasks.map((task) => (task.tdur ?? 0) / 1000) };
}
