"""Prints the samples of a grey or an RGB picture, a line for each pixel: png_samples.py FILE"""
import struct
import sys
import zlib


def paeth(left, above, corner):
    distances = [abs(above - corner), abs(left - corner), abs(left + above - 2 * corner)]
    return (left, above, corner)[distances.index(min(distances))]


def unfiltered(kind, line, above, pixel):
    for i, byte in enumerate(line):
        left, corner = (line[i - pixel], above[i - pixel]) if i >= pixel else (0, 0)
        line[i] = (byte + (0, left, above[i], (left + above[i]) // 2, paeth(left, above[i], corner))[kind]) & 255
    return line


with open(sys.argv[1], "rb") as file:
    data = file.read()
chunks, at = [], 8
while at < len(data):
    length, kind = struct.unpack_from(">I4s", data, at)
    chunks.append((kind, data[at + 8:at + 8 + length]))
    at += length + 12
width, height, bits, colour = struct.unpack_from(">IIBB", chunks[0][1])
channels = {0: 1, 2: 3}[colour]
packed = zlib.decompress(b"".join(content for kind, content in chunks if kind == b"IDAT"))
pixel = channels * bits // 8
line = bytearray(width * pixel)
for y in range(height):
    start = y * (width * pixel + 1)
    line = unfiltered(packed[start], bytearray(packed[start + 1:start + 1 + width * pixel]), line, pixel)
    samples = struct.unpack(f">{channels * width}{'H' if bits == 16 else 'B'}", line)
    for x in range(width):
        print(*samples[channels * x:channels * (x + 1)])
