"""Known answers of the vector functions: writes tests/known/<family>.txt. Values come from mpmath at 400 bits, rounded
to 96; special values and statuses are written down here, from the functions' definitions."""
import random

import mpmath
from mpmath import mp, mpf
from table_file import ROOT, round_to

mp.prec = 400
INF, NAN = mpf("inf"), mpf("nan")


def hexadecimal(x, bits=96):
    """x as a C hexadecimal constant of so many bits; exact where they suffice."""
    if isinstance(x, str):
        return x
    if mpmath.isnan(x):
        return "nan"
    if mpmath.isinf(x):
        return "inf" if x > 0 else "-inf"
    if x == 0:
        return "0x0p+0"
    x = round_to(x, bits)
    sign, mantissa, exponent, _ = x._mpf_
    mantissa = int(mantissa)
    length = mantissa.bit_length()
    pad = -(length - 1) % 4
    digits = f"{mantissa << pad:x}"
    fraction = digits[1:].rstrip("0")
    return f"{'-' if sign else ''}0x{digits[0]}{'.' + fraction if fraction else ''}p{exponent + length - 1:+d}"


class Real:
    """What of an element type the answers depend on."""

    def __init__(self, letter, digits, least, top):
        self.letter, self.digits = letter, digits
        self.tiny = mpf(2) ** (least - digits)          # smallest denormal
        self.least = mpf(2) ** (least - 1)              # smallest normal
        self.huge = (2 - mpf(2) ** (1 - digits)) * mpf(2) ** (top - 1)

    def arguments(self, seed, count, low, high, negative=True):
        """Random arguments with exponents from low to high."""
        source = random.Random(f"{self.letter}{seed}")
        for _ in range(count):
            x = mpf(source.getrandbits(self.digits) | 1 << (self.digits - 1)) * mpf(2) ** (
                source.randint(low, high) - self.digits + 1)
            yield -x if negative and source.random() < 0.5 else x


SINGLE, DOUBLE = Real("s", 24, -125, 128), Real("d", 53, -1021, 1024)


def truncated(x):
    return mpmath.floor(x) if x >= 0 else mpmath.ceil(x)


def signed_zero(result, like):
    """A zero of the sign of like."""
    return "-0x0p+0" if result == 0 and like < 0 else result


def unary(t, name, f, arguments, special):
    for a, r, status in special:
        yield f"{t.letter}{name} {hexadecimal(a)} {hexadecimal(r)} {status}"
    for a in arguments:
        yield f"{t.letter}{name} {hexadecimal(a)} {hexadecimal(f(a))} 0"


def binary(t, name, f, arguments, special):
    for a, b, r, status in special:
        yield f"{t.letter}{name} {hexadecimal(a)} {hexadecimal(b)} {hexadecimal(r)} {status}"
    for a, b in arguments:
        yield f"{t.letter}{name} {hexadecimal(a)} {hexadecimal(b)} {hexadecimal(f(a, b))} 0"


def exponential():
    for t in (DOUBLE, SINGLE):
        top = 9 if t is DOUBLE else 6
        args = [a for a in t.arguments("exp", 40, -30, top) if abs(a) < (708 if t is DOUBLE else 87)]
        yield from unary(t, "Exp", mpmath.exp, args, [
            (NAN, NAN, 0), (INF, INF, 0), (-INF, mpf(0), 0), (mpf(0), mpf(1), 0), (2 * t.huge / 3, INF, 3),
            (-t.huge / 2, mpf(0), 4), (t.tiny, mpf(1), 0)])
        yield from unary(t, "Ln", mpmath.ln, list(t.arguments("ln", 40, -60, 60, negative=False)), [
            (NAN, NAN, 0), (INF, INF, 0), (-INF, NAN, 1), (mpf(0), -INF, 2), ("-0x0p+0", -INF, 2), (mpf(-1), NAN, 1),
            (mpf(1), mpf(0), 0), (t.tiny, mpmath.ln(t.tiny), 0), (t.huge, mpmath.ln(t.huge), 0)])


def roots():
    for t in (DOUBLE, SINGLE):
        wide = (-900, 900) if t is DOUBLE else (-100, 100)
        positive = list(t.arguments("root", 30, *wide, negative=False))
        either = list(t.arguments("cube", 30, *wide))
        cube = lambda x: mpmath.sign(x) * mpmath.cbrt(abs(x))
        yield from unary(t, "Sqrt", mpmath.sqrt, positive, [
            (mpf(0), mpf(0), 0), ("-0x0p+0", "-0x0p+0", 0), (mpf(-1), NAN, 1), (-INF, NAN, 1), (INF, INF, 0),
            (NAN, NAN, 0), (t.tiny, mpmath.sqrt(t.tiny), 0), (t.huge, mpmath.sqrt(t.huge), 0)])
        yield from unary(t, "InvSqrt", lambda x: 1 / mpmath.sqrt(x), positive, [
            (mpf(0), INF, 2), ("-0x0p+0", -INF, 2), (mpf(-1), NAN, 1), (-INF, NAN, 1), (INF, mpf(0), 0), (NAN, NAN, 0),
            (t.tiny, 1 / mpmath.sqrt(t.tiny), 0)])
        yield from unary(t, "Cbrt", cube, either, [
            (mpf(0), mpf(0), 0), ("-0x0p+0", "-0x0p+0", 0), (INF, INF, 0), (-INF, -INF, 0), (NAN, NAN, 0),
            (t.tiny, cube(t.tiny), 0), (-t.huge, cube(-t.huge), 0)])
        yield from unary(t, "InvCbrt", lambda x: 1 / cube(x), either, [
            (mpf(0), INF, 2), ("-0x0p+0", -INF, 2), (INF, mpf(0), 0), (NAN, NAN, 0)])


def arithmetic():
    for t in (DOUBLE, SINGLE):
        pairs = list(zip(t.arguments("a", 25, -20, 20), t.arguments("b", 25, -12, 12)))

        def rest(a, b, rounded=truncated):
            with mp.workprec(2400):  # quotients have up to 2,098 bits
                return signed_zero(a - b * rounded(a / b), a)

        even = lambda a, b: rest(a, b, mpmath.nint)
        yield from binary(t, "Add", lambda a, b: a + b, pairs, [(INF, -INF, NAN, 0), (t.huge, t.huge, INF, 0)])
        yield from binary(t, "Sub", lambda a, b: a - b, pairs, [(INF, INF, NAN, 0)])
        yield from binary(t, "Mul", lambda a, b: a * b, pairs, [(INF, mpf(0), NAN, 0), (t.huge, mpf(2), INF, 0)])
        yield from unary(t, "Sqr", lambda a: a * a, [a for a, _ in pairs], [(-INF, INF, 0), (NAN, NAN, 0)])
        yield from unary(t, "Abs", abs, [a for a, _ in pairs], [("-0x0p+0", mpf(0), 0), (-INF, INF, 0)])
        yield from binary(t, "CopySign", lambda a, b: abs(a) * mpmath.sign(b), pairs, [(mpf(3), "-0x0p+0", mpf(-3), 0)])
        yield from binary(t, "Div", lambda a, b: a / b, pairs, [
            (mpf(0), mpf(0), NAN, 2), (mpf(1), "-0x0p+0", -INF, 2), (mpf(1), mpf(0), INF, 2), (mpf(1), INF, mpf(0), 0)])
        yield from unary(t, "Inv", lambda a: 1 / a, [a for a, _ in pairs], [(mpf(0), INF, 2), ("-0x0p+0", -INF, 2)])
        yield from binary(t, "Fmod", rest, pairs, [
            (mpf(5), mpf(3), mpf(2), 0), (mpf(-5), mpf(3), mpf(-2), 0), (mpf(5), mpf(-3), mpf(2), 0),
            (mpf(5), mpf(0), NAN, 2), (INF, mpf(3), NAN, 2), (mpf(5), INF, mpf(5), 0),
            (t.huge, 3 * t.tiny, rest(t.huge, 3 * t.tiny), 0)])
        yield from binary(t, "Remainder", even, pairs, [
            (mpf(5), mpf(3), mpf(-1), 0), (mpf(3), mpf(2), mpf(-1), 0), (mpf(5), mpf(2), mpf(1), 0),
            (mpf(5), mpf(0), NAN, 2), (INF, mpf(3), NAN, 2), (mpf(5), -INF, mpf(5), 0)])
        yield from binary(t, "Fdim", lambda a, b: max(a - b, mpf(0)), pairs, [(INF, INF, mpf(0), 0), (NAN, mpf(1), NAN, 0)])
        yield from binary(t, "Fmax", max, pairs, [(NAN, mpf(1), mpf(1), 0), (mpf(1), NAN, mpf(1), 0), (NAN, NAN, NAN, 0)])
        yield from binary(t, "Fmin", min, pairs, [(NAN, mpf(1), mpf(1), 0), (mpf(1), NAN, mpf(1), 0), (NAN, NAN, NAN, 0)])
        yield from binary(t, "MaxMag", lambda a, b: max(a, b, key=abs), pairs, [(mpf(-2), mpf(2), mpf(2), 0)])
        yield from binary(t, "MinMag", lambda a, b: min(a, b, key=abs), pairs, [(mpf(-2), mpf(2), mpf(-2), 0)])
        yield from binary(t, "NextAfter", None, [], [
            (mpf(0), mpf(1), t.tiny, 4), (t.huge, INF, INF, 3), (-t.huge, -INF, -INF, 3), (mpf(1), mpf(1), mpf(1), 0),
            (mpf(1), mpf(2), 1 + mpf(2) ** (1 - t.digits), 0), (t.least, mpf(0), t.least - t.tiny, 4)])


def rounding():
    for t in (DOUBLE, SINGLE):
        args = [a for a in t.arguments("round", 25, -4, 12)]
        away = lambda x: mpmath.sign(x) * mpmath.floor(abs(x) + mpf(1) / 2)
        for name, f in (("Ceil", mpmath.ceil), ("Floor", mpmath.floor), ("Trunc", truncated), ("Rint", mpmath.nint),
                        ("NearbyInt", mpmath.nint), ("Round", away)):
            yield from unary(t, name, lambda a, f=f: signed_zero(f(a), a), args, [(NAN, NAN, 0), (-INF, -INF, 0)])
        half = mpf(1) / 2
        yield from unary(t, "Round", None, [], [(half, mpf(1), 0), (-half, mpf(-1), 0), (3 * half, mpf(2), 0),
                                                (5 * half, mpf(3), 0)])
        yield from unary(t, "Frac", lambda a: signed_zero(a - truncated(a), a), args, [
            (mpf(-13) / 4, -half / 2, 0), (mpf(-3), "-0x0p+0", 0), (INF, mpf(0), 0), (-INF, "-0x0p+0", 0)])
        yield from unary(t, "Logb", lambda a: mpmath.floor(mpmath.log(abs(a), 2)), args, [
            (mpf(0), -INF, 1), (-INF, INF, 0), (NAN, NAN, 0), (t.tiny, mpmath.log(t.tiny, 2), 0)])


def texts():
    """(path, text) of every file."""
    head = ("# Known answers, one a line: function, arguments, result with bits beyond the type, status.\n"
            "# Made by tools/known_answers.py with mpmath at 400 bits; special values from the functions' definitions.\n")
    for family in (arithmetic, rounding, roots, exponential):
        yield ROOT / f"tests/known/{family.__name__}.txt", head + "\n".join(family()) + "\n"
