#!/usr/bin/env python3
"""Writes the tiny TrueType fixtures of the Type 42 tests, the malformed/ set (one defect per
file, named by the defect) and the expected Type 42 text of tiny-post2.ttf, which is spelled out
here from the format's rules, independently of the converter. Run from this folder; the files
are committed, so this only needs running when a fixture changes."""
import struct

MAGIC = 0x5F0F3CF5


def head(units=1000, loc_format=0, magic=MAGIC, size=54):
    t = struct.pack(">iiIIHHqqhhhhHHhhh", 0x00010000, 0x00018000, 0, magic, 0, units, 0, 0,
                    -100, -200, 900, 800, 0, 8, 2, loc_format, 0)
    assert len(t) == 54
    return t[:size]


def maxp(num_glyphs):
    return struct.pack(">iH", 0x00005000, num_glyphs)


def pascal(names):
    return b"".join(bytes([len(n)]) + n for n in names)


def post(version, indexes=(), names=(), count=None, min_mem=1000, max_mem=2000):
    t = struct.pack(">iihhIIIII", version, 0, -100, 50, 0, min_mem, max_mem, 0, 0)
    if version == 0x00020000:
        n = len(indexes) if count is None else count
        t += struct.pack(">H", n) + b"".join(struct.pack(">H", i) for i in indexes) + pascal(names)
    return t


def name(fmt=0):
    return struct.pack(">HHH", fmt, 0, 6)


# Three glyphs: an empty .notdef, then 12 and 10 bytes of (opaque) outline data.
GLYF = bytes(range(1, 13)) + bytes(range(100, 110))
LOCA_SHORT = struct.pack(">HHHH", 0, 0, 6, 11)
LOCA_LONG = struct.pack(">IIII", 0, 0, 12, 22)


def font(tables):
    """tables: list of (tag, bytes) in directory order; data 4-aligned in the same order."""
    n = len(tables)
    offset = 12 + 16 * n
    directory, data = b"", b""
    for tag, body in tables:
        directory += struct.pack(">4sIII", tag, 0, offset + len(data), len(body))
        data += body + b"\0" * (-len(body) % 4)
    return struct.pack(">IHHHH", 0x00010000, n, 0, 0, 0) + directory + data


def standard(over=None):
    """The tables of tiny-post2.ttf, with `over` replacing (or, as None, dropping) some."""
    t = {"head": head(), "maxp": maxp(3), "post": post(0x00020000, (0, 36, 258), (b"Talmo",)),
         "name": name(), "loca": LOCA_SHORT, "glyf": GLYF}
    t.update(over or {})
    return [(k.encode(), v) for k, v in t.items() if v is not None]


def write(path, data):
    with open(path, "wb") as f:
        f.write(data)


tiny = font(standard())
write("tiny-post2.ttf", tiny)
write("tiny-post3.ttf", font(standard({"post": post(0x00030000, max_mem=0)})))
write("../../../fuzz/corpus/ttf/tiny-loca-long.ttf", font(standard({"head": head(loc_format=1), "loca": LOCA_LONG})))
write("tiny-no-post.ttf", font(standard({"post": None})))
# Whole for Type 42 (which reads only the name table's format), but its name records run past
# the table, so hb-subset refuses it: the font that cannot be subset.
write("name-records-past-end.ttf", font(standard({"name": struct.pack(">HHH", 0, 5, 6)})))
# The sfnt version of PostScript (CFF) outlines: refused before any conversion.
write("cff-outlines.otf", b"OTTO" + tiny[4:])
# 258 glyphs named by post 1.0: the standard Macintosh names, as HarfBuzz reads them.
write("mac-names.ttf", font([(b"maxp", maxp(258)), (b"post", post(0x00010000))]))

malformed = {
    "truncated-directory": font(standard())[:12 + 16 * 3],
    "head-too-short": font(standard({"head": head(size=50)})),
    "head-bad-magic": font(standard({"head": head(magic=0x12345678)})),
    "head-units-per-em-zero": font(standard({"head": head(units=0)})),
    "head-index-to-loc-format-2": font(standard({"head": head(loc_format=2)})),
    "maxp-zero-glyphs": font(standard({"maxp": maxp(0)})),
    "maxp-too-short": font(standard({"maxp": maxp(3)[:4]})),
    "post-too-short": font(standard({"post": post(0x00020000)[:20]})),
    "post-glyph-count-mismatch": font(standard({"post": post(0x00020000, (0, 36, 258), (b"Talmo",), count=2)})),
    "post-index-array-past-end": font(standard({"post": post(0x00020000, (0, 36), (), count=3)})),
    "post-name-index-past-data": font(standard({"post": post(0x00020000, (0, 36, 259), (b"Talmo",))})),
    "post-name-length-past-end": font(standard({"post": post(0x00020000, (0, 36, 258), ())
                                                   + b"\x40Tal"})),
    "name-format-1": font(standard({"name": name(1)})),
    "name-empty": font(standard({"name": b""})),
    "missing-glyf": font(standard({"glyf": None})),
    "missing-loca": font(standard({"loca": None})),
    "loca-too-short": font(standard({"loca": LOCA_SHORT[:6]})),
    "loca-decreasing": font(standard({"loca": struct.pack(">HHHH", 0, 6, 3, 11)})),
    "loca-past-glyf": font(standard({"loca": struct.pack(">HHHH", 0, 0, 6, 12)})),
}
# A table record pointing past the end of the data.
bad = bytearray(tiny)
struct.pack_into(">I", bad, 12 + 16 * 5 + 8, 0x7FFFFFF0)  # glyf is the sixth record
malformed["glyf-offset-past-end"] = bytes(bad)
for k, v in malformed.items():
    write("malformed/%s.ttf" % k, v)

# Expected Type 42 text of tiny-post2.ttf named "TinyTest": glyph names .notdef, A, Talmo; every
# standard code but A's loses its name to glyph 0's (.notdef); Talmo takes the first free code.
encoding = [".notdef"] * 256
encoding[65] = "A"
encoding[32] = "Talmo"
hexed = ""
for i, b in enumerate(tiny):
    hexed += "%02X" % b
    if i % 30 == 29:
        hexed += "\n"
text = ("%!PS-TrueTypeFont-1.0000-1.5000\n"
        "%%VMUsage: 1000 2000\n"
        "11 dict begin\n"
        "/FontName /TinyTest def\n"
        "/Encoding 256 array\n"
        + "".join("dup %d /%s put\n" % (c, n) for c, n in enumerate(encoding))
        + "readonly def/PaintType 0 def\n"
        "/FontMatrix [1 0 0 1 0 0] def\n"
        "/FontBBox [-0.099991 -0.199997 0.899994 0.799988] def\n"
        "/FontType 42 def\n"
        "/FontInfo 8 dict dup begin\n"
        "end readonly def\n"
        "/sfnts [\n<" + hexed + "00>] def\n"
        "/CharStrings 3 dict dup begin\n"
        "/.notdef 0 def\n"
        "/A 1 def\n"
        "/Talmo 2 def\n"
        "end readonly def\n"
        "FontName currentdict end definefont pop\n")
write("tiny-post2.t42", text.encode())
