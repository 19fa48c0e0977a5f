// The server's event socket, opened again a second after it closes (the server
// restarted, or the network between blinked). onOpen runs on every (re)connection.
export class EventFeed {
  constructor(api, { onEvent, onOpen, onClose }) {
    this.api = api;
    this.handlers = { onEvent, onOpen, onClose };
    this.socket = null;
  }

  open() {
    const socket = new WebSocket(this.api.eventsUrl());
    this.socket = socket;
    socket.onopen = () => this.handlers.onOpen();
    socket.onmessage = (message) => {
      let event;
      try {
        event = JSON.parse(message.data);
      } catch {
        return;
      }
      this.handlers.onEvent(event);
    };
    socket.onclose = () => {
      if (this.socket === socket) {
        this.handlers.onClose();
        setTimeout(() => this.open(), 1000);
      }
    };
  }
}
