// The track of the live page: its length, its map and its GPX file.
'use strict';

const MOST_FIXES = 5000;      // of the track
const LEAST_STEP = 1;         // m
const BREAK = 10000;          // ms between two fixes that are not joined
const SCALES = [1e-5, 200];   // of the map, in hundredths of half its width for a metre

let view = null;  // the map's scale and centre, which without a place of its own is the receiver; null: the whole way

function metresBetween(a, b) {
  const north = (b.lat - a.lat) * 111195;
  const east = wrap(b.lon - a.lon) * 111195 * Math.cos(a.lat * Math.PI / 180);
  return {north, east, length: Math.hypot(north, east)};
}

// A difference of longitudes, across the date line if that is nearer.
function wrap(degrees) {
  return degrees - 360 * Math.round(degrees / 360);
}

function moved(from, east, north) {
  return {lat: from.lat + north / 111195, lon: from.lon + east / 111195 / Math.cos(from.lat * Math.PI / 180)};
}

function addToWay(tpv) {
  const here = {
    lat: tpv.lat, lon: tpv.lon, at: Date.parse(tpv.time), speed: tpv.speed, msl: tpv.altMSL,
    height: isNumber(tpv.altMSL) ? tpv.altMSL : tpv.altHAE,
  };
  const last = state.way.at(-1);
  const gap = last ? here.at - last.at : 0;
  here.isBreak = !last || gap > BREAK || gap < 0 || state.wasLost;
  measure(here);
  state.way.push(here);
  if (state.way.length <= MOST_FIXES) return;
  state.way.shift();
  // The distance is that of the way which is drawn.
  state.length -= state.way[0].step;
}

// Adds to the distance in steps from a metre up: shorter ones are the receiver's noise.
function measure(here) {
  const step = here.isBreak ? 0 : metresBetween(state.anchor, here).length;
  here.step = step < LEAST_STEP ? 0 : step;
  if (here.isBreak || here.step > 0) state.anchor = here;
  state.length += here.step;
}

// ---- the map

// The largest of 1, 2, 5, 10 ... up to `value`.
function roundDown(value) {
  const power = 10 ** Math.floor(Math.log10(value));
  return power * [5, 2, 1].find(step => step * power <= value);
}

function metres(value) {
  return value >= 1000 ? `${+(value / 1000).toFixed(2)} km` : `${+value.toFixed(value < 10 ? 1 : 0)} m`;
}

// What the map shows: its centre, and how much of it a metre takes.
function frame() {
  const here = state.way.at(-1);
  if (view) return {...(view.at || here), scale: view.scale};
  const offsets = state.way.map(point => metresBetween(here, point));
  const east = offsets.map(point => point.east), north = offsets.map(point => point.north);
  const [west, right, south, top] = [Math.min(...east), Math.max(...east), Math.min(...north), Math.max(...north)];
  return {...moved(here, (west + right) / 2, (south + top) / 2), scale: 170 / Math.max(20, right - west, top - south)};
}

// Lines a step apart, which move with the way.
function gridPath(start, step) {
  const first = at => ((at + 100) % step + step) % step - 100;
  let path = '';
  for (let x = first(start.x); x <= 100; x += step) path += `M${x.toFixed(1)}-100V100`;
  for (let y = first(start.y); y <= 100; y += step) path += `M-100 ${y.toFixed(1)}H100`;
  return path;
}

function drawMap() {
  const map = $('map');
  for (const id of ['closer', 'wider', 'gpx']) $(id).disabled = state.way.length === 0;
  $('whole').disabled = !view;
  map.classList.toggle('moved', view !== null);
  if (!state.way.length) return map.replaceChildren(draw('text', {x: 0, y: 0, 'text-anchor': 'middle'}, 'no position yet'));
  const shown = frame(), scale = shown.scale;
  const points = state.way.map(point => {
    const offset = metresBetween(shown, point);
    return {x: offset.east * scale, y: -offset.north * scale, isBreak: point.isBreak};
  });
  const start = points[0], end = points.at(-1), step = roundDown(60 / scale) * scale;
  const path = points.map((point, i) => `${point.isBreak || i === 0 ? 'M' : 'L'}${point.x.toFixed(1)} ${point.y.toFixed(1)}`).join('');
  const course = (state.fix || {}).track;
  const place = `translate(${end.x.toFixed(1)} ${end.y.toFixed(1)})`;
  const here = isNumber(course) ? draw('path', {d: 'M0-8 5.5 6 0 3-5.5 6z', class: 'here', transform: `${place} rotate(${course})`}) :
    draw('circle', {r: 4.5, class: 'here', transform: place});
  map.replaceChildren(draw('svg', {x: -100, y: -100, width: 200, height: 200, viewBox: '-100 -100 200 200'},  // cuts off
    draw('path', {d: gridPath(start, step), class: 'grid'}), draw('path', {d: path, class: 'way'}),
    draw('circle', {cx: start.x.toFixed(1), cy: start.y.toFixed(1), r: 3, class: 'start'}), here,
    draw('path', {d: `M-96 90v4h${step}v-4`, class: 'scale'}), draw('text', {x: -94, y: 88}, metres(step / scale)),
    draw('text', {x: 94, y: -90, 'text-anchor': 'end'}, 'N \u2191')));
  put('distance', metres(state.length));
}

// Where of the map the pointer is.
function placeOf(event) {
  const box = $('map').getBoundingClientRect(), unit = 200 / Math.min(box.width, box.height);
  return {x: (event.clientX - box.left - box.width / 2) * unit, y: (event.clientY - box.top - box.height / 2) * unit};
}

// What is at `fixed` stays there; without it the map goes on following what it follows, the receiver at first.
function zoom(factor, fixed) {
  if (!state.way.length) return;
  const shown = frame(), scale = Math.min(SCALES[1], Math.max(SCALES[0], shown.scale * factor));
  const shift = 1 / shown.scale - 1 / scale;
  view = {scale, at: fixed ? moved(shown, fixed.x * shift, -fixed.y * shift) : view && view.at};
  render();
}

function onDrag(event, from) {
  const to = placeOf(event), shown = frame();
  view = {scale: shown.scale, at: moved(shown, (from.x - to.x) / shown.scale, (to.y - from.y) / shown.scale)};
  render();
  return to;
}

function watchMap() {
  const map = $('map');
  let from = null;
  $('closer').onclick = () => zoom(2);
  $('wider').onclick = () => zoom(0.5);
  $('whole').onclick = () => { view = null; render(); };
  $('gpx').onclick = saveGpx;
  map.addEventListener('wheel', event => {
    event.preventDefault();
    zoom(1.2 ** -Math.sign(event.deltaY), placeOf(event));
  }, {passive: false});
  map.onpointerdown = event => {
    // A finger moves the whole page as long as all of the way is there to be seen.
    if (!state.way.length || event.button !== 0 || (event.pointerType === 'touch' && !view)) return;
    map.setPointerCapture(event.pointerId);
    from = placeOf(event);
  };
  map.onpointermove = event => { if (from) from = onDrag(event, from); };
  map.onpointerup = map.onpointercancel = () => { from = null; };
}

// ---- the file

function gpxPoint(point) {
  const height = isNumber(point.msl) ? `<ele>${point.msl.toFixed(3)}</ele>` : '';
  const time = isNumber(point.at) ? `<time>${new Date(point.at).toISOString()}</time>` : '';
  return `<trkpt lat="${point.lat.toFixed(9)}" lon="${point.lon.toFixed(9)}">${height}${time}</trkpt>\n`;
}

function gpxOf(way) {
  const points = way.map((point, i) => (point.isBreak && i > 0 ? '</trkseg>\n<trkseg>\n' : '') + gpxPoint(point));
  return '<?xml version="1.0" encoding="UTF-8"?>\n<gpx version="1.1" creator="gpsengine" xmlns="http://www.topografix.com/GPX/1/1">\n' +
    `<trk><trkseg>\n${points.join('')}</trkseg></trk>\n</gpx>\n`;
}

function saveGpx() {
  const address = URL.createObjectURL(new Blob([gpxOf(state.way)], {type: 'application/gpx+xml'}));
  make('a', {href: address, download: 'track.gpx'}).click();
  setTimeout(() => URL.revokeObjectURL(address), 60000);  // it may be asked where to save it
}
