#!/usr/bin/env python3
"""Writes the program's icon: a rounded teal tile with a white check-out
arrow, in every size the shell asks for between 100 % and 200 % scaling.

    make_app_icon.py OUT.ico
"""
import struct
import sys

SIZES = (16, 20, 24, 32, 40, 48, 64, 256)
TILE = (0x00, 0x79, 0x6B)  # RGB
MARK = (0xF5, 0xF5, 0xF5)


def coverage(size, fx, fy):
    """0..1: how much of the white mark covers the point (in 0..1 units)."""
    # A box outline (the program) with an arrow leaving it upward-right.
    box = 0.22 <= fx <= 0.62 and 0.38 <= fy <= 0.78
    inner = 0.30 <= fx <= 0.54 and 0.46 <= fy <= 0.70
    shaft = abs((fx - 0.45) - (0.55 - fy)) < 0.06 and 0.45 <= fx <= 0.74 and 0.26 <= fy <= 0.55
    head = 0.58 <= fx <= 0.80 and 0.20 <= fy <= 0.42 and (fx - 0.58) + (0.42 - fy) >= 0.16
    return 1.0 if (box and not inner) or shaft or head else 0.0


def inside_tile(fx, fy):
    r = 0.18
    cx = min(max(fx, r), 1 - r)
    cy = min(max(fy, r), 1 - r)
    return (fx - cx) ** 2 + (fy - cy) ** 2 <= r * r


def pixels(size):
    rows = []
    n = 4  # samples per axis
    for y in range(size - 1, -1, -1):
        row = bytearray()
        for x in range(size):
            tile = mark = 0
            for sy in range(n):
                for sx in range(n):
                    fx = (x + (sx + 0.5) / n) / size
                    fy = (y + (sy + 0.5) / n) / size
                    if inside_tile(fx, fy):
                        tile += 1
                        mark += coverage(size, fx, fy)
            a = tile / (n * n)
            m = mark / tile if tile else 0
            rgb = [round(TILE[i] * (1 - m) + MARK[i] * m) for i in range(3)]
            row += bytes((rgb[2], rgb[1], rgb[0], round(255 * a)))
        rows.append(bytes(row))
    return b"".join(rows)


def image(size):
    data = pixels(size)
    mask = bytes(((size + 31) // 32) * 4 * size)
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, len(data) + len(mask),
                         0, 0, 0, 0)
    return header + data + mask


def main():
    if len(sys.argv) != 2:
        print("usage: make_app_icon.py OUT.ico", file=sys.stderr)
        return 2
    images = [image(s) for s in SIZES]
    out = struct.pack("<HHH", 0, 1, len(images))
    offset = 6 + 16 * len(images)
    for size, data in zip(SIZES, images):
        dim = 0 if size >= 256 else size
        out += struct.pack("<BBBBHHII", dim, dim, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    with open(sys.argv[1], "wb") as f:
        f.write(out + b"".join(images))
    return 0


if __name__ == "__main__":
    sys.exit(main())
