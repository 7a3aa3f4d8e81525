#!/usr/bin/env python3
"""Writes sobol_table.inc: polynomial and initial direction integers of the coordinates 2 to 40 of the Sobol sequence.

  sobol_table.py sobol_initial_direction_integers.csv > sobol_table.inc

Source of the numbers: P. Bratley, B. L. Fox, ACM Trans. Math. Softw. 14 (1988), algorithm 659.
"""
import csv
import sys

with open(sys.argv[1], newline="") as file:
    for row in csv.DictReader(file):
        degree, polynomial = int(row["degree"]), int(row["polynomial"])
        initial = [int(row[f"m{k}"]) for k in range(1, degree + 1)]
        assert polynomial.bit_length() == degree + 1
        assert all(m % 2 == 1 and m < 2 << k for k, m in enumerate(initial))
        print(f"{{{polynomial}, {{{', '.join(map(str, initial))}}}}},")
