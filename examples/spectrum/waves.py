"""Writes a PGM picture of 16 bits, the sum of waves about a mean: waves.py WIDTH HEIGHT MEAN [AMPLITUDE ACROSS DOWN]... >FILE"""
import math
import sys

width, height = map(int, sys.argv[1:3])
mean, *numbers = map(float, sys.argv[3:])
waves = list(zip(*[iter(numbers)] * 3))
samples = bytearray()
for y in range(height):
    for x in range(width):
        value = mean + sum(a * math.cos(2 * math.pi * (u * x / width + v * y / height)) for a, u, v in waves)
        samples += round(value).to_bytes(2, "big")
sys.stdout.buffer.write(b"P5 %d %d 65535\n" % (width, height) + samples)
