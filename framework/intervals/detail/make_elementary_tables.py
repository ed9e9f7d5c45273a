#!/usr/bin/env python3
"""Writes ElementaryTables.cpp: correctly rounded double-double values (needs mpmath).

Usage: make_elementary_tables.py > ElementaryTables.cpp
"""
import struct

import mpmath
from mpmath import mpf

mpmath.mp.prec = 400


def double(x):
    return float(x)  # mpmath rounds to nearest


def from_bits(bits):
    return struct.unpack("<d", struct.pack("<Q", bits))[0]


def parts(x, count):
    """x as an unevaluated sum of `count` doubles, each the rest rounded to nearest."""
    result = []
    for _ in range(count):
        result.append(double(x))
        x -= mpf(result[-1])
    return result


def row(*numbers):
    return "    {" + ", ".join(float.hex(n) for n in numbers) + "},"


def table(declaration, rows):
    print(f"const {declaration} = {{")
    print("\n".join(rows))
    print("};\n")


def exp_row(i):
    return row(*parts(mpf(2) ** (mpf(i) / 128), 2))


def log_row(i):
    first, last = (from_bits((0x3FE6 << 48) + ((i + k) << 44)) for k in (0, 1))
    if first == 1 or last == 1:
        inverse = 1.0
    else:
        inverse = double(mpmath.nint(mpf(2) / (first + last) * 2**12)) / 2**12
    return row(inverse, *parts(-mpmath.log(mpf(inverse)), 2))


def sin_row(i):
    return row(*parts(mpmath.sin(mpf(i) * mpmath.pi / 512), 2))


def atan_row(i):
    centre = from_bits((((1015 << 5) + i) << 47) + (1 << 46))
    return row(*parts(mpmath.atan(mpf(centre)), 2))


print("// Written by make_elementary_tables.py.")
print("// clang-format off")
print('#include "framework/intervals/detail/ElementaryTables.h"\n')
print("namespace zultav::detail {\ninline namespace ZULTAV_LEVEL {\nnamespace elementary {\n")
table("DoubleDouble kExpTable[128]", map(exp_row, range(128)))
table("LogRow kLogTable[256]", map(log_row, range(256)))
table("DoubleDouble kSinTable[257]", map(sin_row, range(257)))
table("DoubleDouble kAtanTable[512]", map(atan_row, range(512)))
print("}  // namespace elementary\n}  // namespace ZULTAV_LEVEL\n}  // namespace zultav::detail")
