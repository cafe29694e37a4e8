#!/usr/bin/env python3
"""Draws the two arrow icons of the rights editor's move buttons.

    tools/make-rights-arrows.py [OUTDIR]     (default: resources/icons)

Writes resultset_next.png and resultset_previous.png at 16 px and their @2x
variants at 32 px: a blue arrow head with a darker rim, anti-aliased by
supersampling. Only the standard library is used, and the output is
byte-for-byte reproducible, so the committed PNGs can be checked by rerunning.
"""
import os
import struct
import sys
import zlib

FILL_TOP = (0x79, 0xB0, 0xEA)
FILL_BOTTOM = (0x34, 0x70, 0xBC)
RIM = (0x25, 0x52, 0x86)
SUBSAMPLES = 8


def arrow(size, pointing_right):
    """The arrow head as a triangle in pixel coordinates of a size x size icon."""
    s = size / 16.0
    points = [(5.0, 2.5), (12.5, 8.0), (5.0, 13.5)]
    if not pointing_right:
        points = [(16.0 - x, y) for x, y in points]
    return [(x * s, y * s) for x, y in points]


def edge_distance(px, py, a, b):
    """Signed distance of a point to the line through a and b (positive inside
    for a clockwise triangle in screen coordinates)."""
    (ax, ay), (bx, by) = a, b
    dx, dy = bx - ax, by - ay
    length = (dx * dx + dy * dy) ** 0.5
    return ((px - ax) * dy - (py - ay) * dx) / length * -1.0


def render(size, pointing_right):
    tri = arrow(size, pointing_right)
    edges = [(tri[i], tri[(i + 1) % 3]) for i in range(3)]
    # Orientation: make the inside positive.
    cx = sum(x for x, _ in tri) / 3
    cy = sum(y for _, y in tri) / 3
    sign = 1.0 if all(edge_distance(cx, cy, a, b) > 0 for a, b in edges) else -1.0
    rim = size / 16.0  # rim width in pixels
    top = min(y for _, y in tri)
    bottom = max(y for _, y in tri)
    rows = []
    for y in range(size):
        row = bytearray()
        for x in range(size):
            rim_hits = fill_hits = 0
            fill_y = 0.0
            for sy in range(SUBSAMPLES):
                for sx in range(SUBSAMPLES):
                    px = x + (sx + 0.5) / SUBSAMPLES
                    py = y + (sy + 0.5) / SUBSAMPLES
                    inside = min(sign * edge_distance(px, py, a, b) for a, b in edges)
                    if inside < 0:
                        continue
                    if inside < rim:
                        rim_hits += 1
                    else:
                        fill_hits += 1
                        fill_y += py
            hits = rim_hits + fill_hits
            if hits == 0:
                row += bytes((0, 0, 0, 0))
                continue
            t = 0.0
            if fill_hits:
                t = min(max((fill_y / fill_hits - top) / (bottom - top), 0.0), 1.0)
            fill = [FILL_TOP[i] + (FILL_BOTTOM[i] - FILL_TOP[i]) * t for i in range(3)]
            colour = [(RIM[i] * rim_hits + fill[i] * fill_hits) / hits for i in range(3)]
            alpha = 255.0 * hits / (SUBSAMPLES * SUBSAMPLES)
            row += bytes(int(round(c)) for c in colour) + bytes((int(round(alpha)),))
        rows.append(bytes(row))
    return rows


def write_png(path, size, rows):
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    raw = b"".join(b"\x00" + row for row in rows)
    png = b"\x89PNG\r\n\x1a\n"
    png += chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0))
    png += chunk(b"IDAT", zlib.compress(raw, 9))
    png += chunk(b"IEND", b"")
    with open(path, "wb") as out:
        out.write(png)


def main():
    outdir = sys.argv[1] if len(sys.argv) > 1 else os.path.join(
        os.path.dirname(os.path.abspath(__file__)), "..", "resources", "icons")
    for name, right in (("resultset_next", True), ("resultset_previous", False)):
        for size, suffix in ((16, ""), (32, "@2x")):
            write_png(os.path.join(outdir, name + suffix + ".png"), size, render(size, right))


if __name__ == "__main__":
    main()
