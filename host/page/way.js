// The way of the live page: its length, its map and its GPX file.
'use strict';

const MOST_FIXES = 5000;
const LEAST_STEP = 1;         // m
const SCALES = [1e-5, 400];   // px of the map for a metre
const LEAST_EXTENT = 20;      // m that the map shows of a receiver at rest
// A way breaks off where nothing came for this long, and for several of the receiver's own intervals, as it does in files.
const SHORTEST_GAP = 10000, STEPS_OF_GAP = 4, FIRST_STEP = 75000;
// By gpsd's numbers for the status of a fix.
const KINDS = {
  1: {style: 'gps', name: 'GPS'}, 2: {style: 'dgps', name: 'DGPS'}, 3: {style: 'fixed', name: 'RTK fixed'}, 4: {style: 'float', name: 'RTK float'},
};
const OTHER_KIND = {style: 'other', name: 'other'};
const METRIC = {length: {name: 'm', perMetre: 1}, distance: {name: 'km', perMetre: 1e-3}};

let view = null;  // the map's scale and centre, which is the receiver unless it was moved; null: the whole way

// `step` is the time since the position before, whose own was `interval`.
function addToWay(tpv, step, interval) {
  if (!state.way.length) state.plane = planeAt(tpv);
  const here = {
    ...state.plane(tpv), lat: tpv.lat, lon: tpv.lon, at: Date.parse(tpv.time), speed: tpv.speed, msl: tpv.altMSL,
    height: isNumber(tpv.altMSL) ? tpv.altMSL : tpv.altHAE, kind: KINDS[tpv.status] || OTHER_KIND,
  };
  here.isBreak = !state.way.length || state.wasLost || step < 0 || step > Math.max(SHORTEST_GAP, STEPS_OF_GAP * (interval || FIRST_STEP));
  measure(here);
  state.way.push(here);
  if (state.way.length <= MOST_FIXES) return;
  state.way.shift();
  // The distance is that of the way which is drawn.
  state.length -= state.way[0].step;
}

// Adds to the distance in steps from a metre up: shorter ones are the receiver's noise.
function measure(here) {
  const offset = here.isBreak ? {east: 0, north: 0} : planeAt(state.anchor)(here), step = Math.hypot(offset.east, offset.north);
  here.step = step < LEAST_STEP ? 0 : step;
  if (here.isBreak || here.step > 0) state.anchor = here;
  state.length += here.step;
}

// ---- the map

function metres(value) {
  return value >= 1000 ? `${(value / 1000).toFixed(2)} km` : `${value.toFixed(value < 10 ? 1 : 0)} m`;
}

function sizeOfMap() {
  const map = $('map');
  return {width: map.clientWidth || 340, height: map.clientHeight || 340};
}

// What the map shows: its centre, and how many pixels a metre takes.
function shown() {
  if (view) return {...(view.at || state.way.at(-1)), scale: view.scale};
  const extent = extentOf(state.way), {width, height} = sizeOfMap();
  return {...extent, scale: 0.85 * Math.min(width / Math.max(LEAST_EXTENT, extent.wide), height / Math.max(LEAST_EXTENT, extent.high))};
}

// Those of the way, the most frequent first.
function kindsOfWay() {
  const counts = new Map();
  for (const {kind} of state.way) counts.set(kind, (counts.get(kind) || 0) + 1);
  return [...counts].sort((a, b) => b[1] - a[1]).map(([kind]) => kind);
}

function drawMap() {
  const map = $('map'), {width, height} = sizeOfMap();
  for (const id of ['closer', 'wider', 'gpx']) $(id).disabled = state.way.length === 0;
  $('whole').disabled = !view;
  map.classList.toggle('moved', view !== null);
  if (!state.way.length) return show(map, width, height, [write(width / 2, height / 2, 'no position yet')]);
  const kinds = kindsOfWay(), end = {...state.way.at(-1), course: (state.fix || {}).track};
  drawTrack(map, state.way, kinds, end, frameOf(0, 0, width, height), shown(), METRIC, false);
  legend($('kinds'), kinds.map(({style, name}) => [`fix-${style}`, name]));
  put('distance', metres(state.length));
}

// Where of the map the pointer is, from its middle.
function placeOf(event) {
  const box = $('map').getBoundingClientRect();
  return {x: event.clientX - box.left - box.width / 2, y: event.clientY - box.top - box.height / 2};
}

// What is at `fixed` stays there; without it the map goes on following what it follows, the receiver at first.
function zoom(factor, fixed) {
  if (!state.way.length) return;
  const {east, north, scale: before} = shown(), scale = Math.min(SCALES[1], Math.max(SCALES[0], before * factor));
  const shift = 1 / before - 1 / scale;
  view = {scale, at: fixed ? {east: east + fixed.x * shift, north: north - fixed.y * shift} : view && view.at};
  render();
}

function onDrag(event, from) {
  const to = placeOf(event), {east, north, scale} = shown();
  view = {scale, at: {east: east + (from.x - to.x) / scale, north: north + (to.y - from.y) / scale}};
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
