#!/usr/bin/env python3
"""Every public header compiles alone, without a warning: those of C as C99, C11, C++11 and C++20, those of C++ as C++20.

check_headers.py INCLUDE_FOLDER C_COMPILER CXX_COMPILER
"""

import pathlib
import subprocess
import sys

include, c_compiler, cxx_compiler = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3]
headers = sorted(include.glob("tarn/*.h")) + sorted(include.glob("tarn/*.hpp"))
if not headers:
    sys.exit(f"no headers in {include}/tarn")
wrong = []
for header in headers:
    languages = [[cxx_compiler, "-std=c++20", "-x", "c++"]]
    if header.suffix == ".h":
        languages.append([cxx_compiler, "-std=c++11", "-x", "c++"])
        languages += [[c_compiler, standard, "-x", "c"] for standard in ("-std=c99", "-std=c11")]
    for language in languages:
        run = subprocess.run(
            [*language, "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-fsyntax-only", f"-I{include}", "-"],
            input=f'#include "{header.relative_to(include)}"\n', text=True, capture_output=True)
        if run.returncode:
            wrong.append(f"{header.name} as {language[1][5:]}:\n{run.stderr[:400]}")
print(f"{len(headers)} headers")
sys.exit("\n".join(wrong) or 0)
