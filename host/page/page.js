// The live page: takes the lines of /events and draws them. Whatever comes from the receiver is put in as text or
// as a number, never as markup.
'use strict';

const MOST_SAMPLES = 300;  // of the two lines
const MOST_BARS = 24;      // of satellites that are not heard, too
const STALE = 5000;        // ms without a position, or more for a receiver that is slow
const MOST_STALE = 60000;

// How angles are written, by how many of the last place that is shown are in a degree.
const ANGLES = {degrees: 0, minutes: 60 * 1e5, seconds: 3600 * 1e4};
const MOST_SENTENCES = 200;

const state = {
  fix: null, sky: null, server: null, serverAt: 0, interval: 0, reports: new Map(), way: [], plane: null, length: 0, anchor: null, trails: new Map(),
};
let angles = 'degrees';
const fixed = (value, digits) => isNumber(value) ? value.toFixed(digits) : DASH;

function put(id, text) {
  const node = $(id);
  if (node.textContent !== text) node.textContent = text;
}

// ---- what comes in

function onPosition(tpv) {
  const step = state.fix ? Date.parse(tpv.time) - Date.parse(state.fix.time) || 0 : 0;
  state.fix = tpv;
  if (isNumber(tpv.lat) && isNumber(tpv.lon)) addToWay(tpv, step, state.interval);
  if (step > 0) state.interval = step;
  state.wasLost = tpv.mode === 1;
}

function onSky(sky) {
  state.sky = sky;
  for (const sat of sky.satellites || []) {
    if (!isNumber(sat.el) || !isNumber(sat.az)) continue;
    const trail = state.trails.get(nameOf(sat)) || [], place = [Math.max(0, sat.el), sat.az];
    if (String(trail.at(-1)) !== String(place)) trail.push(place);
    if (trail.length > 200) trail.shift();
    state.trails.set(nameOf(sat), trail);
  }
}

function onServer(server) {
  // A server that was started again knows nothing of the way so far.
  if (state.server && state.server.started !== server.started) {
    Object.assign(state, {fix: null, sky: null, way: [], length: 0, anchor: null, trails: new Map(), reports: new Map()});
    view = null;
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
  drawLine('speed', point => point.speed * 3.6, {step: 1, isFromZero: true, span: 5});
  drawLine('height', point => point.height, {step: 0.1, span: 2});
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

// The last samples, broken where the way is. The axis is at least so high that noise stays small.
function drawLine(name, valueOf, axis) {
  const svg = $(`${name}line`), width = svg.clientWidth || 300, height = svg.clientHeight || 80, spans = [], stretches = [];
  for (const point of state.way.slice(-MOST_SAMPLES)) {
    if (!isNumber(point.at) || !isNumber(valueOf(point))) continue;
    if (!stretches.length || point.isBreak) {
      stretches.push([]);
      spans.push([point.at, point.at]);
    }
    stretches.at(-1).push([point.at, valueOf(point)]);
    spans.at(-1)[1] = Math.max(spans.at(-1)[1], point.at);
  }
  if (!stretches.length) return;
  const frame = frameOf(46, 6, width - 48, height - 28);
  drawCourse(svg, {style: name, stretches, ...axis}, timeScale(spans, frame.left, frame.width), frame);
}

const systemOf = sat => SYSTEMS[sat.gnssid] || OTHER_SYSTEM;

function nameOf(sat) {
  const [style, letter] = systemOf(sat);
  return letter ? letter + String(style === 'sbas' ? sat.svid - 100 : sat.svid).padStart(2, '0') : String(sat.PRN);
}

function titleOf(sat) {
  const place = isNumber(sat.el) && isNumber(sat.az) ? ` elevation ${sat.el}\u00b0, azimuth ${sat.az}\u00b0,` : '';
  return `${nameOf(sat)}:${place} ${isNumber(sat.ss) ? `${sat.ss} dB-Hz` : 'no signal'}`;
}

// As the drawings want them.
function satellites() {
  const list = state.sky && Array.isArray(state.sky.satellites) ? state.sky.satellites : [];
  const order = sat => (isNumber(sat.gnssid) ? sat.gnssid : 9) * 1000 + sat.PRN;
  return [...list].sort((a, b) => order(a) - order(b)).map(sat => {
    const [style, , system] = systemOf(sat), name = nameOf(sat);
    const at = isNumber(sat.el) && isNumber(sat.az) && [Math.max(0, sat.el), sat.az];
    return {name, style, system, at, trail: state.trails.get(name) || [], used: sat.used, signal: sat.ss, title: titleOf(sat)};
  });
}

function drawSatellites() {
  const all = satellites();
  drawSky($('sky'), all);
  systemLegend($('systems'), all.filter(sat => sat.at));
  // Of many satellites those that are heard matter.
  const bars = all.length > MOST_BARS ? all.filter(sat => isNumber(sat.signal)) : all;
  if (bars.length) drawSignals($('signals'), bars);
  else $('signals').replaceChildren(make('p', {class: 'nothing'}, 'no satellites yet'));
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

function correctionsText(corrections) {
  const age = corrections.age === undefined ? corrections.trouble || corrections.state : `${corrections.age} s old`;
  const types = Object.keys(corrections.types).join(' ');
  return `${age}, ${corrections.messages} messages${types && ` (${types})`} from ${corrections.source}`;
}

function drawStatus() {
  const server = state.server;
  if (!server) return;
  put('source', `${server.model} ${DASH} ${SOURCES[server.source] || ''}${server.device}${server.baud ? `, ${server.baud} baud` : ''}`);
  document.title = `gpsengine ${DASH} ${server.model}`;
  list('status', [
    ['Receiver', server.lost ? 'port lost, waiting for it' : server.understood ? 'understood' : 'not understood so far', !server.understood],
    ...(server.corrections ? [['Corrections', correctionsText(server.corrections), !(server.corrections.age < 10)]] : []),
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
  drawSatellites();
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
    lines.length = 0;  // the last moments come again
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
addEventListener('resize', render);
drawAll();
