#!/usr/bin/env python3
"""Writes wh_members.inc: multipliers and moduli of the 273 members of WH.

Going down the primes, a modulus m is kept if (m - 1) / 2 is coprime to those of the row's earlier moduli and if a
primitive root from 127 down to 112 exists that the row has not used; the largest one is the multiplier. Rows 0, 1, 2 and
272 are fixed; the rule gives them back from their first modulus, and fills the others from the top of the range.
N. M. Maclaren, Appl. Stat. 38 (1989), for the conditions.
"""
from math import gcd

LOWEST, HIGHEST = 16718909, 16776971
FIXED = {0: 16770647, 1: 0xFFE507, 2: 0xFFE30F, 272: 16766363}
EXPECTED = {0: ([125, 117, 127, 126], [16770647, 16770643, 16770623, 16770617]),
            1: ([127, 126, 125, 123], [0xFFE507, 0xFFE4EB, 0xFFE4D7, 0xFFE4A1]),
            2: ([125, 119, 123, 126], [0xFFE30F, 0xFFE2EB, 0xFFE2D5, 0xFFE27F]),
            272: ([126, 127, 125, 124], [16766363, 16766359, 16766327, 16766231])}
small = [p for p in range(2, 4100) if all(p % q for q in range(2, int(p ** 0.5) + 1))]


def prime_factors(n):
    found = []
    for p in small:
        if n % p == 0:
            found.append(p)
            while n % p == 0:
                n //= p
    return found + ([n] if n > 1 else [])


def largest_root(m, used):
    factors = prime_factors(m - 1)
    for a in range(127, 111, -1):
        if a not in used and all(pow(a, (m - 1) // q, m) != 1 for q in factors):
            return a
    return None


primes = [n for n in range(HIGHEST, LOWEST - 1, -1) if all(n % p for p in small)]


def row(start, taken):
    a, m = [], []
    for p in primes:
        if p > start or p in taken:
            continue
        if any(gcd((p - 1) // 2, (q - 1) // 2) != 1 for q in m):
            continue
        root = largest_root(p, a)
        if root is None:
            continue
        a.append(root)
        m.append(p)
        if len(m) == 4:
            return a, m
    raise SystemExit("out of primes")


rows = {}
taken = set()
for k, start in FIXED.items():
    rows[k] = row(start, set())
    assert rows[k] == EXPECTED[k], k
    taken.update(rows[k][1])
for k in range(273):
    if k not in rows:
        rows[k] = row(HIGHEST, taken)
        taken.update(rows[k][1])
assert len(taken) == 4 * 273
for k in range(273):
    a, m = rows[k]
    print(f"{{{{{', '.join(map(str, a))}}}, {{{', '.join(map(str, m))}}}}},")
