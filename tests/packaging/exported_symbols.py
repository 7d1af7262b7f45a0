#!/usr/bin/env python3
"""The shared library exports what the public headers declare as exported, all of it and nothing else.
usage: exported_symbols.py LIBRARY HEADER..."""
import re
import subprocess
import sys

CLASS = re.compile(r"^\s*class HWDEF_API (\w+)", re.MULTILINE)
FUNCTION = re.compile(r"^HWDEF_API [^;]*?(\w+)\(", re.MULTILINE)
INSIDES = re.compile(r"^\s*class HWDEF_LOCAL (\w+);", re.MULTILINE)
WHAT = re.compile(r"^(?:typeinfo for|typeinfo name for|vtable for|VTT for|(?:non-)?virtual thunk to) ")


def exported(library):
    """Demangled names with the letters by which nm tells their kind."""
    listing = subprocess.run(["nm", "-DC", "--defined-only", library], capture_output=True, text=True, check=True)
    for line in listing.stdout.splitlines():
        _, kind, name = line.split(" ", 2)
        if kind != "A":  # the version itself
            yield kind, re.sub(r"@+HWDEF_1$", "", name)


def scopes(name):
    """["iostreams", "device", "file_sink", "close"] of a symbol's name."""
    name = WHAT.sub("", name)
    name = re.sub(r"\[abi:\w+\]|<[^<>]*>", "", name.split("(")[0])
    return name.split("::")


def main():
    texts = [open(header, encoding="utf-8").read() for header in sys.argv[2:]]
    classes = {name for text in texts for name in CLASS.findall(text)}
    functions = {name for text in texts for name in FUNCTION.findall(text)}
    insides = {name for text in texts for name in INSIDES.findall(text)}
    seen = set()
    for kind, name in exported(sys.argv[1]):
        parts = scopes(name)
        owners = (classes & set(parts)) | (functions & {parts[-1]})
        if kind not in "TVBRDW" or not owners or insides & set(parts) or parts[0] in ("std", "boost"):
            sys.exit(f"exported, but no part of the interface: {kind} {name}")
        seen |= owners
    if (classes | functions) - seen:
        sys.exit(f"declared as exported, but not there: {', '.join(sorted((classes | functions) - seen))}")
    print(f"{len(classes)} classes and {len(functions)} functions are exported, and nothing else")


main()
