# %% [markdown]
# # From a sensor's mosaic to a picture
# Draws what a camera's sensor would see of a test scene, 14 bits behind a Bayer filter, and develops it step by step. The cells can be
# run one by one in an editor that knows `# %%`, or all at once:
#
#     KUVCV_LIBRARY=build/install/libkuvcv.so PYTHONPATH=python python3 python/examples/develop_mosaic.py picture.png

# %%
import sys

import numpy as np
from PIL import Image

import kuvcv

WIDTH, HEIGHT = 960, 640
WHITE = 16383  # the sensor's largest sample
BLACK = 512    # what it tells of darkness

# %% [markdown]
# ## The scene
# Linear light: a sky, a wall of colour patches, a zone plate whose rings become finer outward, a star of thin spokes, and a
# wedge from black to white.

# %%
y, x = np.mgrid[0:HEIGHT, 0:WIDTH].astype(np.float32)
scene = np.empty((HEIGHT, WIDTH, 3), np.float32)
sky = 0.25 + 0.55 * y / HEIGHT
scene[:] = np.stack([sky * 0.55, sky * 0.75, sky], 2)

patches = np.array([[0.17, 0.08, 0.05], [0.55, 0.30, 0.22], [0.11, 0.19, 0.34], [0.10, 0.15, 0.05], [0.23, 0.21, 0.44], [0.13, 0.50, 0.40],
                    [0.68, 0.20, 0.02], [0.05, 0.10, 0.36], [0.54, 0.08, 0.12], [0.10, 0.04, 0.14], [0.34, 0.50, 0.05], [0.76, 0.36, 0.02]])
for number, colour in enumerate(patches):
    row, column = divmod(number, 6)
    scene[40 + 110 * row:135 + 110 * row, 40 + 100 * column:125 + 100 * column] = colour

radius2 = (x - 250)**2 + (y - 455)**2
rings = 0.5 + 0.5 * np.cos(radius2 / 130)
scene = np.where((radius2 < 150**2)[..., None], rings[..., None] * [0.85, 0.80, 0.70], scene)

angle = np.arctan2(y - 455, x - 640)
spokes = np.cos(36 * angle) > 0
inside = (x - 640)**2 + (y - 455)**2 < 150**2
scene = np.where(inside[..., None], np.where(spokes[..., None], [0.75, 0.15, 0.10], [0.02, 0.05, 0.15]), scene)

grey = np.linspace(0, 1, 640, dtype=np.float32)
scene[:, 820:900] = grey[:HEIGHT, None, None]

# %% [markdown]
# ## The mosaic
# Each sample is of one colour: red and green in even rows, green and blue in odd ones. Shot noise grows with the root of the light.

# %%
mosaic = np.empty((HEIGHT, WIDTH), np.float32)
mosaic[0::2, 0::2] = scene[0::2, 0::2, 0]
mosaic[0::2, 1::2] = scene[0::2, 1::2, 1]
mosaic[1::2, 0::2] = scene[1::2, 0::2, 1]
mosaic[1::2, 1::2] = scene[1::2, 1::2, 2]
random = np.random.default_rng(2017)
mosaic += random.normal(size=mosaic.shape).astype(np.float32) * np.sqrt(mosaic + 0.01) * 0.012
samples = np.clip(BLACK + mosaic * (WHITE - BLACK), 0, WHITE).astype(np.uint16)

mean, deviation = kuvcv.mean_std_dev(samples)
print(f"kuvCV {kuvcv.__version__}, variant {kuvcv.variant()}: mosaic of {WIDTH} x {HEIGHT}, mean {mean:.1f}, deviation {deviation:.1f}")

# %% [markdown]
# ## Demosaicing
# Red, green and blue for every pixel. The rows of `samples` could be any part of a larger array: nothing is copied.

# %%
picture = kuvcv.demosaic(samples, "RGGB")

# %% [markdown]
# ## Another size
# Resizing takes signed samples. Those of 14 bits are the same numbers either way, so that a view of the array will do.

# %%
picture = kuvcv.resize(picture.view(np.int16), (WIDTH * 3 // 4, HEIGHT * 3 // 4)).view(np.uint16)

# %% [markdown]
# ## A tone curve
# From the sensor's black and white to all 16 bits, with a gamma as displays expect it, by control points.

# %%
light = np.concatenate([[0], np.geomspace(0.002, 1, 62)])
levels = np.rint(BLACK + light * (WHITE - BLACK)).astype(np.int32)
values = np.rint(65535 * np.where(light <= 0.0031308, 12.92 * light, 1.055 * light**(1 / 2.4) - 0.055)).astype(np.int32)
curve = kuvcv.ToneMap(np.concatenate([[0], levels, [65536]]), np.concatenate([[0], values, [65535]]), "linear", np.uint16, "C3")
curve.apply(picture)

# %% [markdown]
# ## Eight bits
# Error diffusion keeps the fine differences in the dark that rounding would lose.

# %%
finished = kuvcv.reduce_bits(picture, dither="floyd-steinberg")
counts, edges = kuvcv.histogram(finished, 8)
for name, channel in zip(("red", "green", "blue"), counts):
    print(f"{name:6}", *(f"{count:7}" for count in channel))

# %%
path = sys.argv[1] if len(sys.argv) > 1 else "develop_mosaic.png"
Image.fromarray(finished).save(path)
print("wrote", path)
