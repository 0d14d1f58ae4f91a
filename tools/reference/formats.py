# SPDX-License-Identifier: MIT
"""The named formats: words built from their fields, sizes and conversions."""

import numpy as np

import emit

FIELDS = ("fbits", "bits", "pbits", "type_id", "comp_shift", "is_signed", "is_float")
WEIGHTS = (2**0, 2**7, 2**14, 2**17, 2**21, 2**23, 2**24)
BIAS = 64
COUNTS = (0, 1, 3, 17)
ALL_FLAGS = 127 * 2**25
KEPT_FLAGS = 2**27 + 2**29 + 2**30


def fields(fbits=0, bits=0, type_id=0, comp_shift=0, is_signed=0, is_float=0, pbits=0):
    return dict(zip(FIELDS, (fbits, bits, pbits, type_id, comp_shift, is_signed, is_float)))


def word(f):
    return sum(w * f[name] for name, w in zip(FIELDS, WEIGHTS)) + BIAS


def real(bits):
    return fields(bits=bits, type_id=1, is_signed=1, is_float=1)


def fixed(bits, fbits, is_signed):
    return fields(bits=bits, fbits=fbits, type_id=2, is_signed=is_signed)


def table(index_bits, entry):
    shift = (entry["bits"] // index_bits).bit_length() - 1
    return dict(entry, type_id=index_bits, comp_shift=shift)


ARRAY_FORMATS = {"NONE": fields(), "FLOAT": real(32), "FLOAT64": real(64), "FLOAT16": real(16)}
for letter, sign in (("U", 0), ("S", 1)):
    for width in (8, 16, 32, 64, 4):
        ARRAY_FORMATS["%s%d" % (letter, width)] = fixed(width, 0, sign)
for letter, sign in (("Q", 1), ("UQ", 0)):
    ARRAY_FORMATS[letter] = fixed(0, 0, sign)
    for fraction in (7, 15, 31):
        ARRAY_FORMATS["%s%d" % (letter, fraction)] = fixed(fraction + 1, fraction, sign)
for entry_name, entry_fields in (("FLOAT", real(32)), ("Q15", fixed(16, 15, 1)),
                                 ("UQ15", fixed(16, 15, 0))):
    for width in (4, 8):
        ARRAY_FORMATS["LUT%d_%s" % (width, entry_name)] = table(width, entry_fields)

BUFFER_FORMATS = ("NONE", "FLOAT", "U8", "U16", "S8", "S16", "Q", "Q7", "Q15", "UQ", "UQ7", "UQ15")


def to_buffer(name):
    f = ARRAY_FORMATS[name]
    if f["type_id"] == 2:
        return word(fixed(f["bits"], f["fbits"], f["is_signed"]))
    return word(f) if name in BUFFER_FORMATS else word(fields())


def stored_bits(f):
    """Of one element in the stream: its index when there is a table."""
    return f["type_id"] if f["type_id"] in (4, 8) else f["bits"] + f["pbits"]


def table_bytes(f):
    return 2**f["type_id"] * f["bits"] // 8 if f["type_id"] in (4, 8) else 0


def stream_bytes(f, count):
    return -(-count * stored_bits(f) // 8)


def all_bytes(f, count):
    return stream_bytes(f, count) + table_bytes(f) if count else 0


def elements(f, size):
    return (size - table_bytes(f)) * 8 // stored_bits(f) if size else 0


def exported_q(is_signed):
    """How many of the widths 1..64 with -width..width-1 fractional bits may cross the API."""
    barred = {word(f) for n, f in ARRAY_FORMATS.items() if n not in BUFFER_FORMATS}
    return sum(word(fixed(bits, fbits, is_signed)) not in barred
               for bits in range(1, 65) for fbits in range(-bits, bits))


def vectors():
    rows = list(ARRAY_FORMATS.values())
    padded = [dict(fixed(5, 2, 1), pbits=3), dict(fixed(12, 5, 0), pbits=4),
              dict(fixed(9, 9, 1), pbits=1)]
    header = emit.Header("formats")

    def add(name, values):
        header.add(name, np.array(values, dtype=np.uint32))

    header.add("array_format_names", ["FMT_" + name for name in ARRAY_FORMATS])
    add("array_format_codes", [word(f) for f in rows])
    header.add("array_format_fields", np.array([list(f.values()) for f in rows], dtype=np.int32))
    add("array_format_exported", [name in BUFFER_FORMATS for name in ARRAY_FORMATS])
    add("array_format_buffer_words", [to_buffer(name) for name in ARRAY_FORMATS])
    header.add("buffer_format_names", ["FMT_" + name for name in BUFFER_FORMATS])
    add("buffer_format_codes", [word(ARRAY_FORMATS[name]) for name in BUFFER_FORMATS])
    add("format_all_flags", [ALL_FLAGS])
    add("format_kept_flags", [KEPT_FLAGS])
    add("exported_q_words", [exported_q(0), exported_q(1)])
    sized = rows + padded
    add("sized_format_codes", [word(f) for f in sized])
    add("sized_format_counts", COUNTS)
    add("sized_format_bytes", [[all_bytes(f, n) for n in COUNTS] for f in sized])
    add("sized_format_data_bytes", [[stream_bytes(f, n) for n in COUNTS] for f in sized])
    add("sized_format_elements", [[elements(f, all_bytes(f, n)) for n in COUNTS] for f in sized])
    return header
