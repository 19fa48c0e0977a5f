import { el, NumberField, Switch, CodeSelect } from './controls.js';
import { failure } from './api.js';
import { Setting, CHANNELS, one, perChannel } from './setting.js';
import { settingOf } from './schema.js';
import { CurvePlot } from './curve.js';
import { filterImport } from './eqimport.js';

const BAND_FIELDS = ['value1', 'value2', 'value3', 'value4', 'value5', 'value6'];
const BAND_TYPES = ['int', 'int', 'float', 'float', 'int', 'int'];

// On/off, band counts, the selected channel's band table and its response curve, which
// the server computes from the bands as read from the device, again after every edit.
// While a band value is typed, the curve it would give is previewed (nothing is sent).
export function equaliserPage(panel) {
  let feature;
  let counts;
  let bands = [];
  let body;
  let error;
  let plot;
  let curveBusy = false;
  let curveAgain = false;
  let curveEpoch = 0;
  let previewBusy = false;
  let previewNext = null;
  let loading = false;
  const page = {
    id: 'equaliser', title: 'Equaliser', perDevice: true, needs: ['EqV2', 'Eq'], channel: 'LF',
    build() {
      feature = panel.features.includes('EqV2') ? 'EqV2' : 'Eq';
      error = el('p', { class: 'error', 'aria-live': 'polite' });
      const enable = panel.track(new Setting(panel, { feature, name: 'enable',
        fields: [one('enable', 'bool', 'Equaliser')] }));
      enable.bind('enable', 0, new Switch({ label: 'Equaliser on', errorTarget: error,
        onEdit: (on) => enable.edit('enable', 0, on) }));
      counts = panel.track(new Setting(panel, { feature, name: 'bandCount',
        fields: [perChannel('bandCount', 'int', 'band count')],
        onRead: (values) => {
          const count = values.bandCount[CHANNELS.indexOf(page.channel)];
          if (!loading && count !== bands.length) {
            showBands(count).then(refreshCurve);
          }
        } }));
      const countFields = CHANNELS.map((channel, i) => {
        const field = new NumberField({ label: `${channel} band count`, step: 1, narrow: 'count',
          range: panel.limits.range(feature, counts.set, 'bandCount', i), errorTarget: error,
          onEdit: (value) => counts.edit('bandCount', i, value) });
        field.input.readOnly = !counts.set;
        counts.bind('bandCount', i, field);
        return el('label', { class: 'switch' }, channel, field.input);
      });
      const picker = el('select', { 'aria-label': 'Channel', onchange: (event) => {
        page.channel = event.target.value;
        showBands(counts.values ? counts.values.bandCount[CHANNELS.indexOf(page.channel)] : 0).then(refreshCurve);
      } }, CHANNELS.map((c) => el('option', { value: c, text: c, selected: c === page.channel })));
      plot = new CurvePlot();
      body = el('tbody');
      page.settings = [enable, counts];
      return [
        el('p', { class: 'note', text: feature === 'EqV2'
          ? 'Flexible equaliser (EqV2): band counts per channel can be changed.'
          : 'Fixed equaliser (Eq): 20 bands per channel.' }),
        el('div', { class: 'tools' }, enable.controls.get('enable#0').element,
          el('label', {}, 'Channel ', picker), el('span', { text: 'Band counts' }), countFields),
        el('div', { class: 'eq' }, el('div', {}, plot.svg, plot.caption),
          el('div', { class: 'scroll' }, el('table', { id: 'band-table' },
            el('thead', {}, el('tr', {}, el('th', { scope: 'col', text: 'Band' }),
              BAND_FIELDS.map((field, i) => el('th', { scope: 'col', text: columnName(i) })))),
            body)), error),
        filterImport(panel, () => page.channel, () => page.load()),
      ];
    },
    async load() {
      loading = true;
      await Promise.all(page.settings.map((s) => s.read()));
      loading = false;
      const count = counts.values ? counts.values.bandCount[CHANNELS.indexOf(page.channel)] : 0;
      await showBands(count);
      await refreshCurve();
    },
  };

  function names() {
    const band = panel.limits.band;
    const named = {};
    if (band) {
      named[band.type] = 'Type';
      named[band.frequency] = 'Frequency';
      named[band.gain] = 'Gain';
      named[band.q] = 'Q';
    }
    return named;
  }

  // The message that sets a band, whose ranges and units the profile gives.
  function bandSet() {
    return settingOf(feature, 'band').set;
  }

  function columnName(i) {
    const unit = panel.limits.unit(feature, bandSet(), BAND_FIELDS[i]);
    const name = names()[i] || `Value ${i + 1}`;
    return `${name}${unit ? ` (${unit})` : ''}${names()[i] ? ` · value${i + 1}` : ''}`;
  }

  // The table rows of the channel's bands, read from the device.
  async function showBands(count) {
    panel.settings = panel.settings.filter((s) => !bands.includes(s));
    bands = [];
    const rows = [];
    const channel = page.channel;
    const types = panel.limits.band ? panel.limits.band.types : null;
    const most = settingOf(feature, 'band').bands.max;
    for (let b = 0; b < Math.min(Math.max(count, 0), most); b += 1) {
      const setting = panel.track(new Setting(panel, {
        feature, name: 'band', key: [channel, b],
        fields: BAND_FIELDS.map((name, i) => ({ name, count: 1, type: BAND_TYPES[i],
          label: () => `${channel} band ${b} ${(names()[i] || name).toLowerCase()}` })),
        onRead: () => { if (!loading) { refreshCurve(); } },
      }));
      bands.push(setting);
      const cells = BAND_FIELDS.map((name, i) => {
        const label = `${channel} band ${b} ${columnName(i)}`;
        const onEdit = (value) => setting.edit(name, 0, value);
        const control = types && i === panel.limits.band.type
          ? new CodeSelect({ label, names: types, onEdit, errorTarget: error })
          : new NumberField({ label, narrow: true, errorTarget: error, onEdit,
            onInput: (value) => preview(b, i, value),
            step: BAND_TYPES[i] === 'int' ? 1 : 'any',
            range: panel.limits.range(feature, setting.set, name) });
        setting.bind(name, 0, control);
        return el('td', {}, control.element || control.input);
      });
      rows.push(el('tr', {}, el('th', { scope: 'row', text: b }), cells));
    }
    body.replaceChildren(...rows);
    loading = true;
    await Promise.all(bands.map((s) => s.read()));
    loading = false;
  }

  // The curve of the table with one value replaced, from the server's curve route; not
  // drawn when the device's curve was asked for meanwhile (an edit was committed).
  async function preview(b, i, value) {
    if (bands.some((s) => !s.values)) {
      return;
    }
    previewNext = bands.map((s, k) => BAND_FIELDS.map((name, j) => (k === b && j === i ? value : s.values[name][0])));
    if (previewBusy) {
      return;
    }
    previewBusy = true;
    while (previewNext) {
      const list = previewNext;
      previewNext = null;
      const epoch = curveEpoch;
      const answer = await panel.api.post('/api/curve', { bands: list, points: 256 });
      if (!failure(answer) && epoch === curveEpoch) {
        plot.draw({ ...answer.body, channel: `${page.channel} preview, not sent` });
      }
    }
    previewBusy = false;
  }

  async function refreshCurve() {
    curveEpoch += 1;
    if (curveBusy) {
      curveAgain = true;
      return;
    }
    curveBusy = true;
    do {
      curveAgain = false;
      // The bands as just read from the device make its curve without another read
      // over the cable; the device's own curve when they are not all in.
      const answer = bands.length > 0 && bands.every((s) => s.values)
        ? await panel.api.post('/api/curve', { bands: bands.map((s) => BAND_FIELDS.map((name) => s.values[name][0])), points: 256 })
        : await panel.api.get(`/api/devices/${panel.device}/eq/${page.channel}/curve?points=256`);
      const why = failure(answer);
      if (why) {
        plot.showProblem(`No response curve: ${why}`);
      } else {
        plot.draw({ ...answer.body, channel: page.channel });
      }
    } while (curveAgain);
    curveBusy = false;
  }
  return page;
}
