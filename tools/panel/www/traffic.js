import { el } from './controls.js';

const KEEP = 500;

// The live requests and answers of every line, from the event socket, newest first.
export function trafficPage(panel) {
  let body;
  let filter;
  const features = new Set();
  const page = {
    id: 'traffic', title: 'Traffic', perDevice: false,
    add(event) {
      if (!body) {
        build();
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

  function build() {
    body = el('tbody');
    filter = el('select', { 'aria-label': 'Show the traffic of feature', onchange: () => {
      for (const row of body.rows) {
        row.hidden = Boolean(filter.value) && row.dataset.feature !== filter.value;
      }
    } }, el('option', { value: '', text: 'every feature' }));
    page.section.replaceChildren(el('h2', { text: 'Traffic' }),
      el('div', { class: 'tools' }, el('label', {}, 'Feature ', filter),
        el('button', { type: 'button', text: 'Clear', onclick: () => body.replaceChildren() })),
      el('p', { class: 'note', text: `Every request and answer on every line, newest first (the last ${KEEP}); → a request, ← its answer, • a line's state.` }),
      el('div', { class: 'scroll' }, el('table', { id: 'traffic-log' },
        el('thead', {}, el('tr', {}, ['Time', 'Device', 'Client', '', 'Message'].map((t) => el('th', { scope: 'col', text: t })))),
        body)));
  }
  return page;
}
