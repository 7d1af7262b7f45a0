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


def tree(text, directory):
    """What a source leads to, as pairs of depth and path, in order; None and the reasons when it isn't clean."""
    command = [os.environ.get("CXX", "g++"), "-std=c++20", "-Wall", "-Wextra", "-Wpedantic", "-Wconversion",
               "-Werror", "-fsyntax-only", "-H", "-I", directory, "-x", "c++", "-"]
    done = subprocess.run(command, input=text, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        return None, done.stderr
    return [(len(dots), path) for dots, path in re.findall(r"^(\.+) (.*)$", done.stderr, re.MULTILINE)], ""


def included(header, directory):
    """All files that the header leads to, it itself included, but for what another library leads to where the
    interface is made of its types; fails when the header doesn't compile alone."""
    found, reasons = tree(f"#include <{header}>\n", directory)
    if found is None:
        sys.exit(f"{header} doesn't compile alone:\n{reasons}")
    own = {os.path.relpath(path, directory) for _, path in found if path.startswith(directory)}
    allowed = [text for owner, text in OTHERS.items() if owner in own]
    paths = set()
    foreign = None  # the depth of the other library's header that we are in
    for depth, path in found:
        if foreign is None or depth <= foreign:
            foreign = depth if any(text in path for text in allowed) else None
        if foreign is None:
            paths.add(path)
    return paths


def main():
    directory = os.path.abspath(sys.argv[1])
    installed = {os.path.relpath(os.path.join(root, name), directory)
                 for root, _, names in os.walk(directory) for name in names}
    # Not by directory: the C library's headers lie among those of others.
    standard = {path for _, path in tree("#include <bits/stdc++.h>\n", directory)[0]}
    reached = set()
    for header in sorted(installed):
        paths = included(header, directory)
        own = {os.path.relpath(path, directory) for path in paths if path.startswith(directory)}
        wrong = {path for path in paths - standard if not path.startswith(directory)}
        if wrong:
            sys.exit(f"{header} leads to {', '.join(sorted(wrong))}")
        if header in GATHERING:
            reached |= own
    if installed - reached:
        sys.exit(f"no gathering header leads to {', '.join(sorted(installed - reached))}")
    print(f"{len(installed)} headers compile alone and lead to nothing private")


main()
