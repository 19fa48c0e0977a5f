import { Api } from './api.js';
import { EventFeed } from './events.js';
import { Limits } from './limits.js';
import { useSchema } from './schema.js';
import { el } from './controls.js';
import { devicesPage } from './devices.js';
import { commonPage } from './common.js';
import { gainPage } from './gain.js';
import { equaliserPage } from './equaliser.js';
import { hfePage, vbPage } from './effects.js';
import { reverbPage, speakerPage } from './speaker.js';
import { tuningPage } from './tuning.js';
import { trafficPage } from './traffic.js';
import { historyPage } from './history.js';

// The panel: the tabs, the device the per-device pages show, the line's state, and the
// events that keep every control at what the device last answered.
class Panel {
  constructor() {
    this.api = new Api();
    this.limits = new Limits(null);
    this.devices = [];
    this.device = 0;
    this.tuned = new Set([0]);
    this.settings = [];
    this.offline = '';
    this.loads = 0;
    this.lastRequest = new Map();
    this.pages = [devicesPage(this), commonPage(this), gainPage(this), equaliserPage(this),
      hfePage(this), vbPage(this), reverbPage(this), speakerPage(this), tuningPage(this),
      historyPage(this), trafficPage(this)];
    this.tabs = document.getElementById('tabs');
    this.picker = document.getElementById('device');
    this.picker.addEventListener('change', () => this.open(Number(this.picker.value)));
    this.api.onUnauthorized = () => { document.getElementById('token-box').hidden = false; };
    const useToken = () => {
      this.api.useToken(document.getElementById('token').value.trim());
      location.reload();
    };
    document.getElementById('token-use').addEventListener('click', useToken);
    document.getElementById('token').addEventListener('keydown', (event) => {
      if (event.key === 'Enter') {
        useToken();
      }
    });
    this.buildTabs();
  }

  buildTabs() {
    const main = document.getElementById('pages');
    for (const page of this.pages) {
      page.tab = el('button', {
        type: 'button', role: 'tab', id: `tab-${page.id}`, 'aria-controls': `page-${page.id}`,
        'aria-selected': 'false', tabindex: '-1', text: page.title,
        onclick: () => this.show(page),
      });
      page.section = el('section', { id: `page-${page.id}`, role: 'tabpanel',
                                     'aria-labelledby': `tab-${page.id}`, hidden: true });
      this.tabs.append(page.tab);
      main.append(page.section);
    }
    this.tabs.addEventListener('keydown', (event) => {
      const shown = this.pages.filter((page) => !page.tab.hidden);
      const at = shown.findIndex((page) => page.tab === document.activeElement);
      const to = { ArrowRight: at + 1, ArrowLeft: at - 1, Home: 0, End: shown.length - 1 }[event.key];
      if (at >= 0 && to !== undefined) {
        const next = shown[(to + shown.length) % shown.length];
        this.show(next);
        next.tab.focus();
        event.preventDefault();
      }
    });
    const wanted = this.pages.find((page) => `#${page.id}` === location.hash);
    this.show(wanted || this.pages[0]);
  }

  show(page) {
    for (const each of this.pages) {
      const selected = each === page;
      each.tab.setAttribute('aria-selected', String(selected));
      each.tab.tabIndex = selected ? 0 : -1;
      each.section.hidden = !selected;
    }
    history.replaceState(null, '', `#${page.id}`);
  }

  page(id) {
    return this.pages.find((page) => page.id === id);
  }

  get current() {
    return this.devices[this.device] || null;
  }

  get features() {
    const device = this.current;
    return device && device.features ? device.features : [];
  }

  notify(text) {
    document.getElementById('notice').textContent = text;
  }

  // A setting the events keep up to date; pages make theirs while they build.
  track(setting) {
    this.settings.push(setting);
    return setting;
  }

  async start() {
    const [profile, devices, schema] = await Promise.all([this.api.get('/api/profile'),
      this.api.get('/api/devices'), this.api.get('/api/schema')]);
    if (devices.status === 401) {
      // The token box is shown; the page starts again once it is given.
      this.setOffline('This server needs a token.');
      return;
    }
    if (profile.status === 200) {
      this.limits = new Limits(profile.body);
    }
    if (schema.status === 200) {
      useSchema(schema.body);
    }
    document.getElementById('profile-name').textContent = `Profile: ${this.limits.name}`;
    this.devices = devices.status === 200 ? devices.body.devices : [];
    this.fillPicker();
    this.feed = new EventFeed(this.api, {
      onEvent: (event) => this.onEvent(event),
      onOpen: () => this.onFeedOpen(),
      onClose: () => this.setOffline('The server does not answer; trying again every second.'),
    });
    this.feed.open();
    await this.open(this.device);
  }

  fillPicker() {
    this.picker.replaceChildren(...this.devices.map((device) => el('option', {
      value: device.index, text: `${device.index}: ${device.path}`,
    })));
    this.picker.value = String(this.device);
    this.pages[0].refresh();
    this.page('tuning').refresh();
  }

  // Builds the per-device pages for a device and reads every value they show.
  async open(index) {
    this.device = index;
    this.picker.value = String(index);
    this.settings = [];
    const device = this.current;
    const state = device ? device.state : 'absent';
    this.showLineState();
    for (const page of this.pages) {
      if (page.perDevice) {
        page.tab.hidden = Boolean(page.needs) && !page.needs.some((f) => this.features.includes(f));
        page.section.replaceChildren(el('h2', { text: page.title }));
      }
    }
    const shown = this.pages.find((page) => !page.section.hidden);
    if (shown && shown.tab.hidden) {
      this.show(this.pages[0]);
    }
    if (!device || state !== 'connected') {
      this.setOffline(device ? `${device.path} is ${state}${device.reason ? ` (${device.reason})` : ''}; ` +
                               'the controls come back when the device answers.' : 'No device.');
      return;
    }
    this.setOffline('');
    const pages = this.pages.filter((page) => page.perDevice && !page.tab.hidden);
    for (const page of pages) {
      page.section.append(el('fieldset', { class: 'device-controls' }, page.build()));
    }
    // A page without a load of its own shows its settings' values.
    const load = (page) => (page.load ? page.load() : Promise.all(page.settings.map((s) => s.read())));
    // The page in view first: its values show after its own reads, not after every page's.
    const inView = pages.find((page) => !page.section.hidden);
    if (inView) {
      await load(inView);
    }
    window.vekPageReady = window.vekPageReady || performance.now();
    await Promise.all(pages.filter((page) => page !== inView).map(load));
    this.loads += 1;
    document.body.dataset.loads = String(this.loads);
    window.vekPanelReady = window.vekPanelReady || performance.now();
  }

  showLineState() {
    const device = this.current;
    document.getElementById('line-state').textContent = device
      ? `${device.path}: ${device.state}${device.version ? ` (${device.version})` : ''}` : 'no device';
  }

  setOffline(why) {
    this.offline = why;
    const banner = document.getElementById('banner');
    banner.textContent = why;
    banner.hidden = !why;
    for (const fieldset of document.querySelectorAll('fieldset.device-controls')) {
      fieldset.disabled = Boolean(why);
    }
  }

  async onFeedOpen() {
    // Reconnected to the server: the line may have changed meanwhile.
    const devices = await this.api.get('/api/devices');
    if (devices.status !== 200) {
      return;
    }
    const was = this.offline;
    this.devices = devices.body.devices;
    this.fillPicker();
    if (was) {
      await this.open(this.device);
    }
  }

  onEvent(event) {
    this.page('traffic').add(event);
    if (event.type === 'state') {
      this.onState(event);
    } else if (event.type === 'request') {
      this.lastRequest.set(event.device, event.request);
    } else if (event.type === 'response' && event.reply && event.reply.status === 'OK') {
      this.onAnswer(event);
      if (event.device === this.device && event.reply.message.startsWith('Set')) {
        this.page('history').changed();
      }
    }
  }

  onState(event) {
    const known = this.devices[event.device];
    if (!known) {
      return;
    }
    const changed = known.state !== event.state ||
                    JSON.stringify(known.features) !== JSON.stringify(event.features);
    Object.assign(known, { state: event.state, version: event.version, features: event.features,
                           reason: event.reason });
    this.pages[0].refresh();
    if (event.device !== this.device) {
      return;
    }
    this.showLineState();
    if (event.state !== 'connected') {
      // The controls stay, greyed, showing what the device last answered.
      this.setOffline(`${event.path} is ${event.state}${event.reason ? ` (${event.reason})` : ''}; ` +
                      'the controls come back when the device answers.');
    } else if (changed || this.offline) {
      this.open(this.device);
    }
  }

  // A message answered on the line from another client (or an apply): read again what
  // it set, if it is a setting's set message. Our own answers are known by the request
  // id their events carry.
  onAnswer(event) {
    const { feature, message } = event.reply;
    if (event.device !== this.device || this.api.isOwn(event)) {
      return;
    }
    const name = message.replace(/Response$/, '');
    const request = this.lastRequest.get(event.device);
    const args = request && request.feature === feature && request.message === name ? request.args : [];
    for (const setting of this.settings) {
      if (setting.concerns(feature, name, args)) {
        setting.read();
      }
    }
  }
}

const panel = new Panel();
window.vekPanel = panel;
panel.start();
