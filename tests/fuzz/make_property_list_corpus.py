#!/usr/bin/env python3
"""Writes the property-list corpus in tests/fuzz/corpus/property_list/: valid files from two
writers other than Tessary, for the fuzz target's seeds and for the differential reader test.

  plistlib-*   written by Python's plistlib (standard library)
  libplist-*   written by libplist's writers through `plistutil` (Debian's libplist-utils),
               converting the plistlib files: XML to binary and binary to XML
  (the other files there were written by Tessary, through libplist)

Run from the repository root: python3 tests/fuzz/make_property_list_corpus.py
"""
import datetime
import os
import plistlib
import subprocess

OUT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "corpus", "property_list")

# A stored setting with one value per photo: binary writers store the value once.
five_equal = [7, 7, 7, 7, 7]

alignments = {
    "photoAlignments": ["fit"] * 6 + ["fill", "fit"],
    "photoAlignmentsCount": 8,
    "factoryPhotos": ["factory-%d.jpg" % (i % 3) for i in range(12)],
}

every_type = {
    "text": "Grüße, 中文, 😀, <tag> & \"quotes\" ]]>",
    "empty text": "",
    "keys": {"é": 1, "": 2, "a b": 3, "😀": 4},
    "integers": [0, 1, -1, 255, 256, 65535, 65536, 2**31, -2**31, 2**63 - 1, -2**63],
    "unsigned": [2**63, 2**63 + 5, 2**64 - 1],
    "reals": [0.0, -0.0, 0.5, -2.25, 1e300, -1e-300, 5e-324, float("inf"), float("-inf")],
    "booleans": [True, False, True, True],
    "data": [b"", b"\x00\x01\xff", bytes(range(256))],
    # Within 2^31 seconds of 2001: libplist 2.2 hands dates on in 32-bit seconds.
    "dates": [datetime.datetime(2001, 1, 1), datetime.datetime(1970, 1, 1, 0, 0, 1),
              datetime.datetime(2038, 1, 19, 3, 14, 7), datetime.datetime(1933, 6, 1, 12, 30, 45)],
    "empty": [[], {}, [[]], {"e": {}}],
}

nested = {"level": 0}
for i in range(1, 30):
    nested = {"level": i, "inner": nested, "same": [i % 2] * 3}

templates = {
    "templates": [{"nbrModules": 3, "borderWidth": 0, "contentSizeWidth": 600.0,
                   "modules": [{"widthFactor": 1, "heightFactor": 1, "title": "tile"}] * 3}
                  for _ in range(4)],
    "selected": 2,
}

shared_strings = ["red", "green", "blue"] * 100

binary_only = {
    # XML 1.0 cannot carry these control characters.
    "control": "tab\tline\nbell\x07escape\x1bunit\x1f",
    # Keyed-archive references have no XML form in plistlib.
    "$top": {"root": plistlib.UID(1)},
    "$objects": ["$null", {"$class": plistlib.UID(2), "value": 3}, {"$classname": "Thing"}],
}


def write(name, value, fmt):
    with open(os.path.join(OUT, name), "wb") as f:
        plistlib.dump(value, f, fmt=fmt, sort_keys=True)


def main():
    os.makedirs(OUT, exist_ok=True)
    both = {"five-equal-integers": five_equal, "alignments": alignments, "every-type": every_type,
            "nested": nested, "templates": templates, "shared-strings": shared_strings}
    for name, value in both.items():
        write("plistlib-%s.bplist" % name, value, plistlib.FMT_BINARY)
        write("plistlib-%s.xml" % name, value, plistlib.FMT_XML)
    write("plistlib-binary-only.bplist", binary_only, plistlib.FMT_BINARY)
    conversions = [(name, ".xml", ".bplist", "bin") for name in both] + \
                  [(name, ".bplist", ".xml", "xml") for name in both] + [("binary-only", ".bplist", ".bplist", "bin")]
    for name, src_ext, dst_ext, fmt in conversions:
        src = os.path.join(OUT, "plistlib-%s%s" % (name, src_ext))
        dst = os.path.join(OUT, "libplist-%s%s" % (name, dst_ext))
        subprocess.run(["plistutil", "-i", src, "-o", dst, "-f", fmt], check=True)
        # Where libplist wrote the very bytes plistlib did, one copy is enough.
        with open(dst, "rb") as a, open(os.path.join(OUT, "plistlib-%s%s" % (name, dst_ext)), "rb") as b:
            if a.read() == b.read():
                os.remove(dst)


if __name__ == "__main__":
    main()
