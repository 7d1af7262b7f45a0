#!/usr/bin/env python3
"""Each installed header compiles on its own, and leads to nothing but other installed ones and the standard
library, except where the interface itself is made of another library's types.
usage: headers.py INCLUDE_DIR"""
import os
import re
import subprocess
import sys

# The streams over members are devices of Boost.Iostreams; the JSON helpers take RapidJSON's values.
OTHERS = {"platform/iostreams/zip.h": "/boost/", "platform/HCRapidJsonReadWriteUtils.h": "/rapidjson/"}
GATHERING = {"hwdef/hwdef.h", "platform/platform.h"}


def included(header, directory):
    """All files that the header leads to, it itself included; fails when it doesn't compile alone."""
    command = [os.environ.get("CXX", "g++"), "-std=c++20", "-Wall", "-Wextra", "-Wpedantic", "-Wconversion",
               "-Werror", "-fsyntax-only", "-H", "-I", directory, "-x", "c++", "-"]
    done = subprocess.run(command, input=f"#include <{header}>\n", capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"{header} doesn't compile alone:\n{done.stderr}")
    return set(re.findall(r"^\.+ (.*)$", done.stderr, re.MULTILINE))


def is_standard(path):
    """Headers of the compiler and of the C library; those of other libraries stand in directories of theirs."""
    return path.startswith("/usr/lib/") or "/c++/" in path or "x86_64-linux-gnu/" in path or \
        path.startswith(("/usr/include/asm-generic/", "/usr/include/linux/")) or \
        os.path.dirname(path) == "/usr/include"


def main():
    directory = os.path.abspath(sys.argv[1])
    installed = {os.path.relpath(os.path.join(root, name), directory)
                 for root, _, names in os.walk(directory) for name in names}
    reached = set()
    for header in sorted(installed):
        paths = included(header, directory)
        own = {os.path.relpath(path, directory) for path in paths if path.startswith(directory)}
        allowed = tuple(text for owner, text in OTHERS.items() if owner in own)
        wrong = {path for path in paths if not path.startswith(directory) and not is_standard(path)
                 and not any(text in path for text in allowed)}
        if wrong:
            sys.exit(f"{header} leads to {', '.join(sorted(wrong))}")
        if header in GATHERING:
            reached |= own
    if installed - reached:
        sys.exit(f"no gathering header leads to {', '.join(sorted(installed - reached))}")
    print(f"{len(installed)} headers compile alone and lead to nothing private")


main()
