"""The engine as it is on a Mac: it drives PowerPoint there."""
from __future__ import annotations

import sys
from pathlib import Path
from types import SimpleNamespace

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "resources"))

from torvane_engine import process  # noqa: E402

process.sys = SimpleNamespace(platform="darwin", stdout=sys.stdout)
process.main()
