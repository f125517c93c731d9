"""Writes a camera's raw file of 64 x 48 samples in one flat colour: make_dng.py FILE BLACK WHITE RED GREEN BLUE
The file asks for a white balance that doubles red."""
import struct
import sys

path = sys.argv[1]
black, white, red, green, blue = map(int, sys.argv[2:])
width, height = 64, 48
mosaic = [(red, green, green, blue)[y % 2 * 2 + x % 2] for y in range(height) for x in range(width)]

BYTE, ASCII, SHORT, LONG, RATIONAL, SRATIONAL = 1, 2, 3, 4, 5, 10
codes = {BYTE: "B", SHORT: "H", LONG: "I", RATIONAL: "I", SRATIONAL: "i"}
entries = {
    254: (LONG, [0]), 256: (LONG, [width]), 257: (LONG, [height]), 258: (SHORT, [16]), 259: (SHORT, [1]), 262: (SHORT, [32803]),
    271: (ASCII, b"Maker\0"), 272: (ASCII, b"Model\0"), 273: (LONG, [0]), 274: (SHORT, [1]), 277: (SHORT, [1]),
    278: (LONG, [height]), 279: (LONG, [2 * width * height]), 33421: (SHORT, [2, 2]),
    33422: (BYTE, [0, 1, 1, 2]), 50706: (BYTE, [1, 4, 0, 0]),
    50708: (ASCII, b"Maker Model\0"), 50714: (LONG, [black]), 50717: (LONG, [white]),
    50721: (SRATIONAL, [1, 1, 0, 1, 0, 1, 0, 1, 1, 1, 0, 1, 0, 1, 0, 1, 1, 1]), 50728: (RATIONAL, [1, 2, 1, 1, 1, 1]),
}
behind = 8 + 2 + 12 * len(entries) + 4  # what does not fit an entry
extra = b""
directory = struct.pack("<H", len(entries))
packed = {tag: v if kind == ASCII else struct.pack(f"<{len(v)}{codes[kind]}", *v) for tag, (kind, v) in entries.items()}
packed[273] = struct.pack("<I", behind + sum(len(v) + len(v) % 2 for v in packed.values() if len(v) > 4))
for tag, (kind, v) in entries.items():
    count = len(v) // 2 if kind in (RATIONAL, SRATIONAL) else len(v)
    field = packed[tag]
    if len(field) > 4:
        field, extra = struct.pack("<I", behind + len(extra)), extra + field + bytes(len(field) % 2)
    directory += struct.pack("<HHI4s", tag, kind, count, field)
with open(path, "wb") as file:
    file.write(b"II*\0" + struct.pack("<I", 8) + directory + bytes(4) + extra + struct.pack(f"<{len(mosaic)}H", *mosaic))
