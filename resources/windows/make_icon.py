# SPDX-License-Identifier: MIT
"""Packs square PNG pictures of up to 256 pixels into one Windows icon: make_icon.py ICON PICTURE..."""

import struct
import sys

pictures = []
for name in sys.argv[2:]:
    with open(name, "rb") as file:
        pictures.append(file.read())
with open(sys.argv[1], "wb") as icon:
    icon.write(struct.pack("<HHH", 0, 1, len(pictures)))
    place = 6 + 16 * len(pictures)
    for picture in pictures:
        width, height = struct.unpack(">II", picture[16:24])
        # A byte each for width and height, in which 0 is 256; no palette; one plane of 32 bits.
        icon.write(struct.pack("<BBBBHHII", width % 256, height % 256, 0, 0, 1, 32, len(picture), place))
        place += len(picture)
    icon.writelines(pictures)
