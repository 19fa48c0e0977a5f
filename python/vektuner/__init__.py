"""vektuner: tuning scripts for vek_tuner devices, on the same codec as vek_master.

    import vektuner
    with vektuner.launch() as link:           # or vektuner.Link("/dev/ttyUSB0")
        link.gain.master = -10.0
        print(link.eqv2.band("CF", 7))
        reference = link.snapshot()

Link opens a line, launch() starts a simulated device; request() sends any message,
the typed helpers (link.gain, link.eqv2, ...) read and set settings by name; snapshot(),
apply() and diff() work with vek_master's tuning documents."""

from ._config import VERSION as __version__
from ._errors import NG, DaemonError, Error, LineError, Timeout
from ._helpers import CHANNELS, FEATURES, STRUCTURES
from ._link import Difference, Link, Traffic, default_daemon, diff, launch, use_profile
from ._response import Response
from ._vektuner import max_bands as MAX_BANDS

globals().update(FEATURES)
globals().update(STRUCTURES)

__all__ = ["Link", "launch", "diff", "use_profile", "default_daemon", "Response", "Difference", "Traffic",
           "Error", "Timeout", "LineError", "DaemonError", "NG", "CHANNELS", "MAX_BANDS",
           *FEATURES, *STRUCTURES]
