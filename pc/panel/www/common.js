import { el, Switch } from './controls.js';
import { failure } from './api.js';
import { Setting, one } from './setting.js';

// Bypass, and the setting files of every served feature: listed, viewed, downloaded.
export function commonPage(panel) {
  let files;
  const page = {
    id: 'common', title: 'Common', perDevice: true, needs: ['Common'],
    build() {
      const error = el('span', { class: 'error', 'aria-live': 'polite' });
      const bypass = panel.track(new Setting(panel, {
        feature: 'Common', name: 'bypass',
        fields: [one('enable', 'bool', 'Audio bypass')],
      }));
      bypass.bind('enable', 0, new Switch({ label: 'Audio bypass (every effect off)',
        errorTarget: error, onEdit: (on) => bypass.edit('enable', 0, on) }));
      page.settings = [bypass];
      files = el('div');
      return [el('div', { class: 'tools' }, bypass.controls.get('enable#0').element, error),
        el('h3', { text: 'Setting files' }),
        el('p', { class: 'note', text: 'A file\'s size shows once it is viewed: the device has no other way to tell it, and reading it costs its whole transfer on the line.' }),
        files];
    },
    async load() {
      const lists = panel.features.filter((f) => f !== 'Common').map((feature) =>
        panel.api.get(`/api/devices/${panel.device}/files/${feature}`).then((answer) => ({ feature, answer })));
      const reads = page.settings.map((setting) => setting.read());
      const rows = [];
      for (const { feature, answer } of await Promise.all(lists)) {
        const why = failure(answer);
        const paths = why ? [] : answer.body.fields.files || [];
        if (why) {
          rows.push(el('tr', {}, el('td', { text: feature }), el('td', { class: 'ng', colspan: 3, text: why })));
        }
        paths.forEach((path, i) => rows.push(fileRow(feature, path, i)));
      }
      files.replaceChildren(el('div', { class: 'scroll' }, el('table', {},
        el('thead', {}, el('tr', {}, ['Feature', 'File', 'Size', ''].map((t) => el('th', { scope: 'col', text: t })))),
        el('tbody', {}, rows))), el('div', { id: 'file-view' }));
      await Promise.all(reads);
    },
  };

  function fileRow(feature, path, i) {
    const url = `/api/devices/${panel.device}/files/${feature}/${i}`;
    const size = el('td', { text: '' });
    const name = path.slice(path.lastIndexOf('/') + 1);
    const view = el('button', {
      type: 'button', text: 'View', 'aria-label': `View ${name}`,
      onclick: async () => {
        const shown = document.getElementById('file-view');
        shown.replaceChildren(el('p', { text: `Reading ${path}…` }));
        const response = await fetch(url, { headers: panel.api.headers() });
        if (!response.ok) {
          const body = await response.json().catch(() => ({}));
          shown.replaceChildren(el('p', { class: 'bad', text: `${path}: ${body.error || response.status}` }));
          return;
        }
        const bytes = await response.arrayBuffer();
        size.textContent = `${bytes.byteLength.toLocaleString('en')} bytes`;
        const limit = 256 * 1024;
        const text = new TextDecoder().decode(bytes.slice(0, limit));
        shown.replaceChildren(el('h3', { text: path }),
          bytes.byteLength > limit ? el('p', { class: 'note', text: `The first ${limit / 1024} KiB of ${size.textContent}; download it for the whole file.` }) : null,
          el('pre', { class: 'file', tabindex: 0, 'aria-label': `Content of ${name}`, text }));
      },
    });
    return el('tr', {}, el('td', { text: feature }), el('td', { text: path }), size,
      el('td', {}, view, ' ', el('a', { href: url, download: name, text: 'Download', 'aria-label': `Download ${name}` })));
  }
  return page;
}
