import { failure } from './api.js';
import { CHANNELS, settingOf } from './schema.js';

export { CHANNELS };

// One setting of the schema, read and written through the server's setting routes, and
// the controls that show its fields. An edit sends only the fields and channels edited:
// the server fills in the rest as the device has them. A field of several values (not
// by channel) goes whole, from what the device last answered.
//
// Edits go out one request at a time and always the latest: while a set and its
// read-back are on their way, further edits only replace the waiting values, so a
// drag over a hundred slider steps sends a handful of requests, the last one the
// value the slider stopped at.
export class Setting {
  // name: the setting's name in the schema; fields: [{name, count, type: 'float' | 'int'
  // | 'bool', label(element)}]; key: the channel, or channel and band, it is for.
  constructor(panel, { feature, name, key = [], fields, onRead = null }) {
    const schema = settingOf(feature, name);
    Object.assign(this, { panel, feature, name, key, fields, onRead, schema });
    // The messages that serve it, for the events that tell of them and the limits.
    this.get = schema.get;
    this.set = schema.set;
    this.values = null;
    this.controls = new Map();  // "field#element" -> control
    this.waiting = new Map();   // "field#element" -> value not yet sent
    this.busy = false;
    this.reading = null;
    this.readAgain = false;
  }

  bind(field, element, control) {
    this.controls.set(`${field}#${element}`, control);
    if (this.values) {
      control.show(this.values[field][element]);
    }
    return control;
  }

  // True when an event of a set message concerns this setting.
  concerns(feature, message, args) {
    return feature === this.feature && message === this.set &&
           this.key.every((part, i) => String(args[i]) === String(part));
  }

  read() {
    if (this.reading) {
      this.readAgain = true;
      return this.reading;
    }
    this.reading = (async () => {
      do {
        this.readAgain = false;
        await this.readOnce();
      } while (this.readAgain);
      this.reading = null;
    })();
    return this.reading;
  }

  // "EqV2/band/CF/3": where the setting routes find it.
  get address() {
    return [this.feature, this.name, ...this.key].join('/');
  }

  async readOnce() {
    const answer = await this.panel.api.readSetting(this.panel.device, this.address);
    const why = failure(answer);
    if (why) {
      for (const control of this.controls.values()) {
        control.showNG(why);
      }
      this.panel.notify(`${this.schema.path}: ${why}`);
      return;
    }
    const value = answer.body.value;
    const values = {};
    for (const field of this.fields) {
      const one = this.schema.range === 'channelArray' ? CHANNELS.map((c) => value[c])
        : this.schema.fields.length === 1 ? value : value[field.name];
      values[field.name] = Array.isArray(one) ? one : [one];
    }
    this.values = values;
    for (const [at, control] of this.controls) {
      const [field, element] = at.split('#');
      if (!this.waiting.has(at)) {
        control.show(values[field][Number(element)]);
      }
    }
    if (this.onRead) {
      this.onRead(values);
    }
  }

  // An edit of one element: "" when it is on its way, or why it is refused (then
  // nothing is sent).
  edit(fieldName, element, value) {
    const field = this.fields.find((f) => f.name === fieldName);
    if (field.type === 'int' && !Number.isInteger(value)) {
      return `${field.label(element)}: a whole number`;
    }
    if (field.type !== 'bool') {
      const why = this.panel.limits.check(this.feature, this.set, fieldName, element, value,
                                          field.label(element));
      if (why) {
        return why;
      }
    }
    this.waiting.set(`${fieldName}#${element}`, value);
    this.flush();
    return '';
  }

  // The part of the value the waiting edits make, as the setting route takes it.
  edited(waiting) {
    const byField = {};
    for (const [at, value] of waiting) {
      const [field, element] = at.split('#');
      (byField[field] = byField[field] || new Map()).set(Number(element), value);
    }
    const value = {};
    for (const field of this.fields) {
      const edits = byField[field.name];
      if (!edits) {
        continue;
      }
      if (this.schema.range === 'channelArray') {
        edits.forEach((v, i) => { value[CHANNELS[i]] = v; });
      } else if (field.count === 1) {
        value[field.name] = edits.get(0);
      } else {
        value[field.name] = this.values[field.name].map((v, i) => (edits.has(i) ? edits.get(i) : v));
      }
    }
    return this.schema.fields.length === 1 && this.schema.range !== 'channelArray'
      ? value[this.fields[0].name] : value;
  }

  async flush() {
    if (this.busy || this.waiting.size === 0) {
      return;
    }
    this.busy = true;
    // A field of several values goes whole: it needs the device's values first.
    if (!this.values && this.fields.some((f) => f.count > 1) && this.schema.range !== 'channelArray') {
      await this.read();
    }
    if (this.values || this.fields.every((f) => f.count === 1) || this.schema.range === 'channelArray') {
      const sent = new Map(this.waiting);
      this.waiting.clear();
      const answer = await this.panel.api.put(`/api/devices/${this.panel.device}/settings/${this.address}`,
                                              { value: this.edited(sent) });
      const why = failure(answer);
      if (why) {
        // The server refuses what its profile does not allow, as the page does.
        const target = [...sent.keys()].find((at) => at.startsWith(`${answer.body.field}#`));
        const control = this.controls.get(target || [...sent.keys()][0]);
        if (control) {
          control.showError(why);
        }
        this.panel.notify(`${this.schema.path}: ${why}`);
      }
      await this.read();
    } else {
      this.waiting.clear();
    }
    this.busy = false;
    this.flush();
  }
}

// Field descriptions: one value, or one per channel.
export function one(name, type, label) {
  return { name, count: 1, type, label: () => label };
}

export function perChannel(name, type, label) {
  return { name, count: CHANNELS.length, type, label: (i) => `${CHANNELS[i]} ${label}` };
}
