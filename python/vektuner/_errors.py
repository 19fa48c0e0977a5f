"""The package's exceptions. Bad arguments and bad documents raise the built-in
ValueError, before anything is sent."""


class Error(Exception):
    """Something went wrong on the link."""


class Timeout(Error, TimeoutError):
    """No answer came within the link's timeout: the device does not serve the feature,
    is busy, or is not there."""


class LineError(Error, OSError):
    """The serial line (or the pseudo-terminal of a launched daemon) failed."""


class DaemonError(Error):
    """A launched daemon did not start, did not greet, or did not end with status 0."""


class NG(Error):
    """The device answered NG: it could not do what was asked. `response` holds the
    answer."""

    def __init__(self, response):
        super().__init__(f"{response.feature} {response.message}: the device answered NG")
        self.response = response
