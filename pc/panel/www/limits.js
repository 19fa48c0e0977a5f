// The device profile the server checks every value against: the ranges and units of
// the settable fields, and what a band's six values mean. The page draws its sliders
// from it and refuses what it would refuse; without a profile nothing is limited here.
export class Limits {
  constructor(profile) {
    this.profile = profile || null;
    this.entries = (profile && profile.limits) || [];
  }

  get name() {
    return this.profile ? `${this.profile.name} (${this.profile.source})` : 'none';
  }

  // The range of one element of a field: an entry for that element before one for
  // the whole field. null when the profile gives none.
  range(feature, message, field, element = 0) {
    let whole = null;
    for (const entry of this.entries) {
      if (entry.feature !== feature || entry.message !== message || entry.field !== field) {
        continue;
      }
      if (entry.element === element) {
        return entry;
      }
      if (entry.element === undefined) {
        whole = entry;
      }
    }
    return whole;
  }

  unit(feature, message, field, element = 0) {
    const range = this.range(feature, message, field, element);
    return range ? range.unit : '';
  }

  // Why value may not be sent, or "" when it may.
  check(feature, message, field, element, value, label) {
    const range = this.range(feature, message, field, element);
    if (!range || (value >= range.min && value <= range.max)) {
      return '';
    }
    const unit = range.unit ? ` ${range.unit}` : '';
    return `${label} ${value}${unit} is outside ${range.min} to ${range.max}${unit} ` +
           `(profile ${this.profile.name}); nothing was sent`;
  }

  // Which of a band's six values (0 to 5) holds what; null without a profile.
  get band() {
    return this.profile ? this.profile.band : null;
  }
}
