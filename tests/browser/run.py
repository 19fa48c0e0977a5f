"""Runs the panel's browser tests, or skips them (exit 77, which CTest reports as
skipped) when headless Chromium, its driver or Selenium is missing."""

import os
import shutil
import sys

CHROMIUM = os.environ.get("VEK_CHROMIUM", "/usr/bin/chromium")
DRIVER = os.environ.get("VEK_CHROMEDRIVER", "/usr/bin/chromedriver")

missing = [path for path in (CHROMIUM, DRIVER) if not shutil.which(path)]
try:
    import selenium  # noqa: F401
except ImportError:
    missing.append("the Python module selenium")
if missing:
    print("browser tests skipped: missing " + ", ".join(missing) +
          " (Debian: chromium chromium-driver python3-selenium)")
    sys.exit(77)

import pytest  # noqa: E402

sys.exit(pytest.main(["-q", "-p", "no:cacheprovider", "-s", *sys.argv[1:]]))
