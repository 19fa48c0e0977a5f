import { el, NumberField, Switch } from './controls.js';
import { Setting, CHANNELS, one } from './setting.js';

// A front effect: its switch, and a table with one row per channel configuration.
// columns: [{field, count, type, title}]
function effectPage(panel, { id, feature, note, columns }) {
  const page = {
    id, title: feature, perDevice: true, needs: [feature],
    build() {
      const error = el('p', { class: 'error', 'aria-live': 'polite' });
      const enable = panel.track(new Setting(panel, { feature, name: 'enable',
        fields: [one('enable', 'bool', feature)] }));
      enable.bind('enable', 0, new Switch({ label: `${feature} on`, errorTarget: error,
        onEdit: (on) => enable.edit('enable', 0, on) }));
      page.settings = [enable];
      const rows = CHANNELS.map((channel) => {
        const setting = panel.track(new Setting(panel, {
          feature, name: 'channel', key: [channel],
          fields: columns.map((c) => ({ name: c.field, count: c.count || 1, type: c.type,
            label: (i) => `${channel} ${c.title}${c.count ? ` ${i}` : ''}` })),
        }));
        page.settings.push(setting);
        const cells = columns.flatMap((c) => [...Array(c.count || 1).keys()].map((i) => {
          const label = `${channel} ${c.title}${c.count ? ` ${i}` : ''}`;
          const onEdit = (value) => setting.edit(c.field, i, value);
          const unit = panel.limits.unit(feature, setting.set, c.field, i);
          const control = c.type === 'bool'
            ? Switch.bare({ label, onEdit, errorTarget: error })
            : new NumberField({ label: unit ? `${label} (${unit})` : label, narrow: true, onEdit,
              errorTarget: error, step: c.type === 'int' ? 1 : 'any',
              range: panel.limits.range(feature, setting.set, c.field, i) });
          setting.bind(c.field, i, control);
          return el('td', {}, control.element || control.input);
        }));
        return el('tr', {}, el('th', { scope: 'row', text: channel }), cells);
      });
      const heads = columns.flatMap((c) => [...Array(c.count || 1).keys()].map((i) =>
        el('th', { scope: 'col', text: c.count ? `${c.title} ${i}` : c.title })));
      return [el('p', { class: 'note', text: note }),
        el('div', { class: 'tools' }, enable.controls.get('enable#0').element),
        el('div', { class: 'scroll' }, el('table', {},
          el('thead', {}, el('tr', {}, el('th', { scope: 'col', text: 'Channel' }), heads)),
          el('tbody', {}, rows))), error];
    },
  };
  return page;
}

export function hfePage(panel) {
  return effectPage(panel, { id: 'hfe', feature: 'Hfe',
    note: 'The hfe front effect: three switches and a value per channel, passed to the platform as they are.',
    columns: [{ field: 'flag1', type: 'bool', title: 'Switch 1' }, { field: 'flag2', type: 'bool', title: 'Switch 2' },
      { field: 'flag3', type: 'bool', title: 'Switch 3' }, { field: 'value', type: 'float', title: 'Value' }] });
}

export function vbPage(panel) {
  return effectPage(panel, { id: 'vb', feature: 'Vb',
    note: 'The vb front effect: a switch, a number and eighteen parameters per channel.',
    columns: [{ field: 'flag', type: 'bool', title: 'On' }, { field: 'number', type: 'int', title: 'Number' },
      { field: 'params', type: 'float', title: 'P', count: 18 }] });
}
