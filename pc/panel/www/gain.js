import { el, SliderRow } from './controls.js';
import { Setting, CHANNELS, one, perChannel } from './setting.js';

// A slider row per element of a setting's field, ranges and units from the profile.
export function sliderRows(panel, setting, field, labels, step = 'any') {
  return labels.map((label, i) => {
    const row = new SliderRow({
      label, step,
      unit: panel.limits.unit(setting.feature, setting.set, field, i),
      range: panel.limits.range(setting.feature, setting.set, field, i),
      onEdit: (value) => setting.edit(field, i, value),
    });
    return setting.bind(field, i, row).element;
  });
}

// Master gain, the six channel gains, fade/balance.
export function gainPage(panel) {
  const page = {
    id: 'gain', title: 'Gain', perDevice: true, needs: ['Gain'],
    build() {
      const master = panel.track(new Setting(panel, { feature: 'Gain', name: 'master',
        fields: [one('masterGain', 'float', 'Master gain')] }));
      const channel = panel.track(new Setting(panel, { feature: 'Gain', name: 'channel',
        fields: [perChannel('channelGain', 'float', 'gain')] }));
      const fade = panel.track(new Setting(panel, { feature: 'Gain', name: 'fadeBalance',
        fields: [{ name: 'fadeBalance', count: 3, type: 'int', label: (i) => FADE[i] }] }));
      page.settings = [master, channel, fade];
      return [
        ...sliderRows(panel, master, 'masterGain', ['Master gain']),
        el('h3', { text: 'Channels' }),
        ...sliderRows(panel, channel, 'channelGain', CHANNELS.map((c) => `${c} gain`)),
        el('h3', { text: 'Fade and balance' }),
        el('p', { class: 'note', text: 'The device cannot report these: they read as what was last set through the daemon since it started.' }),
        ...sliderRows(panel, fade, 'fadeBalance', FADE, 1),
      ];
    },
  };
  return page;
}

const FADE = ['Fade', 'Balance', 'Fade/balance third value'];
