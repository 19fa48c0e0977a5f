// The page's controls. Each shows the value the device last answered, hands an edit to
// its setting (which answers "" or why it refuses the value) and shows a refusal beside
// itself. Every input carries a name a screen reader announces.

let serial = 0;
export function uid(prefix) {
  serial += 1;
  return `${prefix}-${serial}`;
}

export function el(tag, attributes = {}, ...children) {
  const node = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (value === undefined || value === null || value === false) {
      continue;
    }
    if (name === 'text') {
      node.textContent = value;
    } else if (name.startsWith('on')) {
      node.addEventListener(name.slice(2), value);
    } else {
      node.setAttribute(name, value === true ? '' : value);
    }
  }
  for (const child of children.flat()) {
    if (child !== null && child !== undefined && child !== false) {
      node.append(child);
    }
  }
  return node;
}

// Six significant digits, as the wire carries a float.
export function formatNumber(value) {
  if (typeof value !== 'number') {
    return String(value);
  }
  return Number.isInteger(value) ? String(value) : String(parseFloat(value.toPrecision(6)));
}

// A number input; onEdit(value) returns "" or why the value is refused.
export class NumberField {
  // onInput, when given, hears every valid value while it is typed, before it is edited.
  constructor({ label, range, step = 'any', onEdit, onInput = null, narrow = false,
                errorTarget = null }) {
    this.label = label;
    this.onEdit = onEdit;
    this.errorTarget = errorTarget;
    this.input = el('input', {
      type: 'number', step, 'aria-label': label, class: narrow === true ? 'narrow' : narrow || null,
      min: range ? range.min : null, max: range ? range.max : null,
    });
    this.dirty = false;
    this.input.addEventListener('input', () => {
      this.dirty = true;
      if (onInput && this.input.value !== '' && this.input.validity.valid) {
        onInput(Number(this.input.value));
      }
    });
    this.input.addEventListener('change', () => {
      this.dirty = false;
      this.edit(this.input.value);
    });
  }

  edit(text) {
    const value = text.trim() === '' ? NaN : Number(text);
    const why = Number.isFinite(value) ? this.onEdit(value) : `${this.label}: not a number`;
    this.showError(why);
    return why;
  }

  show(value) {
    this.input.classList.remove('ng');
    this.input.title = '';
    if (!(this.dirty && document.activeElement === this.input) &&
        this.input.getAttribute('aria-invalid') !== 'true') {
      this.input.value = formatNumber(value);
    }
  }

  showNG(why) {
    this.input.value = '';
    this.input.placeholder = 'NG';
    this.input.title = why;
  }

  showError(why) {
    this.input.setAttribute('aria-invalid', why ? 'true' : 'false');
    if (this.errorTarget) {
      this.errorTarget.textContent = why;
    }
  }
}

// A labelled row: slider (when the profile gives a range), number field, unit, and the
// reason for a refused value.
export class SliderRow {
  constructor({ label, unit = '', range, step = 'any', onEdit }) {
    const id = uid('num');
    this.error = el('span', { class: 'error', id: `${id}-error`, 'aria-live': 'polite' });
    this.field = new NumberField({ label: unit ? `${label} (${unit})` : label, range, step, onEdit,
                                   errorTarget: this.error });
    this.field.input.id = id;
    this.field.input.setAttribute('aria-describedby', this.error.id);
    this.dragging = false;
    this.slider = null;
    if (range) {
      this.slider = el('input', {
        type: 'range', min: range.min, max: range.max,
        // A round step of a few hundred along the range: 0.1 dB over -60 to 12 dB.
        step: step === 'any' ? 10 ** Math.floor(Math.log10((range.max - range.min) / 100)) : step,
        'aria-label': `${label} slider${unit ? ` (${unit})` : ''}`,
      });
      this.slider.addEventListener('pointerdown', () => { this.dragging = true; });
      this.slider.addEventListener('pointerup', () => { this.dragging = false; });
      this.slider.addEventListener('input', () => {
        this.field.input.value = this.slider.value;
        this.field.edit(this.slider.value);
      });
    }
    this.element = el('div', { class: range ? 'row' : 'row short' },
      el('label', { for: id, text: label }), this.slider, this.field.input,
      el('span', { class: 'unit', text: unit }), this.error);
  }

  show(value) {
    this.field.show(value);
    if (this.slider && !this.dragging) {
      this.slider.value = value;
    }
  }

  showNG(why) { this.field.showNG(why); }

  showError(why) { this.field.showError(why); }
}

// An on/off switch: a checkbox announced as a switch.
export class Switch {
  constructor({ label, onEdit, errorTarget = null }) {
    this.input = el('input', { type: 'checkbox', role: 'switch' });
    this.errorTarget = errorTarget;
    this.input.addEventListener('change', () => this.showError(onEdit(this.input.checked)));
    this.element = el('label', { class: 'switch' }, this.input, label);
  }

  // For a switch inside a table cell, named by its column and row.
  static bare({ label, onEdit, errorTarget }) {
    const made = new Switch({ label: '', onEdit, errorTarget });
    made.input.setAttribute('aria-label', label);
    made.element = made.input;
    return made;
  }

  show(value) {
    this.input.checked = value === true || value === 1;
    this.input.indeterminate = false;
  }

  showNG(why) {
    this.input.indeterminate = true;
    this.input.title = why;
  }

  showError(why) {
    if (this.errorTarget) {
      this.errorTarget.textContent = why;
    }
  }
}

// A select of named codes (a band's filter type) that keeps a code it has no name for.
export class CodeSelect {
  constructor({ label, names, onEdit, errorTarget }) {
    this.names = names;
    this.input = el('select', { 'aria-label': label });
    for (const [code, name] of Object.entries(names)) {
      this.input.append(el('option', { value: code, text: `${code} ${name}` }));
    }
    this.errorTarget = errorTarget;
    this.input.addEventListener('change', () => this.showError(onEdit(Number(this.input.value))));
    this.element = this.input;
  }

  show(value) {
    const code = String(value);
    if (![...this.input.options].some((option) => option.value === code)) {
      this.input.append(el('option', { value: code, text: `${code} (no name)` }));
    }
    this.input.value = code;
  }

  showNG(why) { this.input.title = why; }

  showError(why) { this.errorTarget.textContent = why; }
}
