#include "apps/tarn7d/PaymentStyle.h"

namespace tarn7d {

std::string_view const paymentStyle = R"css(
:root {
  color-scheme: light dark;
  --page: #f3f5f7; --card: #ffffff; --text: #17202a; --soft: #566270; --line: #dbe1e7;
  --accent: #0b6e66; --accent-text: #ffffff; --focus: #0b6e66;
  --warn: #fff5da; --warn-line: #d9a520; --warn-text: #553d00;
  --bad: #fdecec; --bad-line: #c62f2f; --bad-text: #8c1717;
  --frame: #e6ebef;
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #11161b; --card: #1a2128; --text: #e8edf1; --soft: #a3b0bc; --line: #303b45;
    --accent: #4bc4b6; --accent-text: #06231f; --focus: #7fe0d4;
    --warn: #332a10; --warn-line: #b88a1c; --warn-text: #f6dfa0;
    --bad: #3a1a1a; --bad-line: #e06c6c; --bad-text: #ffc3c3;
    --frame: #28323b;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0; background: var(--page); color: var(--text);
  font: 1rem/1.5 system-ui, -apple-system, "Segoe UI", Roboto, "Noto Sans", "DejaVu Sans", sans-serif;
}
.bar { display: flex; justify-content: space-between; align-items: baseline; gap: 1rem; flex-wrap: wrap; }
header, main, footer { max-width: 62rem; margin: 0 auto; padding: 0 1.25rem; }
header { padding-top: 1.75rem; }
main { padding-bottom: 2rem; }
footer { padding-bottom: 2.5rem; color: var(--soft); font-size: .875rem; }
.name { font-weight: 700; letter-spacing: .02em; font-size: 1.125rem; }
.name span { color: var(--accent); }
.account { color: var(--soft); font-size: .9375rem; overflow-wrap: anywhere; }
h1 { font-size: 1.75rem; line-height: 1.25; margin: 1.25rem 0 1rem; }
h2 { font-size: 1.125rem; margin: 0 0 .75rem; }
p { margin: 0 0 1rem; }
a { color: var(--accent); }
code {
  font: 600 .9375rem/1.4 ui-monospace, "DejaVu Sans Mono", monospace; white-space: nowrap;
  background: var(--frame); padding: .1em .4em; border-radius: .3rem; -webkit-user-select: all; user-select: all;
}
.notice { border: 1px solid; border-left-width: .375rem; border-radius: .5rem; padding: .75rem 1rem; margin: 0 0 1.25rem; }
.notice p { margin: 0; }
.notice ul { margin: .25rem 0 0; padding-left: 1.25rem; }
.demo { background: var(--warn); border-color: var(--warn-line); color: var(--warn-text); }
.problem { background: var(--bad); border-color: var(--bad-line); color: var(--bad-text); }
.problem a { color: inherit; }
.columns { display: grid; gap: 1.25rem; align-items: start; }
@media (min-width: 50rem) { .columns { grid-template-columns: minmax(0, 1.35fr) minmax(19rem, 1fr); } }
.card { background: var(--card); border: 1px solid var(--line); border-radius: .75rem; padding: 1.25rem; }
.card > p:last-child { margin-bottom: 0; }
.narrow { max-width: 40rem; }
.after { margin-top: 1.25rem; }
.clips { list-style: none; margin: 0; padding: 0; }
.clips li {
  display: grid; grid-template-columns: 6rem minmax(0, 1fr) auto; gap: .875rem; align-items: center;
  padding: .75rem 0; border-bottom: 1px solid var(--line);
}
.clips li:first-child { padding-top: 0; }
.picture { width: 6rem; height: 3.375rem; border-radius: .375rem; background: var(--frame); overflow: hidden; }
.picture img { display: block; width: 100%; height: 100%; object-fit: cover; }
.title { font-weight: 600; overflow-wrap: anywhere; }
.facts { color: var(--soft); font-size: .875rem; }
.price { font-variant-numeric: tabular-nums; text-align: right; white-space: nowrap; }
.owned { color: var(--soft); font-size: .875rem; }
.total { padding-top: 1rem; font-size: 1.125rem; font-weight: 700; }
.total .price { font-size: 1.375rem; }
.field { margin: 0 0 1rem; }
.row { display: grid; grid-template-columns: 1fr 1fr; gap: 1rem; }
label { display: block; font-weight: 600; margin-bottom: .25rem; }
.hint { color: var(--soft); font-size: .875rem; margin: .25rem 0 0; }
.wrong { color: var(--bad-text); font-size: .875rem; font-weight: 600; margin: .25rem 0 0; }
input {
  width: 100%; font: inherit; font-variant-numeric: tabular-nums; color: inherit; background: var(--page);
  border: 1px solid var(--soft); border-radius: .5rem; padding: .625rem .75rem; min-height: 2.75rem;
}
input[aria-invalid] { border: 2px solid var(--bad-line); }
button {
  width: 100%; font: inherit; font-weight: 700; color: var(--accent-text); background: var(--accent); border: 0;
  border-radius: .5rem; padding: .75rem 1rem; min-height: 3rem; cursor: pointer;
}
button:hover { filter: brightness(1.08); }
:focus-visible { outline: 3px solid var(--focus); outline-offset: 2px; }
.facts-list { display: grid; grid-template-columns: max-content minmax(0, 1fr); gap: .25rem 1.25rem; margin: 0 0 1.25rem; }
.facts-list dt { color: var(--soft); }
.facts-list dd { margin: 0; overflow-wrap: anywhere; }
@media (max-width: 28rem) {
  h1 { font-size: 1.5rem; }
  .clips li { grid-template-columns: 4rem minmax(0, 1fr) auto; }
  .picture { width: 4rem; height: 2.25rem; }
}
@media print { body { background: #fff; color: #000; } .card { border: 0; padding: 0; } }
)css";

} // namespace tarn7d
