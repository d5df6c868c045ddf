#!/bin/sh
# Writes the picture fixtures of the watermark preview tests with netpbm: the same opaque red
# 400 x 300 picture in each format a user may drop in. Run from this folder; the files are
# committed, so this only needs running when a fixture changes.
set -eu
ppmmake red 400 300 > red.ppm
pnmtopng red.ppm > red-400x300.png
pnmtojpeg --quality=95 red.ppm > red-400x300.jpg
pnmtotiff -lzw red.ppm 2>/dev/null > red-400x300.tif
ppmtogif red.ppm > red-400x300.gif 2>/dev/null
rm red.ppm
