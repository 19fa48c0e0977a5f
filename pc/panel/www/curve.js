// The response curve an API route computed, drawn as SVG: magnitude in dB over a log
// frequency axis from 20 Hz to 20 kHz, each band's own curve faint behind the sum.
const SVG = 'http://www.w3.org/2000/svg';
const WIDTH = 800;
const HEIGHT = 250;
const LEFT = 48;
const RIGHT = 14;
const TOP = 12;
const BOTTOM = 28;
const LOW = Math.log10(20);
const HIGH = Math.log10(20000);
const TICKS = [20, 50, 100, 200, 500, 1000, 2000, 5000, 10000, 20000];

function node(tag, attributes, text) {
  const made = document.createElementNS(SVG, tag);
  for (const [name, value] of Object.entries(attributes)) {
    made.setAttribute(name, value);
  }
  if (text !== undefined) {
    made.textContent = text;
  }
  return made;
}

export class CurvePlot {
  constructor() {
    this.svg = node('svg', { class: 'curve', viewBox: `0 0 ${WIDTH} ${HEIGHT}`, role: 'img',
                             'aria-label': 'Response curve' });
    this.caption = document.createElement('p');
    this.caption.className = 'note';
    this.caption.setAttribute('aria-live', 'polite');
  }

  showProblem(text) {
    this.svg.replaceChildren();
    this.caption.textContent = text;
  }

  // curve: {frequencies, total, bands: [{band, curve}], channel, sampleRate}
  draw(curve) {
    const { parts, path } = this.axes(curve.frequencies, [curve.total, ...curve.bands.map((b) => b.curve)]);
    for (const band of curve.bands) {
      parts.push(node('path', { class: 'band', d: path(band.curve), 'data-band': band.band }));
    }
    parts.push(node('path', { class: 'total', d: path(curve.total) }));
    this.svg.replaceChildren(...parts);
    const peak = curve.total.reduce((best, db, i) => (Math.abs(db) > Math.abs(best.db) ? { db, i } : best), { db: 0, i: 0 });
    this.describe(`${curve.channel || 'Bands'}: ${curve.bands.length} bands at ${curve.sampleRate} Hz; ` +
      `largest change ${peak.db.toFixed(1)} dB at ${Math.round(curve.frequencies[peak.i])} Hz`);
  }

  // One curve over another (before faint, after bold), with marks at frequencies, each
  // titled with why: {frequencies, before, after, marks: [{frequency, text}], summary}.
  compare({ frequencies, before, after, marks, summary }) {
    const { parts, path, x } = this.axes(frequencies, [before, after]);
    parts.push(node('path', { class: 'band', d: path(before) }));
    parts.push(node('path', { class: 'total', d: path(after) }));
    for (const mark of marks) {
      const at = x(Math.min(Math.max(mark.frequency, 20), 20000));
      const line = node('line', { class: 'clamp', x1: at, x2: at, y1: TOP, y2: HEIGHT - BOTTOM });
      line.append(node('title', {}, mark.text));
      parts.push(line);
    }
    this.svg.replaceChildren(...parts);
    this.describe(summary);
  }

  describe(summary) {
    this.svg.setAttribute('aria-label', `Response curve. ${summary}`);
    this.caption.textContent = summary;
  }

  // The grid for curves of dB values over frequencies: its lines and labels, and the
  // functions that place a frequency and draw a curve.
  axes(frequencies, curves) {
    const all = curves.flat();
    const step = Math.max(...all.map(Math.abs), 12) > 24 ? 12 : 6;
    const low = Math.min(-12, Math.floor(Math.min(...all) / step) * step);
    const high = Math.max(12, Math.ceil(Math.max(...all) / step) * step);
    const x = (f) => LEFT + ((Math.log10(f) - LOW) / (HIGH - LOW)) * (WIDTH - LEFT - RIGHT);
    const y = (db) => TOP + ((high - db) / (high - low)) * (HEIGHT - TOP - BOTTOM);
    const path = (values) => values.map((db, i) =>
      `${i ? 'L' : 'M'}${x(frequencies[i]).toFixed(1)},${y(db).toFixed(1)}`).join('');
    const parts = [];
    for (const f of TICKS) {
      parts.push(node('line', { class: 'grid', x1: x(f), x2: x(f), y1: TOP, y2: HEIGHT - BOTTOM }));
      parts.push(node('text', { class: 'axis', x: x(f), y: HEIGHT - 10, 'text-anchor': 'middle' },
                      f >= 1000 ? `${f / 1000}k` : String(f)));
    }
    for (let db = low; db <= high; db += step) {
      parts.push(node('line', { class: db === 0 ? 'zero' : 'grid', x1: LEFT, x2: WIDTH - RIGHT, y1: y(db), y2: y(db) }));
      parts.push(node('text', { class: 'axis', x: LEFT - 6, y: y(db) + 4, 'text-anchor': 'end' },
                      `${db > 0 ? '+' : ''}${db} dB`));
    }
    parts.push(node('text', { class: 'axis', x: WIDTH - RIGHT, y: TOP + 10, 'text-anchor': 'end' }, 'Hz'));
    return { parts, path, x };
  }
}
