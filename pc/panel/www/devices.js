import { el } from './controls.js';

// Every served line with its state, version and features; the device the other pages
// show, and the devices a tuning acts on.
export function devicesPage(panel) {
  const page = {
    id: 'devices', title: 'Devices', perDevice: false,
    refresh() {
      const rows = panel.devices.map((device) => el('tr', {},
        el('td', {}, el('input', {
          type: 'radio', name: 'open-device', checked: device.index === panel.device,
          'aria-label': `Show device ${device.index} on the pages`,
          onchange: () => panel.open(device.index),
        })),
        el('td', {}, el('input', {
          type: 'checkbox', checked: panel.tuned.has(device.index),
          'aria-label': `Include device ${device.index} in tuning actions`,
          onchange: (event) => {
            if (event.target.checked) {
              panel.tuned.add(device.index);
            } else {
              panel.tuned.delete(device.index);
            }
            panel.page('tuning').refresh();
          },
        })),
        el('td', { text: device.index }),
        el('td', { text: device.path }),
        el('td', { class: device.state === 'connected' ? 'ok' : 'bad', text: device.state }),
        el('td', { text: device.version || '' }),
        el('td', { class: 'features', text: (device.features || []).join(' ') })));
      page.section.replaceChildren(
        el('h2', { text: 'Devices' }),
        el('p', { class: 'note', text: 'The pages show one device; tuning actions (snapshot, load, apply) act on every ticked device at once.' }),
        el('div', { class: 'scroll' }, el('table', { id: 'device-table' },
          el('thead', {}, el('tr', {}, ['Show', 'Tune', '#', 'Line', 'State', 'Version', 'Features']
            .map((name) => el('th', { scope: 'col', text: name })))),
          el('tbody', {}, rows))));
    },
  };
  return page;
}
