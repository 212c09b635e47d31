#!/usr/bin/python3
"""Torvane engine: runs a presentation and answers HTTP on the loopback address.

Started by the helper as "python3 torvane.py 8484". The interface is described in
docs/engine-api.md; the engine itself is the package torvane_engine beside this file.
"""
import sys

# The program's folder is signed and installed as it is: nothing is ever written into it.
sys.dont_write_bytecode = True

from torvane_engine.process import main  # noqa: E402

if __name__ == "__main__":
    main()
