import { el } from './controls.js';
import { failure } from './api.js';
import { CurvePlot } from './curve.js';

// Filter text from a measurement tool, pasted or dropped: the server fits it to the
// channel and answers a plan, drawn over the channel's current curve with every value it
// clamped marked; Apply sends exactly what was previewed. channel() names the channel
// the page shows; applied() is called once the device has taken it.
//
// The box is made once per device and handed back when the page is built again (a line
// that reconnects rebuilds every page): pasted text, a preview and an answer on its way
// survive it.
const boxes = new Map();

export function filterImport(panel, channel, applied) {
  const kept = boxes.get(panel.device);
  if (kept) {
    kept.channel = channel;
    kept.applied = applied;
    return kept.element;
  }
  const box = { channel, applied, element: null };
  boxes.set(panel.device, box);
  box.element = build(panel, box);
  return box.element;
}

function build(panel, box) {
  const channel = () => box.channel();
  const applied = () => box.applied();
  const text = el('textarea', { id: 'filter-text', rows: 6, spellcheck: 'false',
    'aria-label': 'Filter text',
    placeholder: 'Paste filter text (Preamp: …, Filter 1: ON PK Fc … Hz Gain … dB Q …) or drop the file here' });
  const fit = el('input', { type: 'checkbox', id: 'filter-fit' });
  const preamp = el('select', { id: 'filter-preamp', 'aria-label': 'Preamp goes to' },
    [['channel', 'the channel gain'], ['master', 'the master gain'], ['ignore', 'nowhere']]
      .map(([value, label]) => el('option', { value, text: label })));
  const notes = el('ul', { id: 'filter-notes', 'aria-live': 'polite' });
  const plot = new CurvePlot();
  let planned = null;  // the request a preview was made for; Apply sends it as it is
  const apply = el('button', { id: 'filter-apply', type: 'button', disabled: true, text: 'Apply filters',
    onclick: () => send() });
  const preview = el('button', { id: 'filter-preview', type: 'button', text: 'Preview',
    onclick: () => plan() });

  const forget = () => { planned = null; apply.disabled = true; };
  text.addEventListener('input', forget);
  fit.addEventListener('change', forget);
  preamp.addEventListener('change', forget);
  text.addEventListener('dragover', (event) => event.preventDefault());
  text.addEventListener('drop', async (event) => {
    event.preventDefault();
    const file = event.dataTransfer.files[0];
    if (file) {
      text.value = await file.text();
      forget();
      await plan();
    }
  });

  const show = (lines, kind) => notes.replaceChildren(...lines.map((line) => el('li', { class: kind, text: line })));

  async function plan() {
    const request = { text: text.value, channels: channel(), fit: fit.checked,
                      preamp: preamp.value, points: 256 };
    forget();
    const answer = await panel.api.post(`/api/devices/${panel.device}/eq/plan`, request);
    if (answer.status === 422) {
      show(answer.body.problems, 'error');
      plot.showProblem('Nothing to apply: the filters do not fit (tick Fit to clamp and drop).');
      return;
    }
    const why = failure(answer);
    if (why) {
      show([why], 'error');
      return;
    }
    const fitted = answer.body.channels[0];
    const largest = fitted.largest.db >= 0.005
      ? `${fitted.largest.db.toFixed(2)} dB at ${fitted.largest.hz} Hz` : 'under 0.01 dB';
    show([
      `${fitted.bands} ${fitted.feature} bands; ${answer.body.apply.requests.length} requests to send`,
      ...(fitted.gain.from !== fitted.gain.to ? [`gain ${fitted.gain.from} → ${fitted.gain.to} dB (the preamp)`] : []),
      ...fitted.changes.map((c) => c.text),
      `largest difference from the file: ${largest}`,
    ], 'note');
    plot.compare({ ...fitted.curves,
      marks: fitted.changes.filter((c) => c.band >= 0 && c.text.includes('clamped')),
      summary: `${fitted.channel} imported (bold) over now (faint); largest difference from the file ${largest}` });
    planned = request;
    apply.disabled = false;
  }

  async function send() {
    const request = planned;
    forget();
    const answer = await panel.api.post(`/api/devices/${panel.device}/eq/import`, request);
    const why = answer.status === 422 ? answer.body.problems.join('; ') : failure(answer);
    if (why || answer.body.apply.status !== 'OK') {
      show([why || answer.body.apply.error || 'the device did not take every value'], 'error');
      return;
    }
    show([`Applied: ${answer.body.apply.changes.length} values set, the device matches`], 'note');
    await applied();
  }

  return el('section', { class: 'eq-import', 'aria-label': 'Import filters' },
    el('h3', { text: 'Import filters' }), text,
    el('div', { class: 'tools' },
      el('label', { class: 'switch' }, fit, 'Fit to the device (clamp and drop)'),
      el('label', {}, 'Preamp to ', preamp), preview, apply),
    notes, el('div', {}, plot.svg, plot.caption));
}
