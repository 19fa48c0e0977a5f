// The server's HTTP API as the pages use it. Every answer comes back as
// {status, body}; a refusal's body is {error, ...}. A network failure is status 0.
export class Api {
  constructor() {
    this.token = sessionStorage.getItem('vek-token') || '';
    this.own = new Set();  // "device:self" of the answers to our own requests
    this.onUnauthorized = () => {};
  }

  useToken(token) {
    this.token = token;
    sessionStorage.setItem('vek-token', token);
  }

  headers(extra = {}) {
    return this.token ? { ...extra, Authorization: `Bearer ${this.token}` } : extra;
  }

  async call(method, path, body) {
    const init = { method, headers: this.headers() };
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

  // One message on a device's line; notes the answer's number so that its event is
  // known as ours.
  async request(device, feature, message, args = []) {
    const answer = await this.post(`/api/devices/${device}/request`, { feature, message, args });
    if (answer.status === 200 && answer.body.self !== undefined) {
      this.own.add(`${device}:${answer.body.self}`);
      if (this.own.size > 1024) {
        this.own.delete(this.own.values().next().value);
      }
    }
    return answer;
  }

  isOwn(device, self) { return this.own.has(`${device}:${self}`); }

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
