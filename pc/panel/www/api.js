// The server's HTTP API as the pages use it. Every answer comes back as
// {status, body}; a refusal's body is {error, ...}. A network failure is status 0.
// Every request is named (Vek-Request-Id) with this page's prefix; the events it causes
// carry the name, so the page knows its own messages' answers from other clients' at
// once, before the HTTP answer has come.
export class Api {
  constructor() {
    this.token = sessionStorage.getItem('vek-token') || '';
    this.prefix = `panel-${Math.random().toString(36).slice(2, 10)}-`;
    this.sent = 0;
    this.own = new Set();  // the ids of our messages' requests, whose controls show their answers
    this.waiting = new Map();  // device -> messages not yet sent, with their promises' resolve
    this.reads = new Map();  // device -> setting reads not yet sent, with their promises' resolve
    this.onUnauthorized = () => {};
  }

  useToken(token) {
    this.token = token;
    sessionStorage.setItem('vek-token', token);
  }

  headers(extra = {}) {
    return this.token ? { ...extra, Authorization: `Bearer ${this.token}` } : extra;
  }

  nextId() {
    this.sent += 1;
    return `${this.prefix}${this.sent}`;
  }

  async call(method, path, body, id = this.nextId()) {
    const init = { method, headers: this.headers({ 'Vek-Request-Id': id }) };
    if (body !== undefined) {
      init.body = typeof body === 'string' ? body : JSON.stringify(body);
      init.headers['Content-Type'] = 'application/json';
    }
    let response;
    try {
      response = await fetch(path, init);
    } catch (failure) {
      return { status: 0, body: { error: `the server does not answer (${failure.message})` } };
    }
    if (response.status === 401) {
      this.onUnauthorized();
    }
    const text = await response.text();
    let parsed;
    try {
      parsed = text ? JSON.parse(text) : {};
    } catch {
      parsed = { error: text };
    }
    return { status: response.status, body: parsed };
  }

  get(path) { return this.call('GET', path); }
  post(path, body) { return this.call('POST', path, body); }
  // A write whose events are known as ours: its controls show its answer themselves.
  put(path, body) { return this.call('PUT', path, body, this.ownId()); }

  ownId() {
    const id = this.nextId();
    this.own.add(id);
    if (this.own.size > 1024) {
      this.own.delete(this.own.values().next().value);
    }
    return id;
  }

  // What is asked of a device in one turn of the page's event loop goes to the server
  // together, for the line to keep in one window: a page opening costs a few round trips
  // of the cable, not one a value. send(device, asked) answers each with its resolve.
  gather(queues, device, item, send) {
    return new Promise((resolve) => {
      let asked = queues.get(device);
      if (!asked) {
        asked = [];
        queues.set(device, asked);
        setTimeout(() => {
          queues.delete(device);
          send(device, asked);
        }, 0);
      }
      asked.push({ ...item, resolve });
    });
  }

  // One message on a device's line, in a batch with the others of its turn; its events
  // are known as ours (an apply's are not: the controls read again what it set).
  request(device, feature, message, args = []) {
    return this.gather(this.waiting, device, { message: { feature, message, args } },
                       (d, waiting) => this.send(d, waiting));
  }

  async send(device, waiting) {
    const id = this.ownId();
    if (waiting.length === 1) {
      waiting[0].resolve(await this.call('POST', `/api/devices/${device}/request`,
                                         waiting[0].message, id));
      return;
    }
    const answer = await this.call('POST', `/api/devices/${device}/batch`,
                                   { messages: waiting.map((w) => w.message) }, id);
    waiting.forEach((w, i) => {
      if (answer.status !== 200) {
        w.resolve(answer);  // the batch as a whole: no such device, the line is down
      } else {
        w.resolve(answer.body.answers[i]);
      }
    });
  }

  // A setting read from its route, by its address below /settings/ ("EqV2/band/CF/3"),
  // together with the other reads of its turn.
  readSetting(device, address) {
    return this.gather(this.reads, device, { address }, (d, reads) => this.readTogether(d, reads));
  }

  async readTogether(device, reads) {
    const base = `/api/devices/${device}/settings`;
    if (reads.length === 1) {
      reads[0].resolve(await this.get(`${base}/${reads[0].address}`));
      return;
    }
    const answer = await this.post(base, { settings: reads.map((r) => r.address) });
    reads.forEach((r, i) => r.resolve(answer.status === 200 ? answer.body.answers[i] : answer));
  }

  isOwn(event) { return this.own.has(event.requestId); }

  eventsUrl() {
    const scheme = location.protocol === 'https:' ? 'wss' : 'ws';
    const token = this.token ? `?access_token=${encodeURIComponent(this.token)}` : '';
    return `${scheme}://${location.host}/api/events${token}`;
  }
}

// Why an answer is not a device's answer, or "" when it is.
export function failure(answer) {
  if (answer.status === 200) {
    return answer.body.status === 'NG' ? 'the device answered NG' : '';
  }
  return answer.body.error || `HTTP ${answer.status}`;
}
