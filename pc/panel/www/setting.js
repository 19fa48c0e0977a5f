import { failure } from './api.js';

// One set message with the get message that reads it back, and the controls that show
// its fields. It keeps what the device last answered for those fields, no more: a set
// message carries all of them, so changing one channel's gain sends the other five as
// the device has them.
//
// Edits go out one request at a time and always the latest: while a set and its
// read-back are on their way, further edits only replace the waiting values, so a
// drag over a hundred slider steps sends a handful of requests, the last one the
// value the slider stopped at.
export class Setting {
  // fields: [{name, count, type: 'float' | 'int' | 'bool', label(element)}]; key: the
  // arguments that pick what is read and set (a channel, a band).
  constructor(panel, { feature, get, set, key = [], fields, onRead = null }) {
    Object.assign(this, { panel, feature, get, set, key, fields, onRead });
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

  async readOnce() {
    const answer = await this.panel.api.request(this.panel.device, this.feature, this.get, this.key);
    const why = failure(answer);
    if (why) {
      for (const control of this.controls.values()) {
        control.showNG(why);
      }
      this.panel.notify(`${this.feature} ${this.get}: ${why}`);
      return;
    }
    const values = {};
    for (const field of this.fields) {
      const value = answer.body.fields[field.name];
      values[field.name] = Array.isArray(value) ? value : [value];
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

  async flush() {
    if (this.busy || this.waiting.size === 0) {
      return;
    }
    this.busy = true;
    if (!this.values) {
      await this.read();
    }
    if (this.values) {
      const values = {};
      for (const field of this.fields) {
        values[field.name] = [...this.values[field.name]];
      }
      for (const [at, value] of this.waiting) {
        const [field, element] = at.split('#');
        values[field][Number(element)] = value;
      }
      const sent = new Map(this.waiting);
      this.waiting.clear();
      const args = [...this.key, ...this.fields.flatMap((field) => values[field.name])];
      const answer = await this.panel.api.request(this.panel.device, this.feature, this.set, args);
      const why = failure(answer);
      if (why) {
        // The server refuses what its profile does not allow, as the page does.
        const target = [...sent.keys()].find((at) => at.startsWith(`${answer.body.field}#`));
        const control = this.controls.get(target || [...sent.keys()][0]);
        if (control) {
          control.showError(why);
        }
        this.panel.notify(`${this.feature} ${this.set}: ${why}`);
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
export const CHANNELS = ['LF', 'RF', 'LS', 'RS', 'CF', 'L1'];

export function one(name, type, label) {
  return { name, count: 1, type, label: () => label };
}

export function perChannel(name, type, label) {
  return { name, count: 6, type, label: (i) => `${CHANNELS[i]} ${label}` };
}
