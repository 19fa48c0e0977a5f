import { el } from './controls.js';

// Tuning documents on the ticked devices: snapshot to a file, load a document and see
// what differs before anything is sent, apply it (the bypass held on if wanted) and see
// the read-back of every value set.
export function tuningPage(panel) {
  let doc = null;
  let docName = '';
  let which;
  let results;
  let applyButton;
  let bypass;
  const page = {
    id: 'tuning', title: 'Tuning', perDevice: false,
    refresh() {
      if (!which) {
        build();
      }
      const names = [...panel.tuned].sort().map((i) => panel.devices[i]).filter(Boolean)
        .map((d) => `${d.index}: ${d.path}`);
      which.textContent = names.length ? `Acting on ${names.join(', ')} (tick devices on the Devices page).`
        : 'No device is ticked on the Devices page.';
    },
  };

  function targets() {
    return [...panel.tuned].sort().filter((i) => panel.devices[i]);
  }

  function build() {
    which = el('p', { class: 'note' });
    results = el('div', { id: 'tuning-results', 'aria-live': 'polite' });
    const file = el('input', { type: 'file', accept: '.json,application/json', id: 'tuning-file',
      onchange: (event) => load(event.target.files[0]) });
    bypass = el('input', { type: 'checkbox', id: 'tuning-bypass' });
    applyButton = el('button', { type: 'button', class: 'primary', disabled: true, text: 'Apply',
      onclick: apply });
    page.section.replaceChildren(el('h2', { text: 'Tuning' }), which,
      el('div', { class: 'tools' },
        el('button', { type: 'button', text: 'Take snapshot', onclick: snapshot }),
        el('label', {}, 'Load a document ', file)),
      el('div', { class: 'tools' }, applyButton,
        el('label', { class: 'switch' }, bypass, 'Hold the audio bypass on while applying')),
      results);
  }

  async function snapshot() {
    results.replaceChildren(el('p', { text: 'Reading every setting…' }));
    const shown = [];
    await Promise.all(targets().map(async (index) => {
      const answer = await panel.api.get(`/api/devices/${index}/snapshot`);
      const device = panel.devices[index];
      if (answer.status !== 200) {
        shown.push(el('p', { class: 'bad', text: `${device.path}: ${answer.body.error}` }));
        return;
      }
      const name = `snapshot-${device.path.replace(/[^A-Za-z0-9]+/g, '_').replace(/^_/, '')}.json`;
      const url = URL.createObjectURL(new Blob([`${JSON.stringify(answer.body, null, 2)}\n`],
                                               { type: 'application/json' }));
      const link = el('a', { href: url, download: name, text: `Save ${name} again` });
      link.click();
      shown.push(el('p', {}, `${device.path}: snapshot taken. `, link));
    }));
    results.replaceChildren(...shown);
  }

  async function load(chosen) {
    applyButton.disabled = true;
    if (!chosen) {
      return;
    }
    docName = chosen.name;
    try {
      doc = JSON.parse(await chosen.text());
    } catch (problem) {
      doc = null;
      results.replaceChildren(el('p', { class: 'bad', text: `${docName} is not JSON: ${problem.message}` }));
      return;
    }
    await showDiff();
  }

  // The document against each device: only what differs.
  async function showDiff() {
    if (targets().length === 0) {
      results.replaceChildren(el('p', { class: 'bad', text: 'Tick a device on the Devices page first.' }));
      return;
    }
    const parts = await Promise.all(targets().map(async (index) => {
      const device = panel.devices[index];
      const answer = await panel.api.post('/api/diff', { a: doc, b: 'device', device: index });
      if (answer.status !== 200) {
        return [el('h3', { text: device.path }), el('p', { class: 'bad', text: answer.body.error })];
      }
      const rows = answer.body.differences.map((d) =>
        el('tr', {}, el('td', { text: d.setting }), el('td', { text: d.a }), el('td', { text: d.b })));
      return [el('h3', { text: `${device.path}: ${rows.length ? `${rows.length} ${rows.length === 1 ? 'difference' : 'differences'}` : 'matches the document'}` }),
        rows.length ? el('div', { class: 'scroll' }, el('table', { class: 'diff', 'data-device': index },
          el('thead', {}, el('tr', {}, ['Setting', docName, 'Device'].map((t) => el('th', { scope: 'col', text: t })))),
          el('tbody', {}, rows))) : null];
    }));
    results.replaceChildren(...parts.flat());
    applyButton.disabled = false;
  }

  async function apply() {
    applyButton.disabled = true;
    const query = bypass.checked ? '?bypass=1' : '';
    const parts = await Promise.all(targets().map(async (index) => {
      const device = panel.devices[index];
      const answer = await panel.api.post(`/api/devices/${index}/apply${query}`, doc);
      const result = answer.body;
      if (!result.changes) {
        return [el('h3', { text: device.path }), el('p', { class: 'bad', text: result.error || `HTTP ${answer.status}` })];
      }
      const failed = new Map((result.failures || []).map((f) => [f.setting, f.reason]));
      const rows = result.changes.map((c) => el('tr', {}, el('td', { text: c.setting }),
        el('td', { text: c.from }), el('td', { text: c.to }),
        el('td', { class: failed.has(c.setting) ? 'bad' : 'ok',
                   text: failed.has(c.setting) ? failed.get(c.setting) : 'read back: took' })));
      for (const [setting, reason] of failed) {
        if (!result.changes.some((c) => c.setting === setting)) {
          rows.push(el('tr', {}, el('td', { text: setting }), el('td', {}), el('td', {}), el('td', { class: 'bad', text: reason })));
        }
      }
      const verdict = result.status === 'OK'
        ? `OK: ${result.changes.length} values set, the device matches`
        : `NG: ${failed.size} of ${result.changes.length} values did not take${result.error ? ` (${result.error})` : ''}`;
      return [el('h3', { text: device.path }),
        el('p', { class: result.status === 'OK' ? 'ok apply-status' : 'bad apply-status', text: verdict }),
        rows.length ? el('div', { class: 'scroll' }, el('table', {},
          el('thead', {}, el('tr', {}, ['Setting', 'Was', 'Set to', 'Result'].map((t) => el('th', { scope: 'col', text: t })))),
          el('tbody', {}, rows))) : null];
    }));
    results.replaceChildren(...parts.flat());
    applyButton.disabled = false;
  }
  return page;
}
