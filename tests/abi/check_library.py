#!/usr/bin/env python3
"""Holds libtarn.so to what it promises about itself: the names it exports, the libraries it needs, the instructions
its kernels use, and nothing to run at load time.

usage: check_library.py LIBRARY VERSION_SCRIPT LIST...     lists of the public names, one a line
"""
import re
import subprocess
import sys

NEEDED = re.compile(r"^(libc\.so\.6|ld-linux-x86-64\.so\.2|libopenblas\.so\.0)$")
# By mnemonic; everything here is newer than SSE3 and not allowed in a base kernel.
SSE41 = re.compile(r"^(round[sp][sd]|p?blendv?[pdbw]?[bsdw]?|pmulld|pmuldq|pinsr[bdq]|pextr[bdq]|extractps|insertps"
                   r"|dpp[sd]|mpsadbw|phminposuw|pminu[dw]|pmins[bd]|pmaxu[dw]|pmaxs[bd]|pmov[sz]x\w\w|ptest|pcmpeqq"
                   r"|packusdw|movntdqa)$")
SSSE3 = re.compile(r"^(pshufb|phadd\w*|phsub\w*|pmaddubsw|pmulhrsw|psign[bwd]|palignr|pabs[bwd])$")
SSE42 = re.compile(r"^(pcmpgtq|pcmp[ei]str[im]|crc32\w?|popcnt)$")
KERNEL = re.compile(r"^tarn_lume_kernel_.*_(E7|EX|U8|Y8)(LA|HA|EP)[yn]nn")


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def instructions(library):
    """(function, mnemonic) of every instruction; code of static helpers counts for the function they stand in."""
    function = ""
    for line in run("objdump", "-d", "--no-show-raw-insn", library).splitlines():
        if header := re.match(r"^[0-9a-f]+ <(.+)>:$", line):
            function = header[1]
        elif match := re.match(r"^\s+[0-9a-f]+:\s+(\S+)", line):
            yield function, match[1]


def main(library, version_script, *lists):
    faults = []
    public = {name for path in lists for name in open(path).read().split()}
    listed = set(re.findall(r"^\s+(\w+);", open(version_script).read(), re.M))
    exported = {line.split()[-1].split("@")[0] for line in run("nm", "-D", "--defined-only", library).splitlines()}
    exported.discard("TARN_0.1")
    faults += [f"exported but not listed: {name}" for name in sorted(exported - listed)]
    faults += [f"listed but not exported: {name}" for name in sorted(listed - exported)]

    # Every exported name is one that programs are compiled against, or a kernel.
    faults += [f"exported but not public: {name}" for name in sorted(exported - public) if not KERNEL.match(name)]
    # What there is of a vector function is there as a whole: all entries and both tables of every type.
    started = {m[1] for name in exported if (m := re.match(r"tarn_lume_kernel_([sdcz]\w+)_ttab$", name))}
    for table in sorted(started):
        la, ep = ("_21", "_11") if table[0] in "sc" else ("_50", "_26")
        whole = {f"__lume{table}{suffix}" for suffix in (la, "_HA", "", ep)} | {f"tarn_lume_kernel_{table}_ctab"}
        faults += [f"missing: {name}" for name in sorted(whole - exported)]
        faults += [f"not a public name: {name}" for name in sorted(whole - public)]

    dynamic = run("readelf", "-dW", library)
    faults += [f"needs {name}" for name in re.findall(r"\(NEEDED\).*\[(.+)\]", dynamic) if not NEEDED.match(name)]
    sections = run("readelf", "-SW", library)
    init = re.search(r"\.init_array\s+INIT_ARRAY\s+\S+\s+\S+\s+([0-9a-f]+)", sections)
    if init and int(init[1], 16) > 8:  # one entry, frame_dummy, is the C start-up's own
        faults.append("code runs at load time: .init_array has entries")

    segments = run("readelf", "-lW", library)
    if not re.search(r"GNU_STACK\s+(\S+\s+){5}RW\s", segments):
        faults.append("asks for an executable stack")
    if "TEXTREL" in dynamic:
        faults.append("has relocations in its code")

    wide, beyond = {}, {}
    for function, mnemonic in instructions(library):
        if re.match(r"^v(?!err|erw)[a-z]", mnemonic):
            wide[function] = mnemonic
        kernel = KERNEL.match(function)
        newer = SSSE3.match(mnemonic) or SSE41.match(mnemonic) or SSE42.match(mnemonic)
        if newer and (SSE42.match(mnemonic) or not (kernel and kernel[1] == "Y8")):
            beyond[function] = mnemonic
    faults += [f"AVX instruction {m} in {f}" for f, m in wide.items()]
    faults += [f"{m} is beyond SSE3 in {f}" for f, m in beyond.items() if KERNEL.match(f)]
    faults += [f"{m} is beyond SSE3 in {f}, which is no Y8 kernel" for f, m in beyond.items()
               if not KERNEL.match(f) and "sse41" not in f]

    for path in lists:
        names = set(open(path).read().split())
        print(f"{path.rpartition('/')[2]}: {len(names & exported)} of {len(names)} names exported")
    print(f"{len(exported)} exported names, {sum(1 for n in exported if KERNEL.match(n))} kernels")
    for fault in faults:
        print("FAULT", fault)
    return bool(faults)


sys.exit(main(*sys.argv[1:]))
