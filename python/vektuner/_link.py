"""Link, launch() and diff(): the master library's session, launcher and tuning documents
seen from Python."""

import json
import os
from typing import Any, NamedTuple

from . import _config, _vektuner
from ._errors import NG, DaemonError
from ._helpers import FEATURES
from ._response import Response


class Traffic(NamedTuple):
    """What went over a link since it was opened."""
    requests: int
    bytes_sent: int
    bytes_received: int


class Difference(NamedTuple):
    """One value two tunings hold differently: `setting` names it
    ("EqV2.band[CF/2]"), `a` and `b` are the values (None where a side does not hold
    it); str() gives the line vek_master diff prints."""
    setting: str
    a: Any
    b: Any
    text: str

    def __str__(self):
        return self.text


def _milliseconds(timeout):
    if not isinstance(timeout, (int, float)) or not 0 < timeout <= 3600:
        raise ValueError(f"timeout {timeout!r} is not a number of seconds above 0 (at most 3600)")
    return max(1, round(timeout * 1000))


def _document(document):
    """A document, or the JSON file a path names; checked."""
    if isinstance(document, (str, os.PathLike)):
        path = os.fspath(document)
        try:
            with open(path, encoding="utf-8") as f:
                document = json.load(f)
        except json.JSONDecodeError as e:
            raise ValueError(f"{path}: {e}") from None
    problem = _vektuner.check(document)
    if problem:
        raise ValueError(problem)
    return document


class Link:
    """One line to a vek_tuner device: `Link("/dev/ttyUSB0")` opens a serial line (raw
    8N1 at baud_rate); `Link(url="http://127.0.0.1:8741", device_index=0)` uses device 0
    of a running `vek_master serve` (token: its token, when it asks for one), beside
    every other client of that server; `launch()` gives one to a daemon on a
    pseudo-terminal. A context
    manager; close() ends it. One request is outstanding at a time, except in
    request_many(), snapshot(), apply() and reading settings, which keep up to window
    (default 32, 1 to 64) on the line at once; threads may share a link (their requests
    take turns), and while a request waits for its answer other threads run. timeout is
    how long to wait for an answer, in seconds, counted from its latest byte while a
    long one arrives.

    The features' typed helpers are attributes: link.common, link.gain, link.reverb,
    link.eq, link.eqv2, link.hfe, link.vb, link.speaker.

    Every value sent is checked against the device profile in use (use_profile()) first:
    one outside its range raises ValueError naming it and the range, and nothing is
    sent; force=True sends it anyway, with a UserWarning that says so (not with url:
    the server checks against its own profile). A document's values are always checked."""

    def __init__(self, device="/dev/ttyUSB0", baud_rate=115200, timeout=3.0, *, url=None,
                 device_index=0, token=None, force=False, window=None):
        # Everything goes through the native session: a line of our own, or a device
        # that a running `vek_master serve` owns (url), which then sets the line's speed
        # and answers within its own --timeout.
        if url is not None and force:
            raise ValueError("force does not go with url: the server checks every value "
                             "against its own profile")
        if url is not None and window is not None:
            raise ValueError("window does not go with url: the server keeps its own "
                             "(vek_master serve --window)")
        self._session = _vektuner.Session()
        if window is not None:
            self._session.set_window(window)
        if url is None:
            self._session.open(os.fspath(device), baud_rate, _milliseconds(timeout))
        else:
            self._session.connect(url, device_index, token or "")
        self._start(force)

    def _start(self, force):
        self._session.force(bool(force))
        self.daemon_log = None
        self._closed = False
        for feature, helpers in FEATURES.items():
            setattr(self, feature.lower(), helpers(self))

    @classmethod
    def _launched(cls, daemon_path, args, environment, log, timeout, force, window):
        link = cls.__new__(cls)
        link._session = _vektuner.Session()
        if window is not None:
            link._session.set_window(window)
        used = link._session.launch(daemon_path, list(args), log or "", environment,
                                    _milliseconds(timeout))
        link._start(force)
        link.daemon_log = used
        return link

    @property
    def device(self):
        """The line's path (a pseudo-terminal's for a launched daemon)."""
        return self._session.device

    @property
    def closed(self):
        return self._closed

    @property
    def traffic(self):
        return Traffic(*self._session.traffic())

    @property
    def features(self):
        """The features the device serves (Common Feature)."""
        return self.common.feature()

    def request(self, feature, message, *args, output=None) -> Response:
        """Sends any message: request("Gain", "SetChannel", 0, 0, -3, -3, 1.5, 0). The
        arguments are the request's fields in wire order, typed (an int for an int
        field, a number for a float, a bool, a str); a field of several values takes a
        sequence or that many arguments, a list field a sequence or the rest. Raw data
        comes back in the response, or is streamed to the file output (any size; the
        file is removed again when the answer does not come whole).

        Returns the Response whether the device answered OK or NG. Raises ValueError,
        naming the fields expected, before anything is sent; Timeout when no answer
        comes; LineError when the line fails."""
        reply = self._session.request(feature, message, list(args),
                                      "" if output is None else os.fspath(output))
        return Response(*reply)

    def request_many(self, requests) -> list:
        """Sends several messages, each a sequence (feature, message, argument...), and
        returns their Responses in order: request_many([("Gain", "GetMaster"),
        ("EqV2", "GetBandConfig", "CF", 3)]). On a line of its own the link keeps up to
        window of them on the line at once (a slow cable's bridges then cost once, not
        once a request); through a server they go one after another, and the server
        keeps them on its line together with other clients' requests.

        Every argument is checked first (ValueError, nothing sent). Raises Timeout or
        LineError for the first that went unanswered, once all are done."""
        replies = self._session.request_many([list(request) for request in requests])
        return [Response(*reply) for reply in replies]

    def _read(self, feature, name, channel, band):
        reply, value = self._session.read(feature, name, channel, band)
        if reply[2] != "OK":
            raise NG(Response(*reply))
        return value

    def _write(self, feature, name, channel, band, value):
        reply = self._session.write(feature, name, channel, band, value)
        if reply[2] != "OK":
            raise NG(Response(*reply))

    def snapshot(self) -> dict:
        """Every value the device reports, as a tuning document (vek_master snapshot's
        format, "vek-tuning/1"). A value answered NG is {"missing": "NG"}."""
        return self._session.snapshot()

    def apply(self, document, dry_run=False, bypass=False) -> dict:
        """Brings the device to a tuning document (a dict, or the path of a JSON file),
        as vek_master apply: checks it (ValueError, naming the first bad entry, before
        anything is sent), reads the device, sets only what differs and reads it back.
        dry_run sets nothing; bypass holds the audio bypass on meanwhile. Returns
        {"status": "OK"|"NG", "requests": [...], "changes": [{"setting", "from", "to"}],
        "failures": [{"setting", "reason"}]} and "error" when it had to stop."""
        return self._session.apply(_document(document), dry_run, bypass)

    def close(self):
        """Closes the line; a launched daemon is stopped with SIGUSR1. Raises DaemonError
        when that daemon did not end with status 0."""
        if self._closed:
            return
        self._closed = True
        clean, report = self._session.close()
        if not clean:
            raise DaemonError(f"{report} (daemon log: {self.daemon_log})")

    def __enter__(self):
        return self

    def __exit__(self, kind, error, traceback):
        try:
            self.close()
        except DaemonError as daemon:
            # The error that ended the block is the one to see; the daemon's goes with it.
            if error is None:
                raise
            if hasattr(error, "add_note"):
                error.add_note(str(daemon))

    def __repr__(self):
        return f"<vektuner.Link {self.device}{' closed' if self._closed else ''}>"


def default_daemon():
    """The vek_tuner launch() runs by default: the one built beside this package in its
    build tree, or, installed, the one in the install prefix's bin folder."""
    here = os.path.dirname(os.path.realpath(__file__))
    if _config.BUILD_DAEMON and here == os.path.realpath(_config.BUILD_PACKAGE):
        return _config.BUILD_DAEMON
    return _config.INSTALLED_DAEMON


def launch(daemon_path=None, args=(), sim=None, timeout=3.0, log=None, force=False,
           window=None, document=None) -> Link:
    """Starts vek_tuner on a pseudo-terminal with the simulated audio platform and gives
    a Link to it; use it as a context manager (closing it stops the daemon with SIGUSR1
    and raises DaemonError if it did not end with status 0).

    daemon_path: the daemon (default: default_daemon()); args: its options, as
    ("--reverb", "--eqMode=1"); sim: AUDIO_SETTING_SIM items for the simulator, a string
    ("absent=vb;fail=getBypass:-5") or a sequence of items; log: the file its output is
    appended to (default: a new $TMPDIR/vek_tuner-XXXXXX.log, in link.daemon_log); force:
    as for Link. document: a tuning document (a dict, or the path of a JSON file) the
    device is brought to before it is handed over, a device made from the document as
    vek_master --virtual=FILE makes one (the daemon options it needs are added to args);
    DaemonError when it does not take the tuning. The file itself is not changed."""
    if document is not None:
        document = _document(document)
        args = tuple(args) + tuple(_vektuner.virtual_options(document))
    environment = []
    if sim is not None:
        items = sim if isinstance(sim, str) else ";".join(sim)
        environment.append("AUDIO_SETTING_SIM=" + items)
    path = os.fspath(daemon_path) if daemon_path is not None else default_daemon()
    link = Link._launched(path, args, environment, None if log is None else os.fspath(log),
                          timeout, force, window)
    if document is not None:
        result = link.apply(document)
        if result["status"] != "OK":
            link.close()
            raise DaemonError("the simulated device did not take the tuning: " +
                              result.get("error", str(result["failures"])))
    return link


def use_profile(path=None) -> str:
    """Makes the device profile in the JSON file path the one every check in this
    process uses (every link's values, and documents); None goes back to the built-in
    profile. Returns the profile's name. Raises OSError when the file cannot be read,
    ValueError naming the bad entry when it is not a profile; the profile in use then
    stays. The format is vek_master's --profile=FILE (README, "Device profile and safety limits")."""
    if path is not None:
        path = os.fspath(path)
        with open(path, encoding="utf-8"):
            pass
    return _vektuner.use_profile(path)


def diff(a, b) -> list:
    """The values two tunings hold differently, in settings-table order. Each of a and b
    is a tuning document (a dict, or the path of a JSON file) or a Link, whose device is
    read for what the other side holds (everything when both are links). Floats compare
    by their wire text, so a value that round-trips is equal. An empty list: equal."""
    sides = [a, b]
    settings = [None, None]
    for i, side in enumerate(sides):
        if not isinstance(side, Link):
            settings[i] = _document(side)["settings"]
    for i, side in enumerate(sides):
        if isinstance(side, Link):
            settings[i] = side._session.read_settings(settings[1 - i])
    return [Difference(*d) for d in _vektuner.diff(settings[0], settings[1])]
