#!/usr/bin/python3
"""Makes the application's icon: make_icon.py PICTURE.svg OUT.icns

Draws the picture in every size that the system asks for (with rsvg-convert) and packs the PNGs
into one file of the system's container: "icns", the length of everything, then for each picture its
type, its length with these eight bytes, and its bytes; numbers are big-endian.
"""

import re
import struct
import subprocess
import sys
from pathlib import Path

# Type → side in pixels. Those of one size serve different densities of the screen.
SIZES = {b"ic11": 32, b"ic12": 64, b"ic07": 128, b"ic13": 256, b"ic08": 256, b"ic14": 512,
         b"ic09": 512, b"ic10": 1024}
BODY = 824 / 1024  # how much of its square an icon's plate fills on a Mac, the rest being air


def with_air(svg):
    """The picture with room around its plate, which is its first rectangle."""
    view = [float(x) for x in re.search(r'viewBox="([^"]+)"', svg)[1].split()]
    plate = float(re.search(r'<rect [^>]*\bwidth="([\d.]+)"', svg)[1])
    air = (plate / BODY - view[2]) / 2
    wider = f"{view[0] - air:.4f} {view[1] - air:.4f} {view[2] + 2 * air:.4f} {view[3] + 2 * air:.4f}"
    return re.sub(r'viewBox="[^"]+"', f'viewBox="{wider}"', svg, count=1)


def drawn(svg, side):
    return subprocess.run(["rsvg-convert", "-w", str(side), "-h", str(side)], input=svg.encode(),
                          check=True, capture_output=True).stdout


def packed(pictures):
    body = b"".join(kind + struct.pack(">I", len(png) + 8) + png for kind, png in pictures)
    return b"icns" + struct.pack(">I", len(body) + 8) + body


def main(picture, out):
    svg = with_air(Path(picture).read_text())
    drawings = {side: drawn(svg, side) for side in set(SIZES.values())}
    Path(out).write_bytes(packed([(kind, drawings[side]) for kind, side in SIZES.items()]))


if __name__ == "__main__":
    main(*sys.argv[1:])
