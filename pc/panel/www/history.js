import { el } from './controls.js';

// The device's history as the server's journal keeps it, undo and redo (also Ctrl+Z and
// Ctrl+Shift+Z), named checkpoints, A/B between two of them (the B key flips), and for a
// virtual device, saving its tuning back to its document.
export function historyPage(panel) {
  let list;
  let status;
  let checkpoints;
  let sideA;
  let sideB;
  let playing = '';
  let refreshing = null;
  const page = {
    id: 'history', title: 'History', perDevice: true,
    build() {
      list = el('ol', { id: 'history-list', class: 'history' });
      status = el('p', { id: 'history-status', 'aria-live': 'polite' });
      checkpoints = el('ul', { id: 'checkpoint-list' });
      const name = el('input', { type: 'text', id: 'checkpoint-name', value: 'A', maxlength: 64,
        'aria-label': 'Checkpoint name' });
      sideA = el('select', { id: 'ab-a', 'aria-label': 'A checkpoint' });
      sideB = el('select', { id: 'ab-b', 'aria-label': 'B checkpoint' });
      const device = panel.current;
      return el('div', {},
        el('div', { class: 'tools' },
          el('button', { type: 'button', id: 'history-undo', text: 'Undo', title: 'Ctrl+Z', onclick: () => step('undo') }),
          el('button', { type: 'button', id: 'history-redo', text: 'Redo', title: 'Ctrl+Shift+Z', onclick: () => step('redo') }),
          device && device.virtual
            ? el('button', { type: 'button', id: 'history-save', text: 'Save to document', onclick: save })
            : null),
        status,
        el('h3', { text: 'Checkpoints' }),
        el('div', { class: 'tools' }, name,
          el('button', { type: 'button', id: 'checkpoint-keep', text: 'Keep checkpoint',
            onclick: () => keep(name.value.trim()) })),
        checkpoints,
        el('h3', { text: 'A/B' }),
        el('div', { class: 'tools' }, el('label', {}, 'A ', sideA), el('label', {}, 'B ', sideB),
          el('button', { type: 'button', id: 'ab-flip', text: 'Flip (B key)', onclick: flip })),
        el('p', { id: 'ab-playing', 'aria-live': 'polite' }),
        el('h3', { text: 'Changes, newest first' }),
        list);
    },
    async load() {
      await Promise.all([loadHistory(), loadCheckpoints()]);
    },
  };

  const base = () => `/api/devices/${panel.device}`;
  const say = (text, good = true) => {
    status.textContent = text;
    status.className = good ? 'ok' : 'bad';
  };

  function describe(change) {
    const where = change.channel ? `[${change.channel}${change.band >= 0 ? `/${change.band}` : ''}]` : '';
    return `${change.setting}${where}: ${JSON.stringify(change.old)} → ${JSON.stringify(change.new)}`;
  }

  async function loadHistory() {
    const answer = await panel.api.get(`${base()}/history?limit=50`);
    if (answer.status !== 200) {
      list.replaceChildren(el('li', { class: 'bad', text: answer.body.error }));
      return;
    }
    list.replaceChildren(...answer.body.steps.map((s) => el('li', { class: `step ${s.state}` },
      el('span', { class: 'step-head', text: `${new Date(s.timeMs).toLocaleTimeString()} ${s.kind} (${s.client})${s.state === 'undone' ? ', undone' : ''}` }),
      el('ul', {}, s.changes.map((c) => el('li', { text: describe(c) }))))));
  }

  async function loadCheckpoints() {
    const answer = await panel.api.get(`${base()}/checkpoints`);
    const names = answer.status === 200 ? answer.body.checkpoints.map((c) => c.name) : [];
    checkpoints.replaceChildren(...names.map((n) => el('li', {}, `${n} `,
      el('button', { type: 'button', text: `Apply ${n}`, onclick: () => restore(n) }))));
    // Each side keeps its choice; a new B is the newest checkpoint that is not A.
    const a = names.includes(sideA.value) ? sideA.value : names[0];
    const b = names.includes(sideB.value) && sideB.value !== a ? sideB.value
      : [...names].reverse().find((n) => n !== a);
    for (const [select, value] of [[sideA, a], [sideB, b]]) {
      select.replaceChildren(...names.map((n) => el('option', { value: n, text: n })));
      select.value = value || '';
    }
  }

  // After our own undo, redo or apply the other pages read again what they show: their
  // own answers are not taken from the events.
  async function reread() {
    await Promise.all(panel.settings.map((s) => s.read()));
    await loadHistory();
  }

  function report(what, answer) {
    const result = answer.body.apply;
    if (!result) {
      say(`${what}: ${answer.body.error}`, false);
      return null;
    }
    const failed = result.failures.map((f) => `${f.setting} ${f.reason}`).join('; ');
    say(`${what}: ${sentCount(result)}${failed ? `; not taken: ${failed}` : ''}` +
        `${result.error ? ` (${result.error})` : ''}`, result.status === 'OK');
    return result;
  }

  async function step(which) {
    const answer = await panel.api.post(`${base()}/${which}`, {});
    report(which === 'undo' ? 'Undo' : 'Redo', answer);
    await reread();
  }

  async function keep(name) {
    const answer = await panel.api.post(`${base()}/checkpoints`, { name });
    say(answer.status === 201 ? `Checkpoint ${name} kept` : answer.body.error, answer.status === 201);
    await loadCheckpoints();
  }

  async function restore(name) {
    const started = performance.now();
    const answer = await panel.api.post(`${base()}/checkpoints/${encodeURIComponent(name)}/apply`, {});
    const result = report(`Checkpoint ${name}`, answer);
    await reread();
    return { result, ms: Math.round(performance.now() - started) };
  }

  async function flip() {
    const next = playing === sideA.value ? sideB.value : sideA.value;
    if (!next) {
      say('Keep two checkpoints to flip between', false);
      return;
    }
    const { result, ms } = await restore(next);
    if (result) {
      playing = next;
      const label = next === sideA.value ? 'A' : 'B';
      document.getElementById('ab-playing').textContent =
        `Playing ${label} (${next}): ${sentCount(result)}, ${ms} ms`;
      document.body.dataset.playing = next;
    }
  }

  async function save() {
    const answer = await panel.api.post(`${base()}/save`, {});
    say(answer.status === 200 ? `Saved to ${answer.body.path}${answer.body.backup ? ` (the old one is ${answer.body.backup})` : ''}`
      : answer.body.error, answer.status === 200);
  }

  // A change from anywhere shows in the list, once the burst of its events is over.
  page.changed = () => {
    clearTimeout(refreshing);
    refreshing = setTimeout(() => list && loadHistory(), 300);
  };

  document.addEventListener('keydown', (event) => {
    // Keys typed into a field are the field's: its own undo, a "B" in "dB".
    const target = event.target;
    const typing = target instanceof HTMLTextAreaElement || target instanceof HTMLSelectElement ||
      target.isContentEditable ||
      (target instanceof HTMLInputElement && !['checkbox', 'radio', 'button', 'range'].includes(target.type));
    if (typing || page.tab.hidden || !list) {
      return;
    }
    if ((event.ctrlKey || event.metaKey) && event.key.toLowerCase() === 'z') {
      event.preventDefault();
      step(event.shiftKey ? 'redo' : 'undo');
    } else if (!event.ctrlKey && !event.metaKey && !event.altKey && event.key.toLowerCase() === 'b') {
      event.preventDefault();
      flip();
    }
  });
  return page;
}

// "1 request sent", "4 requests sent".
function sentCount(result) {
  const n = result.sent.length;
  return `${n} request${n === 1 ? '' : 's'} sent`;
}
