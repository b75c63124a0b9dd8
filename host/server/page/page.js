// The live page: takes the lines of /events and draws them. Whatever comes from the receiver is put in as text or
// as a number, never as markup.
'use strict';

const MOST_SAMPLES = 300;  // of the two lines
const MOST_BARS = 24;      // of satellites that are not heard, too
const STALE = 5000;        // ms without a position, or more for a receiver that is slow
const MOST_STALE = 60000;

// By gnssid, with the letters of RINEX.
const SYSTEMS = {
  0: ['gps', 'G'], 1: ['sbas', 'S'], 2: ['galileo', 'E'], 3: ['beidou', 'C'], 4: ['other', 'I'], 5: ['qzss', 'J'], 6: ['glonass', 'R'],
  7: ['navic', 'N'],
};
const LEGEND = [['gps', 'GPS'], ['glonass', 'GLONASS'], ['galileo', 'Galileo'], ['beidou', 'BeiDou'], ['qzss', 'QZSS'], ['navic', 'NavIC'], ['sbas', 'SBAS'],
  ['other', 'other system'], ['unused', 'in view, not used']];
// How angles are written, by how many of the last place that is shown are in a degree.
const ANGLES = {degrees: 0, minutes: 60 * 1e5, seconds: 3600 * 1e4};
const MOST_SENTENCES = 200;
const DASH = '\u2013';

const state = {fix: null, sky: null, server: null, serverAt: 0, interval: 0, reports: new Map(), way: [], length: 0, anchor: null, trails: new Map()};
let angles = 'degrees';
const $ = id => document.getElementById(id);
const isNumber = value => typeof value === 'number' && Number.isFinite(value);
const fixed = (value, digits) => isNumber(value) ? value.toFixed(digits) : DASH;

function put(id, text) {
  const node = $(id);
  if (node.textContent !== text) node.textContent = text;
}

function make(name, attributes, ...children) {
  const node = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) node.setAttribute(key, value);
  node.append(...children);
  return node;
}

function draw(name, attributes, ...children) {
  const node = document.createElementNS('http://www.w3.org/2000/svg', name);
  for (const [key, value] of Object.entries(attributes)) node.setAttribute(key, value);
  node.append(...children);
  return node;
}

// ---- what comes in

function onPosition(tpv) {
  if (state.fix) state.interval = Math.abs(Date.parse(tpv.time) - Date.parse(state.fix.time)) || 0;
  state.fix = tpv;
  if (isNumber(tpv.lat) && isNumber(tpv.lon)) addToWay(tpv);
  state.wasLost = tpv.mode === 1;
}

function onSky(sky) {
  state.sky = sky;
  for (const sat of sky.satellites || []) {
    if (!isNumber(sat.el) || !isNumber(sat.az)) continue;
    const trail = state.trails.get(nameOf(sat)) || [];
    const last = trail.at(-1);
    if (!last || last.el !== sat.el || last.az !== sat.az) trail.push({el: sat.el, az: sat.az});
    if (trail.length > 200) trail.shift();
    state.trails.set(nameOf(sat), trail);
  }
}

function onServer(server) {
  // A server that was started anew knows nothing of the way so far.
  if (state.server && state.server.started !== server.started) {
    Object.assign(state, {fix: null, sky: null, way: [], length: 0, anchor: null, trails: new Map(), reports: new Map()});
  }
  state.server = server;
  state.serverAt = Date.now();
}

function onReports(status) {
  for (const [key, value] of Object.entries(status)) {
    if (key !== 'class' && key !== 'device' && state.reports.size < 40) state.reports.set(key, value);
  }
}

const HANDLERS = {TPV: onPosition, SKY: onSky, SERVER: onServer, STATUS: onReports};

function take(text) {
  let line;
  try {
    line = JSON.parse(text);
  } catch {
    return;
  }
  if (line && Object.hasOwn(HANDLERS, line.class)) HANDLERS[line.class](line);
}

// ---- what is shown

function pill(id, text, mood) {
  put(id, text);
  $(id).dataset.state = mood;
}

// How old something is by the server's word, in ms: lines of its history do not tell. Without an age it is for ever.
function ageOf(key) {
  const seconds = state.server ? state.server[key] : undefined;
  return isNumber(seconds) ? seconds * 1000 + Date.now() - state.serverAt : Infinity;
}

// Nothing was heard of a position for long. What is shown is then old, satellites too.
function isOld() {
  const patience = Math.min(MOST_STALE, Math.max(STALE, 2.5 * state.interval));
  return !state.server || state.server.lost || ageOf('positionAge') > patience;
}

function drawKind(fix) {
  const age = ageOf('fixAge');
  const since = Number.isFinite(age) ? `, last fix ${span(age)} ago` : '';
  const isFix = fix.mode >= 2;
  if (state.server && state.server.lost) return pill('fix', `port lost${since}`, 'bad');
  if (!state.fix) return pill('fix', 'no position yet', 'wait');
  if (isOld()) return pill('fix', `silent${since}`, 'bad');
  if (!isFix) return pill('fix', `no fix${since}`, 'warn');
  pill('fix', state.server.fix, 'good');
}

function span(ms) {
  const seconds = Math.round(ms / 1000);
  return seconds < 100 ? `${seconds} s` : seconds < 6000 ? `${Math.floor(seconds / 60)} min` : `${Math.floor(seconds / 3600)} h`;
}

function drawPosition() {
  const fix = state.fix || {};
  drawKind(fix);
  document.body.classList.toggle('old', state.fix !== null && isOld());
  put('lat', angle(fix.lat, 'N', 'S'));
  put('lon', angle(fix.lon, 'E', 'W'));
  put('speed', isNumber(fix.speed) ? fixed(fix.speed * 3.6, 1) : DASH);
  put('track', isNumber(fix.track) ? `${Math.round(fix.track) % 360}\u00b0` : DASH);
  const isMsl = isNumber(fix.altMSL) || !isNumber(fix.altHAE);
  put('heightname', isMsl ? 'Height MSL' : 'Height HAE');
  put('height', fixed(isMsl ? fix.altMSL : fix.altHAE, 1));
  const sky = state.sky || {};
  const inView = isNumber(sky.nSat) ? ` / ${sky.nSat}` : '';
  put('count', `${isNumber(sky.uSat) ? sky.uSat : DASH}${inView}`);
  for (const dop of ['hdop', 'vdop', 'pdop']) put(dop, fixed(sky[dop], 1));
  put('time', typeof fix.time === 'string' ? `${fix.time.slice(0, 10)} ${fix.time.slice(11, 19)}` : DASH);
  const needle = isNumber(fix.track) ? [draw('path', {d: 'M0-9 6 7 0 3.5-6 7z', transform: `rotate(${fix.track})`})] : [];
  $('compass').replaceChildren(draw('circle', {r: 11}), ...needle);
  drawLine('speed', state.way.map(point => isNumber(point.speed) ? point.speed * 3.6 : null), 5);
  drawLine('height', state.way.map(point => point.height), 2);
}

function angle(degrees, positive, negative) {
  if (!isNumber(degrees)) return DASH;
  const side = degrees < 0 ? negative : positive, size = Math.abs(degrees), unit = ANGLES[angles];
  if (!unit) return `${size.toFixed(7)}\u00b0 ${side}`;
  // Counted in the last place that is shown, so that no 60 comes of rounding.
  const last = (value, digits) => (value / 10 ** digits).toFixed(digits).padStart(digits + 3, '0');
  const parts = Math.round(size * unit), minute = unit / 60, whole = `${Math.floor(parts / unit)}\u00b0`;
  if (angles === 'minutes') return `${whole} ${last(parts % unit, 5)}' ${side}`;
  return `${whole} ${String(Math.floor(parts / minute) % 60).padStart(2, '0')}' ${last(parts % minute, 4)}" ${side}`;
}

// A browser that keeps nothing begins with degrees each time.
function kept(name, value) {
  try {
    if (value) localStorage.setItem(name, value);
    return localStorage.getItem(name);
  } catch {
    return value;
  }
}

function chooseAngles(name) {
  angles = Object.hasOwn(ANGLES, name) ? name : 'degrees';
  put('angles', angles);
}

function watchAngles() {
  const names = Object.keys(ANGLES);
  chooseAngles(kept('angles'));
  $('angles').onclick = () => {
    chooseAngles(names[(names.indexOf(angles) + 1) % names.length]);
    kept('angles', angles);
    render();
  };
}

// The last samples as a line, at least so high that noise stays small.
function drawLine(name, samples, least) {
  const last = samples.slice(-MOST_SAMPLES);
  const values = last.filter(isNumber);
  if (values.length < 2) return;
  const low = Math.min(...values), high = Math.max(...values);
  const span = Math.max(high - low, least), floor = (low + high - span) / 2;
  let path = '', pen = 'M';
  last.forEach((value, i) => {
    if (!isNumber(value)) { pen = 'M'; return; }
    path += `${pen}${(i * 300 / (last.length - 1)).toFixed(1)} ${(40 - (value - floor) / span * 36).toFixed(1)}`;
    pen = 'L';
  });
  $(`${name}line`).replaceChildren(draw('path', {d: path}));
  put(`${name}range`, `${low.toFixed(1)} to ${high.toFixed(1)}`);
}

function systemOf(sat) {
  return SYSTEMS[sat.gnssid] || ['other', ''];
}

function nameOf(sat) {
  const [kind, letter] = systemOf(sat);
  return letter ? letter + String(kind === 'sbas' ? sat.svid - 100 : sat.svid).padStart(2, '0') : String(sat.PRN);
}

function signalOf(sat) {
  return isNumber(sat.ss) ? `${sat.ss} dB-Hz` : 'no signal';
}

function satellites() {
  const list = state.sky && Array.isArray(state.sky.satellites) ? state.sky.satellites : [];
  const order = sat => (isNumber(sat.gnssid) ? sat.gnssid : 9) * 1000 + sat.PRN;
  return list.map(sat => ({...sat, name: nameOf(sat), kind: systemOf(sat)[0]})).sort((a, b) => order(a) - order(b));
}

// North is up, the zenith in the middle.
function skyPoint(el, az) {
  const radius = 100 * (90 - Math.max(0, Math.min(90, el))) / 90, turn = az * Math.PI / 180;
  return [radius * Math.sin(turn), -radius * Math.cos(turn)];
}

function drawSky() {
  const parts = [draw('circle', {r: 100, class: 'ring outer'})];
  for (const el of [30, 60]) {
    parts.push(draw('circle', {r: 100 * (90 - el) / 90, class: 'ring'}));
    parts.push(draw('text', {x: 2, y: -100 * (90 - el) / 90 - 1.5}, `${el}\u00b0`));
  }
  parts.push(draw('path', {d: 'M-100 0H100M0-100V100', class: 'ring'}));
  for (const [name, x, y] of [['N', 0, -103], ['E', 106, 3.5], ['S', 0, 111], ['W', -106, 3.5]]) {
    parts.push(draw('text', {x, y, class: 'cardinal', 'text-anchor': 'middle'}, name));
  }
  const seen = satellites().filter(sat => isNumber(sat.el) && isNumber(sat.az));
  for (const sat of seen) {
    const trail = state.trails.get(sat.name) || [];
    if (trail.length < 2) continue;
    const points = trail.map(point => skyPoint(point.el, point.az).map(value => value.toFixed(1)).join(' ')).join(' ');
    parts.push(draw('polyline', {points, class: `trail ${sat.kind}`}));
  }
  for (const sat of [...seen].sort((a, b) => Boolean(a.used) - Boolean(b.used))) {
    const [x, y] = skyPoint(sat.el, sat.az);
    parts.push(draw('g', {class: `sat ${sat.kind}${sat.used ? ' used' : ''}`, transform: `translate(${x.toFixed(1)} ${y.toFixed(1)})`},
      draw('title', {}, `${sat.name}: elevation ${sat.el}\u00b0, azimuth ${sat.az}\u00b0, ${signalOf(sat)}`),
      draw('circle', {r: 9}), draw('text', {y: 2.7}, sat.name)));
  }
  $('sky').replaceChildren(...parts);
  const legend = LEGEND.filter(([kind]) => seen.some(sat => kind === 'unused' ? sat.used === false : sat.kind === kind));
  $('legend').replaceChildren(...legend.map(([kind, text]) => make('span', {class: kind}, text)));
}

function drawSignals() {
  // Of many satellites those that are heard matter.
  const all = satellites(), shown = all.length > MOST_BARS ? all.filter(sat => isNumber(sat.ss)) : all;
  const bars = shown.map(sat => {
    const level = isNumber(sat.ss) ? sat.ss : 0;
    const bar = make('div', {class: 'bar'});
    bar.style.height = `${Math.max(0, Math.min(100, level / 55 * 100))}%`;
    return make('div', {class: `${sat.kind}${sat.used ? ' used' : ''}`, role: 'listitem', title: `${sat.name}: ${signalOf(sat)}`},
      make('span', {class: 'number'}, level > 0 ? String(Math.round(level)) : DASH),
      make('div', {class: 'well'}, bar), make('b', {}, sat.name));
  });
  $('signals').replaceChildren(...(bars.length ? bars : [make('p', {class: 'nothing'}, 'no satellites yet')]));
}

function list(id, rows) {
  const parts = [];
  for (const [name, value, isBad] of rows) {
    parts.push(make('dt', {}, name), make('dd', isBad ? {class: 'bad'} : {}, String(value)));
  }
  $(id).replaceChildren(...parts);
}

function duration(ms) {
  const seconds = Math.max(0, Math.round(ms / 1000));
  const two = value => String(value).padStart(2, '0');
  return `${Math.floor(seconds / 3600)}:${two(Math.floor(seconds / 60) % 60)}:${two(seconds % 60)}`;
}

const SOURCES = {simulated: 'simulated, on ', port: '', recording: 'recording '};

function drawStatus() {
  const server = state.server;
  if (!server) return;
  put('source', `${server.model} ${DASH} ${SOURCES[server.source] || ''}${server.device}${server.baud ? `, ${server.baud} baud` : ''}`);
  document.title = `gpsengine ${DASH} ${server.model}`;
  list('status', [
    ['Receiver', server.lost ? 'port lost, waiting for it' : server.understood ? 'understood' : 'not understood so far', !server.understood],
    ['Messages', server.messages],
    ['Checksum errors', server.checksumErrors, server.checksumErrors > 0],
    ['Records', server.records],
    ['Clients now / ever', `${server.clients} / ${server.accepted}`],
    ['Lines dropped', server.dropped + server.pageDropped, server.dropped + server.pageDropped > 0],
    ['Open pages', server.pages],
    ['Up for', duration(Date.parse(server.time) - Date.parse(server.started))],
    ['Version', server.version],
  ]);
  $('reportscard').hidden = state.reports.size === 0;
  list('reports', [...state.reports].map(([key, value]) => [key, value]));
}

// ---- the stream

function drawAll() {
  drawPosition();
  drawSky();
  drawSignals();
  drawMap();
  drawStatus();
}

let isDue = false;
function render() {
  if (!isDue) requestAnimationFrame(() => { isDue = false; drawAll(); });
  isDue = true;
}

function follow() {
  const events = new EventSource('events');
  events.onopen = () => pill('link', 'live', 'good');
  events.onerror = () => pill('link', 'no connection', 'bad');
  events.onmessage = event => { take(event.data); render(); };
  setInterval(render, 1000);
}

// The receiver's sentences, while they are asked for.
function watchSentences() {
  const lines = [];
  let events = null;
  $('raw').ontoggle = () => {
    if (events) events.close();
    events = $('raw').open ? new EventSource('sentences') : null;
    lines.length = 0;  // the last moments come anew
    if (!events) return;
    events.onerror = () => { if (events.readyState === EventSource.CLOSED) put('sentences', 'the server gives no sentences'); };
    events.onmessage = event => {
      lines.push(event.data);
      if (lines.length > MOST_SENTENCES) lines.shift();
      const box = $('sentences'), isAtEnd = box.scrollTop + box.clientHeight > box.scrollHeight - 20;
      put('sentences', lines.join('\n'));
      if (isAtEnd) box.scrollTop = box.scrollHeight;
    };
  };
}

// "?once" shows what there is by the time the page has loaded, for a picture or a print.
function showOnce() {
  const request = new XMLHttpRequest();
  request.open('GET', 'history', false);
  request.send();
  request.responseText.split('\n').forEach(take);
  pill('link', 'one look', 'wait');
}

watchAngles();
watchMap();
watchSentences();
if (location.search === '?once') showOnce(); else follow();
drawAll();
