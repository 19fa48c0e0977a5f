import { el, NumberField, Switch } from './controls.js';
import { failure } from './api.js';
import { Setting, CHANNELS, one, perChannel } from './setting.js';
import { sliderRows } from './gain.js';
import { messageWithField } from './schema.js';

// Per speaker: on/off, delay, and the two test patterns, played with a button.
export function speakerPage(panel) {
  const page = {
    id: 'speaker', title: 'Speaker', perDevice: true, needs: ['Speaker'],
    build() {
      const error = el('p', { class: 'error', 'aria-live': 'polite' });
      const enable = panel.track(new Setting(panel, { feature: 'Speaker', name: 'enable',
        fields: [perChannel('enable', 'bool', 'on')] }));
      const delay = panel.track(new Setting(panel, { feature: 'Speaker', name: 'delay',
        fields: [perChannel('delay', 'float', 'delay')] }));
      page.settings = [enable, delay];
      const rows = CHANNELS.map((channel, i) => {
        const on = enable.bind('enable', i, Switch.bare({ label: `${channel} speaker on`, errorTarget: error,
          onEdit: (value) => enable.edit('enable', i, value) }));
        return el('tr', {}, el('th', { scope: 'row', text: channel }), el('td', {}, on.input),
          el('td', {}, pattern(channel, 'style', 'Style', 'Play style', error)),
          el('td', {}, pattern(channel, 'frequency', 'Sine', 'Play sine', error)));
      });
      return [
        el('div', { class: 'scroll' }, el('table', {},
          el('thead', {}, el('tr', {}, ['Speaker', 'On', 'Style pattern', 'Sine pattern']
            .map((t) => el('th', { scope: 'col', text: t })))),
          el('tbody', {}, rows))),
        el('p', { class: 'note', text: 'A sine of 1500 Hz plays style pattern 1 on the device.' }),
        error,
        el('h3', { text: 'Delays' }),
        ...sliderRows(panel, delay, 'delay', CHANNELS.map((c) => `${c} delay`)),
      ];
    },
  };

  // A number and a button that sends it as a test pattern for one speaker: an action,
  // not a setting, sent as the message that carries field.
  function pattern(channel, field, title, action, error) {
    const message = messageWithField('Speaker', field);
    const unit = panel.limits.unit('Speaker', message, field);
    const status = el('span', { class: 'unit', 'aria-live': 'polite' });
    const number = new NumberField({
      label: `${channel} ${title.toLowerCase()}${unit ? ` (${unit})` : ''}`, narrow: true, step: 1,
      range: panel.limits.range('Speaker', message, field), errorTarget: error, onEdit: () => '',
    });
    number.input.value = field === 'style' ? '1' : '1000';
    const play = el('button', { type: 'button', text: action, 'aria-label': `${action} on ${channel}`,
      onclick: async () => {
        const value = Number(number.input.value);
        const why = !Number.isInteger(value) ? `${channel} ${field}: a whole number`
          : panel.limits.check('Speaker', message, field, 0, value, `${channel} ${field}`);
        number.showError(why);
        if (why) {
          return;
        }
        const answer = await panel.api.request(panel.device, 'Speaker', message, [channel, value]);
        const problem = failure(answer);
        status.textContent = problem || 'OK';
        status.className = problem ? 'bad' : 'ok';
      } });
    return el('span', { class: 'switch' }, number.input, unit ? el('span', { class: 'unit', text: unit }) : null, play, status);
  }
  return page;
}

// The reverb mode. Its enable is not read: asking for it sets mode 0 on the platform.
export function reverbPage(panel) {
  const page = {
    id: 'reverb', title: 'Reverb', perDevice: true, needs: ['Reverb'],
    build() {
      const mode = panel.track(new Setting(panel, { feature: 'Reverb', name: 'mode',
        fields: [one('mode', 'int', 'Reverb mode')] }));
      page.settings = [mode];
      return [el('p', { class: 'note', text: 'The mode reads as what was last set through the daemon since it started; the reverb enable is not asked for, as asking sets mode 0 on the platform.' }),
        ...sliderRows(panel, mode, 'mode', ['Reverb mode'], 1)];
    },
  };
  return page;
}
