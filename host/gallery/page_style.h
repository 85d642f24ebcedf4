#pragma once

namespace kelmora::host {

/// How the gallery looks. Wide windows show several shots in a row, a phone's one.
inline constexpr const char kPageStyle[] = R"css(
:root { color-scheme: light dark; --line: color-mix(in srgb, currentcolor 22%, transparent); --accent: #c8501e; }
* { box-sizing: border-box; }
html { scroll-padding-top: 4rem; }
body { font: 16px/1.5 system-ui, sans-serif; max-width: 1600px; margin: 0 auto; padding: 0 clamp(.75rem, 3vw, 2rem) 4rem; }
h1 { margin: 1.5rem 0 .25rem; line-height: 1.2; }
h2 { margin: 0; line-height: 1.2; }
code { font-size: .9em; overflow-wrap: anywhere; }
nav { position: sticky; top: 0; z-index: 1; background: Canvas; border-bottom: 1px solid var(--line);
      margin: 1rem calc(-1 * clamp(.75rem, 3vw, 2rem)) 0; padding: .5rem clamp(.75rem, 3vw, 2rem); overflow-x: auto; }
nav ul { display: flex; gap: .5rem; list-style: none; margin: 0; padding: 0; white-space: nowrap; }
nav a { display: block; padding: .2rem .75rem; border: 1px solid var(--line); border-radius: 99px; color: inherit;
        text-decoration: none; font-size: .9rem; }
nav a:hover, nav a:focus-visible { border-color: var(--accent); color: var(--accent); }
section { margin-top: 3.5rem; }
.about { margin: .25rem 0 1rem; opacity: .85; }
.all { display: flex; white-space: nowrap; align-items: center; gap: .75rem; margin: 0 0 1rem; }
.all input { flex: 0 1 24rem; min-width: 0; }
.shots { display: grid; gap: 1.25rem 1rem; grid-template-columns: repeat(auto-fill, minmax(min(100%, 19rem), 1fr)); }
figure { margin: 0; min-width: 0; }
figcaption { display: flex; justify-content: space-between; gap: 1rem; font-size: .9rem; padding-top: .3rem; }
figcaption b { font-weight: 600; }
output { font-variant-numeric: tabular-nums; opacity: .85; }
.screen { position: relative; overflow: hidden; border-radius: 4px; background: #888 0 0 / 100% auto no-repeat; }
.after { position: absolute; inset: 0; overflow: hidden; }
.before .after { clip-path: inset(0 0 0 var(--split)); }
.screen img { display: block; width: 100%; height: auto; transform: translateY(calc(var(--frame) / var(--frames) * -100%)); }
.edge { position: absolute; inset: 0 auto 0 var(--split); width: 2px; margin-left: -1px; background: #fff;
        box-shadow: 0 0 3px #000a; pointer-events: none; }
.edge::before, .edge::after { position: absolute; top: .5rem; padding: 0 .45rem; font: .75rem/1.6 system-ui, sans-serif;
        color: #fff; background: #0009; border-radius: 3px; }
.edge::before { content: "before"; right: .5rem; }
.edge::after { content: "after"; left: .5rem; }
.split { position: absolute; inset: 0; width: 100%; height: 100%; margin: 0; opacity: 0; cursor: ew-resize; touch-action: pan-y; }
.screen:focus-within { outline: 2px solid var(--accent); outline-offset: 2px; }
.ride { display: flex; align-items: center; gap: .5rem; }
.ride input { flex: 1; min-width: 0; }
input[type=range] { accent-color: var(--accent); }
button { font: inherit; line-height: 1; width: 2.25rem; height: 2.25rem; padding: 0; border: 1px solid var(--line);
         border-radius: 50%; background: none; color: inherit; cursor: pointer; }
button:hover, button:focus-visible { border-color: var(--accent); color: var(--accent); }
details { margin-top: 1rem; }
summary { cursor: pointer; font-weight: 600; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; font-size: .9rem; margin: .5rem 0; }
th, td { border: 1px solid var(--line); padding: .2rem .6rem; text-align: left; font-variant-numeric: tabular-nums; }
.ink { display: inline-block; width: .8em; height: .8em; margin-right: .4em; border: 1px solid var(--line); }
)css";

/// What moves when a slider does, and the play buttons.
inline constexpr const char kPageScript[] = R"js(
const shotOf = control => control.closest('figure');
function seek(shot, share) {
  const slider = shot.querySelector('.along');
  slider.value = Math.round(share * slider.max);
  const now = slider.value / slider.max;
  shot.querySelector('.screen').style.setProperty('--frame', slider.value);
  const seconds = shot.dataset.seconds;
  shot.querySelector('output').textContent = seconds ? (now * seconds).toFixed(2) + ' s' : Math.round(now * 100) + ' %';
}
document.addEventListener('input', event => {
  const slider = event.target;
  if (slider.matches('.split'))
    slider.parentElement.style.setProperty('--split', slider.value + '%');
  else if (slider.matches('.along'))
    seek(shotOf(slider), slider.value / slider.max);
  else if (slider.matches('.all input'))
    for (const shot of slider.closest('section').querySelectorAll('.moving'))
      seek(shot, slider.value / slider.max);
});
function stop(button) {
  clearInterval(button.timer);
  button.timer = 0;
  button.textContent = '\u25B6\uFE0E';
  button.setAttribute('aria-pressed', 'false');
}
function play(button) {
  const shot = shotOf(button), slider = shot.querySelector('.along');
  const last = Number(slider.max), rest = 4;
  let frame = Number(slider.value) % last;
  button.textContent = '\u275A\u275A';
  button.setAttribute('aria-pressed', 'true');
  button.timer = setInterval(() => {
    seek(shot, Math.min(frame, last) / last);
    frame = frame < last + rest ? frame + 1 : 0;
  }, 160);
}
document.addEventListener('click', event => {
  const button = event.target.closest('button');
  if (button)
    (button.timer ? stop : play)(button);
});
)js";

} // namespace kelmora::host
