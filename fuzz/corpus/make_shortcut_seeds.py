#!/usr/bin/env python3
"""Writes the seed links for shortcut_fuzz: small, valid link headers."""
import os
import struct

HERE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "shortcut_fuzz")


def link(info_flags, base_path=b"", id_list=None, network=False):
    header = bytearray(76)
    struct.pack_into("<I", header, 0, 76)
    struct.pack_into("<I", header, 20, 1 if id_list is not None else 0)
    out = bytes(header)
    if id_list is not None:
        out += struct.pack("<H", len(id_list)) + id_list
    volume = struct.pack("<IIII", 0x11, 3, 0x12345678, 0x10) + b"\0"
    base = 28 + len(volume)
    body = volume + base_path + b"\0"
    net = 0
    if network:
        net = 28 + len(body)
        body += struct.pack("<IIIII", 0x18, 2, 0x14, 0, 0) + b"\\\\srv\\share\0"
    suffix = 28 + len(body)
    body += b"\0"
    head = struct.pack("<IIIIIII", 28 + len(body), 28, info_flags, 28, base, net, suffix)
    return out + head + body


SEEDS = {
    "local": link(1, b"C:\\Program Files\\App\\app.exe"),
    "local_idlist": link(1, b"C:\\Program Files\\App\\app.exe", id_list=b"\x14\x00" + bytes(18)),
    "local_ansi": link(1, b"C:\\Caf\xe9\\\x80.exe"),
    "network": link(2, network=True),
    "both": link(3, b"C:\\Windows\\regedit.exe", id_list=bytes(8), network=True),
}

if __name__ == "__main__":
    os.makedirs(HERE, exist_ok=True)
    for name, data in SEEDS.items():
        with open(os.path.join(HERE, name + ".lnk"), "wb") as f:
            f.write(data)
