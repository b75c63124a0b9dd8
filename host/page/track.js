// The drawings seen from above that the live page and the report have in common: a track, and the fixes about their mean.
'use strict';

const AXIS = 6378137, ECCENTRICITY2 = 0.0066943799901413165, RADIUS = 6371000;  // m, of the earth

function earthPoint(lat, lon) {
  const sine = Math.sin(lat), normal = AXIS / Math.sqrt(1 - ECCENTRICITY2 * sine * sine), off = normal * Math.cos(lat);
  return [off * Math.cos(lon), off * Math.sin(lon), normal * (1 - ECCENTRICITY2) * sine];
}

// A plane about a place, as host/exports/plane.h has it: distances and directions from there are true, at any latitude and across
// the date line. Gives metres.
function planeAt(place) {
  const [lat, lon] = [place.lat, place.lon].map(degrees => degrees * Math.PI / 180), home = earthPoint(lat, lon);
  return there => {
    const [x, y, z] = earthPoint(there.lat * Math.PI / 180, there.lon * Math.PI / 180).map((value, i) => value - home[i]);
    const east = y * Math.cos(lon) - x * Math.sin(lon), out = x * Math.cos(lon) + y * Math.sin(lon);
    const north = z * Math.cos(lat) - out * Math.sin(lat), flat = Math.hypot(east, north);
    const stretch = flat > 0 ? 2 * RADIUS * Math.asin(Math.min(1, Math.hypot(x, y, z) / 2 / RADIUS)) / flat : 0;
    return {east: east * stretch, north: north * stretch};
  };
}

// The middle of a way and how far it goes, in metres.
function extentOf(way) {
  const [east, north] = ['east', 'north'].map(side => way.reduce(([low, high], point) => [Math.min(low, point[side]), Math.max(high, point[side])],
    [Infinity, -Infinity]));
  return {east: (east[0] + east[1]) / 2, north: (north[0] + north[1]) / 2, wide: east[1] - east[0], high: north[1] - north[0]};
}

const FAR = 0.7;            // of the unit for distances, from one line of the grid to the next
const WIDE = 3, COVER = 0.2;  // px of a line, and how much of the ground it may cover: else it is a thin one, since lanes lie close together

// A line for each kind of fix, in pieces that begin at the end of the piece before, the rarer kind on top: it would not be seen on
// a way that was gone many times.
function drawWays(way, kinds, frame, x, y) {
  const lines = new Map(kinds.map(kind => [kind, '']));
  let length = 0;
  way.forEach((point, i) => {
    const from = i > 0 && !point.isBreak && way[i - 1], here = `${px(x(point.east))} ${px(y(point.north))}`;
    const start = from && from.kind !== point.kind ? `M${px(x(from.east))} ${px(y(from.north))}` : '';
    lines.set(point.kind, lines.get(point.kind) + (from ? `${start}L${here}` : `M${here}h.1`));  // one alone is a dot
    if (from) length += Math.hypot(x(point.east) - x(from.east), y(point.north) - y(from.north));
  });
  const thin = length * WIDE > COVER * frame.width * frame.height ? ' thin' : '';
  return [...lines].map(([kind, d]) => d && path(`fix-${kind.style} way${thin}`, d));
}

function drawScaleBar(frame, per, unit) {
  const units = roundDown(Math.max(60, frame.width / 5) / per), length = units * per, right = frame.right - 14, y = frame.bottom - 14;
  return [path('rule', `M${px(right - length)} ${y - 4}v8m0-4H${right}m0-4v8`),
    write(right - length / 2, y - 7, `${number(units, decimalsOf(units))} ${unit.name}`, 'middle', 'tick strong')];
}

// An arrow on a course, or a dot.
function drawEnds(start, end, x, y) {
  const [d, turn] = isNumber(end.course) ? ['M0-11 7.5 8 0 4-7.5 8z', ` rotate(${end.course})`] : ['M0-6a6 6 0 1 0 .01 0z', ''];
  return [draw('circle', {class: 'start', cx: px(x(start.east)), cy: px(y(start.north)), r: 5}, draw('title', {}, 'start')),
    draw('path', {class: 'end', d, transform: `translate(${px(x(end.east))} ${px(y(end.north))})${turn}`}, draw('title', {}, 'end'))];
}

function nameAxes(frame, below, beside) {
  const turn = `translate(12 ${px(frame.top + frame.height / 2)}) rotate(-90)`;
  return [write(frame.left + frame.width / 2, frame.bottom + 34, below, 'middle', 'axis'),
    draw('text', {class: 'axis', 'text-anchor': 'middle', transform: turn}, beside)];
}

// A way of {east, north, kind, isBreak}, in metres from the place that the labels count from, as far as the frame shows it about
// view.east and view.north, with view.scale pixels for a metre. `end` is where it ends, and on which course, if that is known.
function drawTrack(svg, way, kinds, end, frame, view, units, hasLabels) {
  const {left, top, width, height} = frame, steps = Math.max(3, width / 96);
  const unit = width / view.scale / steps * units.distance.perMetre >= FAR ? units.distance : units.length;
  const per = view.scale / unit.perMetre;
  const x = metres => left + width / 2 + (metres - view.east) * view.scale;
  const y = metres => top + height / 2 - (metres - view.north) * view.scale;
  const ticks = (centre, size, at) => {
    const middle = centre * unit.perMetre, reach = size / 2 / per;
    return exactAxis(middle - reach, middle + reach, Math.max(2, steps * size / width)).ticks.map(
      ({value, label}) => ({at: at(value / unit.perMetre), label: hasLabels ? `${label} ${unit.name}` : ''}));
  };
  const cut = draw('svg', {x: left, y: top, width, height, viewBox: `${left} ${top} ${width} ${height}`},
    ...drawWays(way, kinds, frame, x, y).filter(Boolean), ...drawEnds(way[0], end, x, y));
  show(svg, frame.right + (hasLabels ? 2 : 0), frame.bottom + (hasLabels ? 40 : 0), [
    ...ground(frame, ticks(view.east, width, x), ticks(view.north, height, y)), cut, ...drawScaleBar(frame, per, unit),
    write(frame.right - 12, top + 20, 'N \u2191', 'end', 'tick strong'),
    ...(hasLabels ? nameAxes(frame, 'east of the start', 'north of the start') : [])]);
}

// The fixes of a still receiver about their mean, and the radii with half and 95 % of them: `cloud` has the places of each kind, one
// number after the other, in metres.
function drawCloud(svg, cloud, unit, frame) {
  const reach = Math.max(1.5 * cloud.r95, 1e-3);  // a few fixes lie far out, and would leave the others a spot
  const axis = exactAxis(-reach * unit.perMetre, reach * unit.perMetre, Math.min(6, frame.width / 56));
  const x = east => frame.left + axis.part(east * unit.perMetre) * frame.width;
  const y = north => frame.bottom - axis.part(north * unit.perMetre) * frame.height;
  const ticks = at => axis.ticks.map(({value, label}) => ({at: at(value / unit.perMetre), label}));
  const dots = cloud.kinds.map(([kind, places]) => {
    let d = '';
    for (let i = 0; i < places.length; i += 2) {
      const [east, north] = [places[i], places[i + 1]];
      if (Math.max(Math.abs(east), Math.abs(north)) <= reach) d += `M${px(x(east))} ${px(y(north))}h.1`;  // its round ends are the dot
    }
    return path(`fix-${kind.style} dots`, d);
  });
  const radii = [['50 %', cloud.cep50], ['95 %', cloud.r95]].flatMap(([name, radius]) => [
    draw('circle', {class: 'radius', cx: px(x(0)), cy: px(y(0)), r: px(x(radius) - x(0))}),
    write(x(0), y(radius) - 4, name, 'middle', 'tick strong')]);
  show(svg, frame.right + 2, frame.bottom + 40, [...ground(frame, ticks(x), ticks(y)), ...dots, ...radii,
    ...nameAxes(frame, `east of the mean, ${unit.name}`, `north of the mean, ${unit.name}`)]);
}
