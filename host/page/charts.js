// What the live page and the report draw with: axes, curves over time, the sky, signals. Whatever comes from a receiver is
// put in as text or as a number, never as markup. Drawings are as wide as their place on the page, in its pixels.
'use strict';

const DASH = '\u2013';
// By gpsd's numbers: how the style sheet calls a system, its letter in RINEX, its name.
const SYSTEMS = {
  0: ['gps', 'G', 'GPS'], 1: ['sbas', 'S', 'SBAS'], 2: ['galileo', 'E', 'Galileo'], 3: ['beidou', 'C', 'BeiDou'], 4: ['other', 'I', 'IMES'],
  5: ['qzss', 'J', 'QZSS'], 6: ['glonass', 'R', 'GLONASS'], 7: ['navic', 'N', 'NavIC'],
};
const OTHER_SYSTEM = ['other', '', 'other system'];

const $ = id => document.getElementById(id);
const isNumber = value => typeof value === 'number' && Number.isFinite(value);
const number = (value, digits) => value.toFixed(digits).replace('-', '\u2212');
const px = value => +value.toFixed(1);

function fill(node, attributes, children) {
  for (const [key, value] of Object.entries(attributes)) node.setAttribute(key, value);
  node.append(...children);
  return node;
}

const make = (name, attributes, ...children) => fill(document.createElement(name), attributes, children);
const draw = (name, attributes, ...children) => fill(document.createElementNS('http://www.w3.org/2000/svg', name), attributes, children);
const path = (style, d) => draw('path', {class: style, d});
const write = (x, y, text, anchor = 'middle', style = 'tick') => draw('text', {class: style, x: px(x), y: px(y), 'text-anchor': anchor}, text);
const frameOf = (left, top, width, height) => ({left, top, width, height, right: left + width, bottom: top + height});

function show(svg, width, height, parts) {
  svg.setAttribute('viewBox', `0 0 ${px(width)} ${px(height)}`);
  svg.replaceChildren(...parts.filter(Boolean));
}

function legend(list, entries) {
  list.replaceChildren(...entries.map(([style, text]) => make('li', {}, make('i', {class: style}), text)));
}

// ---- axes

// The greatest of 1, 2 and 5 times a power of ten up to `value`.
function roundDown(value) {
  const power = 10 ** Math.floor(Math.log10(value));
  return power * [5, 2, 1].find(step => step * power <= value * (1 + 1e-9));
}

// A round step between marks, of which about so many fit.
function stepOf(span, steps) {
  const rough = span / steps, power = 10 ** Math.floor(Math.log10(rough));
  const miss = step => Math.abs(Math.log(rough / step));
  return [1, 2, 5, 10].map(step => step * power).reduce((best, step) => miss(step) < miss(best) ? step : best);
}

// As few decimals as tell multiples of `step` apart.
const decimalsOf = step => Math.min(9, Math.max(0, -Math.floor(Math.log10(step) + 1e-9)));

function axisOf(low, high, step) {
  const ticks = [];
  for (let i = Math.ceil(low / step - 1e-9); i <= high / step + 1e-9; ++i) ticks.push({value: i * step, label: number(i * step, decimalsOf(step))});
  return {step, ticks, low, high, part: value => (value - low) / (high - low)};
}

// From a round number at or below `low` to one at or above `high`, with no step below `least`.
function roundAxis(low, high, steps, least) {
  const step = Math.max(least, high > low ? stepOf(high - low, steps) : least);
  const first = Math.floor(low / step + 1e-9);
  return axisOf(first * step, Math.max(first + 1, Math.ceil(high / step - 1e-9)) * step, step);
}

const exactAxis = (low, high, steps) => axisOf(low, high, stepOf(high - low, steps));

// The grid of a chart, and its labels below and at the left.
function ground(frame, xs, ys) {
  const lines = [...xs.map(({at}) => `M${px(at)} ${frame.top}V${frame.bottom}`), ...ys.map(({at}) => `M${frame.left} ${px(at)}H${frame.right}`)];
  const within = (at, label) => Math.min(at, frame.right + 2 - label.length * 3.5);  // at the very edge it would be cut
  return [draw('rect', {class: 'plot', x: frame.left, y: frame.top, width: px(frame.width), height: px(frame.height), rx: 4}), path('grid', lines.join('')),
    ...xs.map(({at, label}) => write(within(at, label), frame.bottom + 16, label)),
    ...ys.map(({at, label}) => write(frame.left - 6, Math.max(at + 4, frame.top + 8), label, 'end'))];
}

// ---- time

const SECOND = 1000, MINUTE = 60 * SECOND, HOUR = 60 * MINUTE, DAY = 24 * HOUR;
const STEPS = [0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30].map(step => step * SECOND).concat(
  [1, 2, 5, 10, 15, 30].map(step => step * MINUTE), [1, 2, 3, 6, 12].map(step => step * HOUR), [1, 2, 7, 14, 28, 91, 182, 365].map(step => step * DAY));
const MOST_CUTS = 4;
const LONG_PART = 5;  // a pause is long if it takes this part of the time in which something came
const CUT_WIDTH = 52, LEAST_WIDTH = 14, LABEL_WIDTH = 66;

const sum = values => values.reduce((all, value) => all + value, 0);
const busy = pieces => sum(pieces.map(piece => piece.end - piece.start));

// The times without long pauses. A recording that was played twice has its times twice.
function piecesOf(spans) {
  const joined = [], kept = [];
  for (const [start, end] of [...spans].sort((a, b) => a[0] - b[0])) {
    const last = joined.at(-1);
    if (last && start <= last.end) last.end = Math.max(last.end, end);
    else joined.push({start, end});
  }
  const pauses = joined.slice(1).map((piece, i) => piece.start - joined[i].end).sort((a, b) => b - a);
  const least = Math.max(busy(joined) / LONG_PART, 2 * SECOND, pauses[MOST_CUTS - 1] || 0);
  for (const piece of joined) {
    const last = kept.at(-1);
    if (!last || (piece.start - last.end >= least && kept.length <= MOST_CUTS)) kept.push(piece);
    else last.end = piece.end;
  }
  return kept;
}

function timeLabel(time, step) {
  const iso = new Date(time).toISOString();
  if (step >= DAY) return iso.slice(0, 10);
  return iso.slice(11, step >= MINUTE ? 16 : step >= SECOND ? 19 : 21);
}

function roughSpan(span) {
  const [unit, name] = [[DAY, 'd'], [HOUR, 'h'], [MINUTE, 'min'], [SECOND, 's']].find(([size]) => span >= 2 * size) || [SECOND, 's'];
  return `${Math.round(span / unit)} ${name}`;
}

function timeTicks(pieces, at, width) {
  const step = STEPS.find(size => busy(pieces) / size <= Math.min(8, width / 100)) || STEPS.at(-1), ticks = [];
  const add = (time, precision) => {
    if (!ticks.length || at(time) - ticks.at(-1).at >= LABEL_WIDTH) ticks.push({at: at(time), label: timeLabel(time, precision)});
  };
  for (const piece of pieces) {
    const first = Math.ceil(piece.start / step) * step;
    if (first > piece.end) add(piece.start, Math.min(step, SECOND));
    for (let time = first; time <= piece.end; time += step) add(time, step);
  }
  return ticks;
}

// Where the moments lie from left to right. Long times in which nothing came are cut short, so that the rest can be seen.
function timeScale(spans, left, width) {
  const pieces = piecesOf(spans), cuts = [], all = Math.max(1, busy(pieces));
  const free = width - (pieces.length - 1) * CUT_WIDTH - pieces.length * LEAST_WIDTH;
  let x = left;
  pieces.forEach((piece, i) => {
    if (i > 0) cuts.push({left: x, right: x += CUT_WIDTH, span: piece.start - pieces[i - 1].end});
    piece.left = x;
    piece.right = x += LEAST_WIDTH + free * (piece.end - piece.start) / all;
  });
  const within = (time, start, end, from, to) => end <= start ? (from + to) / 2 : from + (to - from) * (time - start) / (end - start);
  const at = time => {
    const found = pieces.findIndex(piece => time <= piece.end), i = found < 0 ? pieces.length - 1 : found, piece = pieces[i], before = pieces[i - 1];
    if (before && time < piece.start) return within(time, before.end, piece.start, before.right, piece.left);
    return within(time, piece.start, piece.end, piece.left, piece.right);
  };
  return {at, cuts, ticks: timeTicks(pieces, at, width)};
}

function drawCuts(time, frame, hasLabels) {
  return time.cuts.flatMap(({left, right, span}) => [
    draw('rect', {class: 'cut', x: px(left), y: frame.top - 1, width: px(right - left), height: frame.height + 2}),
    path('edge', `M${px(left)} ${frame.top}V${frame.bottom}M${px(right)} ${frame.top}V${frame.bottom}`),
    hasLabels && write((left + right) / 2, frame.top + frame.height / 2 + 4, roughSpan(span))]);
}

// A value over time, in stretches of [time, mean, least, greatest], or of [time, value] where there was but one. Its axis has no
// step below `step`, and goes at least over `span`.
function drawCourse(svg, {style, stretches, step, isFromZero, span = 0}, time, frame) {
  const points = stretches.flat(), most = Math.max(...points.map(point => point[3] ?? point[1]));
  const least = Math.min(...points.map(point => point[2] ?? point[1]), isFromZero ? 0 : Infinity);
  const spare = isFromZero ? 0 : Math.max(0, span - (most - least)) / 2;
  const axis = roundAxis(least - spare, Math.max(most + spare, least - spare + span), Math.min(4, frame.height / 32), step);
  const y = value => frame.bottom - axis.part(value) * frame.height;
  const place = (point, i) => `${px(time.at(point[0]))} ${px(y(point[i] ?? point[1]))}`;
  const curves = stretches.flatMap(stretch => [
    stretch.some(point => point.length > 2) &&
      path(`course-${style} band`, `M${stretch.map(point => place(point, 3)).join('L')}L${stretch.map(point => place(point, 2)).reverse().join('L')}z`),
    path(`course-${style} curve`, `M${place(stretch[0], 1)}h.1${stretch.slice(1).map(point => `L${place(point, 1)}`).join('')}`)]);  // one alone is a dot
  show(svg, frame.right + 2, frame.bottom + 22,
    [...ground(frame, time.ticks, axis.ticks.map(({value, label}) => ({at: y(value), label}))), ...drawCuts(time, frame, false), ...curves]);
}

// Which kind of fix there was when: spans of {start, end, parts}, the parts as high as their share of the time.
function drawKinds(svg, spans, time, frame) {
  const bars = spans.flatMap(({start, end, parts}) => {
    const x = time.at(start), width = Math.max(1.5, time.at(end) - x), all = sum(parts.map(([, part]) => part));
    let y = frame.top;
    return parts.map(([kind, part]) => {
      const height = (all ? part / all : 1 / parts.length) * frame.height;
      y += height;
      return draw('rect', {class: `fix-${kind.style} span`, x: px(x), y: px(y - height), width: px(width), height: px(height)}, draw('title', {}, kind.name));
    });
  });
  show(svg, frame.right + 2, frame.bottom + 2, [...ground(frame, [], []), ...bars, ...drawCuts(time, frame, true)]);
}

// ---- satellites

// North is up, the zenith in the middle.
function skyPoint(el, az) {
  const radius = 100 * (90 - Math.min(90, el)) / 90, turn = az * Math.PI / 180;
  return [radius * Math.sin(turn), -radius * Math.cos(turn)].map(px);
}

function drawDome() {
  const parts = [draw('circle', {r: 100, class: 'plot'}), ...[30, 60].map(el => draw('circle', {r: px(100 * (90 - el) / 90), class: 'grid'}))];
  for (let az = 0; az < 360; az += 30) {
    const [x, y] = skyPoint(-7, az);
    parts.push(path('grid', `M0 0L${skyPoint(0, az).join(' ')}`),
      az % 90 ? write(x, y + 2.5, `${az}\u00b0`) : write(x, y + 3, 'NESW'[az / 90], 'middle', 'tick strong'));
  }
  for (const el of [30, 60]) {
    const [x, y] = skyPoint(el, 15);
    parts.push(write(x, y + 2.5, `${el}\u00b0`));
  }
  return parts;
}

// The way of a satellite. Where it jumps, it has set and risen again.
function drawTrail(sat) {
  let before = null, d = '';
  for (const [x, y] of sat.trail.map(([el, az]) => skyPoint(el, az))) {
    d += `${before && Math.hypot(x - before[0], y - before[1]) < 17 ? 'L' : 'M'}${x} ${y}`;
    before = [x, y];
  }
  return path(`trail sys-${sat.style}`, d);
}

// Satellites of {name, style, used, at: [elevation, azimuth], trail, title}.
function drawSky(svg, satellites) {
  const seen = satellites.filter(sat => sat.at);
  const places = [...seen].sort((a, b) => Boolean(a.used) - Boolean(b.used)).map(sat => draw('g',
    {class: `sat sys-${sat.style}${sat.used ? ' used' : ''}`, transform: `translate(${skyPoint(...sat.at).join(' ')})`},
    draw('title', {}, sat.title), draw('circle', {r: 9}), draw('text', {y: 2.5}, sat.name)));
  svg.setAttribute('viewBox', '-114 -114 228 228');
  svg.replaceChildren(...drawDome(), ...seen.filter(sat => sat.trail.length > 1).map(drawTrail), ...places);
}

// Of those that are shown.
function systemLegend(list, satellites) {
  const names = new Map(satellites.map(sat => [`sys-${sat.style}`, sat.system]));
  legend(list, [...names, ...(satellites.some(sat => sat.used === false) ? [['unused', 'in view, not used']] : [])]);
}

// A bar each, as high as the signal, its mean if it has a least and a greatest too. A `note` stands below the name.
function drawSignals(node, satellites) {
  const top = Math.max(55, ...satellites.map(sat => sat.most || 0));
  const part = value => `${Math.max(0, Math.min(100, value / top * 100))}%`;
  node.style.setProperty('--top', top);
  node.replaceChildren(...satellites.map(sat => {
    const well = make('div', {class: 'well'}, make('div', {class: 'bar'}));
    well.firstChild.style.height = part(sat.signal || 0);
    if (sat.most > sat.least) {
      const range = well.appendChild(make('div', {class: 'range'}));
      Object.assign(range.style, {bottom: part(sat.least), height: part(sat.most - sat.least)});
    }
    return make('div', {class: `signal sys-${sat.style}${sat.used ? ' used' : ''}`, role: 'listitem', title: sat.title},
      make('span', {class: 'number'}, sat.signal > 0 ? String(Math.round(sat.signal)) : DASH), well, make('b', {}, sat.name),
      ...(sat.note ? [make('small', {}, sat.note)] : []));
  }));
}
