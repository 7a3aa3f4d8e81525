"""Writes the data headers beside the formulas: exact values as hexadecimal floating constants, with their decimals."""
import hashlib
from pathlib import Path

import mpmath
from mpmath import mp, mpf

mp.prec = 400
ROOT = Path(__file__).resolve().parent.parent


def round_to(x, bits):
    """x rounded to so many significant bits, to nearest even, as an exact mpf."""
    x = mpf(x)
    if x == 0:
        return x
    exponent = mpmath.floor(mpmath.log(abs(x), 2)) - bits + 1
    scaled = mpmath.ldexp(x, -int(exponent))
    return mpmath.ldexp(mpmath.nint(scaled), int(exponent))


def double(x):
    return round_to(x, 53)


def single(x):
    return round_to(x, 24)


def to_multiple(x, unit):
    """The multiple of unit that is nearest to x."""
    return mpmath.nint(mpf(x) / unit) * unit


def literal(x, suffix=""):
    """An exact constant: 0x1.8p+1 /* 3 */."""
    value = float(x)
    assert mpf(value) == x, x
    return f"{value.hex()}{suffix}"


class TableFile:
    """Collects tables and writes them as one header, which opens with where it comes from."""

    def __init__(self, path, generator):
        self.path = ROOT / path
        self.generator = generator
        self.body = []

    def table(self, ctype, name, formula, values, per_row=1, alignment=64):
        """values: exact numbers of the type, flat; per_row of them on a line."""
        suffix = "f" if ctype == "float" else ""
        lines = [f"// {formula}", f"alignas({alignment}) constexpr {ctype} {name}[] = {{"]
        for i in range(0, len(values), per_row):
            row = values[i:i + per_row]
            exact = ", ".join(literal(v, suffix) for v in row)
            decimal = ", ".join(f"{float(v):.9g}" for v in row)
            lines.append(f"    {exact}, // {decimal}")
        lines += ["};", ""]
        self.body += lines

    def text(self):
        body = "\n".join(self.body)
        digest = hashlib.sha256(body.encode()).hexdigest()[:16]
        return (f"// Made by {self.generator} with mpmath; do not edit. `tools/regenerate --check` compares.\n"
                f"// sha256 of what follows: {digest}...\n#pragma once\n\n"
                "// clang-format off\nnamespace tarn::data {\n\n" + body + "\n}\n// clang-format on\n")

    def write(self):
        self.path.write_text(self.text())
