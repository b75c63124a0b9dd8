// The report: draws the run that stands in its page.
'use strict';

const run = JSON.parse($('run').textContent);
const LEFT = 58;  // charts over time stand below each other

// On paper it is what the style sheet says there, whatever window the page is printed from.
let isPaper = false;
const widthOf = node => isPaper ? (node.closest('.pair') ? 310 : 690) : Math.max(300, node.clientWidth);
const part = (section, selector) => $(section).querySelector(selector);
// A section is shown once there is something for it, since what is hidden has no width.
const open = section => { $(section).hidden = false; };
const entriesOf = kinds => kinds.map(kind => [`fix-${kind.style}`, kind.name]);

function drawWay() {
  const svg = part('track', 'svg'), extent = extentOf(run.track), width = widthOf(svg) - 86;
  // Neither a still receiver nor a straight road fills a page.
  const wide = Math.max(extent.wide, extent.high / 3, 0.1) * 1.12, high = Math.max(extent.high, extent.wide / 3, 0.05) * 1.12;
  const height = Math.min(560, Math.max(300, width * high / wide));
  drawTrack(svg, run.track, run.kinds, run.end, frameOf(84, 14, width, height), {...extent, scale: Math.min(width / wide, height / high)}, run.units, true);
}

function drawCourses() {
  const width = widthOf($('courses')) - LEFT - 2, time = timeScale(run.spans.map(({start, end}) => [start, end]), LEFT, width);
  drawKinds(run.strip, run.spans, time, frameOf(LEFT, 2, width, 18));
  for (const course of run.courses) drawCourse(course.svg, course, time, frameOf(LEFT, 6, width, 150));
}

function drawAll() {
  if (run.track.length) drawWay();
  if (run.cloud) {
    const svg = part('cloud', 'svg');
    drawCloud(svg, run.cloud, run.units.length, frameOf(58, 10, widthOf(svg) - 60, widthOf(svg) - 60));
  }
  if (run.spans.length) drawCourses();
}

// ---- the data, as they are written: host/exports/reportdata.cpp

function chart(title) {
  const svg = draw('svg', {role: 'img', 'aria-label': title});
  $('courses').insertBefore(make('figure', {}, make('figcaption', {}, title), svg), part('courses', '.note'));
  return svg;
}

function readTrack() {
  let kind = null;
  run.track = run.track.map(([east, north, index, isBreak]) => {
    if (index !== undefined) kind = run.kinds[index];
    return {east, north, kind, isBreak: Boolean(isBreak)};
  });
  if (!run.track.length) return;
  open('track');
  const kinds = run.kinds.filter(kind => kind.style !== 'none');
  legend(part('track', '.legend'), [...entriesOf(kinds), ['dot', 'start'], ['dot full', 'end']]);
  part('track', '.note').textContent = `Start ${run.place}${kinds.length > 1 ? '. Where kinds of fix lie on each other, the rarer one is on top.' : ''}`;
}

function readCourses() {
  const at = time => run.start + time;
  run.spans = run.spans.map(([start, end, parts]) => ({start: at(start), end: at(end), parts: parts.map(([index, share]) => [run.kinds[index], share])}));
  if (!run.spans.length) return;
  open('courses');
  legend(part('courses', '.legend'), entriesOf(run.kinds));
  run.strip = chart('Kind of fix');
  for (const course of run.courses) {
    course.stretches = course.stretches.map(stretch => stretch.map(([time, ...values]) => [at(time), ...values]));
    course.svg = chart(course.title);
  }
}

function readSatellites() {
  if (!run.satellites.length) return;
  open('satellites');
  const satellites = run.satellites.map(sat => {
    const [style, , system] = SYSTEMS[sat.gnssid] || OTHER_SYSTEM, [least, mean, most] = sat.signal || [], percent = Math.round(100 * sat.share);
    const title = `satellite ${sat.name}${sat.signal ? `, mean ${Math.round(mean)} dB-Hz` : ''}, used ${percent} % of the time`;
    return {...sat, style, system, used: sat.share > 0, signal: mean, least, most, note: `${percent}%`, title};
  });
  systemLegend(part('satellites', '.legend'), satellites);
  drawSky(part('satellites', '.sky'), satellites);
  drawSignals(part('satellites', '.signals'), satellites.filter(sat => isNumber(sat.signal)));
}

function readCloud() {
  if (!run.cloud) return;
  open('cloud');
  run.cloud.kinds = run.cloud.kinds.map(([index, places]) => [run.kinds[index], places]);
}

readTrack();
readCloud();
readCourses();
readSatellites();
drawAll();
addEventListener('resize', drawAll);
for (const name of ['beforeprint', 'afterprint']) addEventListener(name, () => { isPaper = name === 'beforeprint'; drawAll(); });
