import { el } from './controls.js';

const KEEP = 500;

// The live requests and answers of every line, from the event socket, newest first.
export function trafficPage(panel) {
  let body;
  let filter;
  let lines;
  let traceNote;
  const features = new Set();
  const page = {
    id: 'traffic', title: 'Traffic', perDevice: false,
    add(event) {
      if (!body) {
        build();
      }
      if (event.type === 'state' && !lines.querySelector(`option[value="${event.device}"]`)) {
        lines.append(el('option', { value: String(event.device), text: `${event.device}: ${event.path}` }));
      }
      const feature = event.reply ? event.reply.feature : event.request ? event.request.feature : '';
      let text;
      if (event.type === 'state') {
        text = `line ${event.state}${event.version ? ` (${event.version})` : ''}${event.reason ? `: ${event.reason}` : ''}`;
      } else if (event.reply) {
        const fields = Object.entries(event.reply.fields || {})
          .map(([name, value]) => `${name}=${Array.isArray(value) ? value.join(':') : value}`);
        text = [event.reply.feature, event.reply.message, event.reply.status, ...fields].join(' ');
      } else {
        text = `${event.request.feature} ${event.request.message} ${event.request.args.join(' ')}` +
               (event.error ? ` — ${event.error}` : '');
      }
      if (feature && !features.has(feature)) {
        features.add(feature);
        filter.append(el('option', { value: feature, text: feature }));
      }
      const row = el('tr', { 'data-feature': feature, hidden: Boolean(filter.value) && filter.value !== feature },
        el('td', { text: (event.time || '').slice(11, 23) }), el('td', { text: event.device }),
        el('td', { text: event.client || '' }),
        el('td', { text: event.type === 'request' ? '→' : event.type === 'response' ? '←' : '•' }),
        el('td', { class: 'frame', text }));
      body.prepend(row);
      while (body.rows.length > KEEP) {
        body.deleteRow(-1);
      }
    },
  };

  // The server keeps each line's latest frames; the file opens in Wireshark with the
  // dissector vek_master's package installs. Fetched with the token, then saved.
  async function downloadTrace() {
    const device = lines.value;
    traceNote.textContent = '';
    let response;
    try {
      response = await fetch(`/api/devices/${device}/trace`, { headers: panel.api.headers() });
    } catch (failure) {
      traceNote.textContent = `The server does not answer (${failure.message}).`;
      return;
    }
    if (!response.ok) {
      const answer = await response.json().catch(() => ({}));
      traceNote.textContent = `No trace: ${answer.error || response.status}`;
      return;
    }
    const url = URL.createObjectURL(await response.blob());
    const link = el('a', { href: url, download: `vek-device${device}.pcapng` });
    document.body.append(link);
    link.click();
    link.remove();
    setTimeout(() => URL.revokeObjectURL(url), 60000);
  }

  function build() {
    lines = el('select', { id: 'trace-device', 'aria-label': 'The line whose trace to download' });
    traceNote = el('span', { class: 'note', role: 'status' });
    body = el('tbody');
    filter = el('select', { 'aria-label': 'Show the traffic of feature', onchange: () => {
      for (const row of body.rows) {
        row.hidden = Boolean(filter.value) && row.dataset.feature !== filter.value;
      }
    } }, el('option', { value: '', text: 'every feature' }));
    page.section.replaceChildren(el('h2', { text: 'Traffic' }),
      el('div', { class: 'tools' }, el('label', {}, 'Feature ', filter),
        el('button', { type: 'button', text: 'Clear', onclick: () => body.replaceChildren() }),
        el('label', {}, 'Trace of line ', lines),
        el('button', { type: 'button', id: 'trace-download', text: 'Download trace (pcapng)', onclick: downloadTrace }),
        traceNote),
      el('p', { class: 'note', text: `Every request and answer on every line, newest first (the last ${KEEP}); → a request, ← its answer, • a line's state.` }),
      el('div', { class: 'scroll' }, el('table', { id: 'traffic-log' },
        el('thead', {}, el('tr', {}, ['Time', 'Device', 'Client', '', 'Message'].map((t) => el('th', { scope: 'col', text: t })))),
        body)));
  }
  return page;
}
