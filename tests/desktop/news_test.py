#!/usr/bin/python3
"""Runs a test program on a private desktop with nothing on it.

usage: news_test.py TEST_PROGRAM
"""

import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from private_desktop import PrivateDesktop, skip_where_incomplete  # noqa: E402

if __name__ == "__main__":
    skip_where_incomplete()
    with PrivateDesktop() as desktop:
        sys.exit(subprocess.run(sys.argv[1:], env=desktop.environment, check=False).returncode)
