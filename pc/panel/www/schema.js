// What the server's schema (GET /api/schema) says of the settings the pages show: their
// channels, bands, fields and the messages that serve them. The pages name settings by
// feature and name; the messages are the schema's to know, read once at start.
export let CHANNELS = [];
let settings = new Map();
let messages = [];

export function useSchema(schema) {
  CHANNELS = schema.channels;
  settings = new Map(schema.settings.map((s) => [`${s.feature}.${s.name}`, s]));
  messages = schema.messages;
}

// The schema's entry of a setting: {get, set, range, fields, bands, ...}, or null.
export function settingOf(feature, name) {
  return settings.get(`${feature}.${name}`) || null;
}

// The name of the feature's message whose fields include field: for the actions that
// are no setting (a speaker's test patterns).
export function messageWithField(feature, field) {
  const found = messages.find((m) => m.feature === feature && m.fields.some((f) => f.name === field));
  return found ? found.name : '';
}
