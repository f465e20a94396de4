#!/usr/bin/env python3
"""Writes the seed files for uninstaller_kind_fuzz: a one-section program
followed by an NSIS uninstaller header, an NSIS installer header, and an Inno
Setup uninstaller mark."""
import os
import struct

HERE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "uninstaller_kind_fuzz")


def program(overlay=b""):
    image = bytearray(0x600)
    image[0:2] = b"MZ"
    struct.pack_into("<I", image, 0x3C, 0x80)
    image[0x80:0x84] = b"PE\0\0"
    struct.pack_into("<HH", image, 0x84, 0x8664, 1)  # machine, one section
    struct.pack_into("<H", image, 0x94, 0xF0)  # optional header size
    struct.pack_into("<II", image, 0x188 + 16, 0x200, 0x400)  # raw size, raw pointer
    return bytes(image) + overlay


def nsis(flags):
    return struct.pack("<II", flags, 0xDEADBEEF) + b"NullsoftInst" + bytes(8)


def inno():
    image = bytearray(program())
    image[0x30:0x34] = b"InUn"
    return bytes(image)


os.makedirs(HERE, exist_ok=True)
for name, data in (("nsis_uninstaller", program(nsis(1))), ("nsis_installer", program(nsis(0))),
                   ("inno_uninstaller", inno())):
    with open(os.path.join(HERE, name), "wb") as f:
        f.write(data)
