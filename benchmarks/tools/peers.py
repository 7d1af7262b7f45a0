#!/usr/bin/env python3
"""Python's side of the whole-process comparisons: peers.py TASK ARGUMENT...

Prints elapsed and task_cpu, seconds of the task itself, without the interpreter's start.
"""

import hashlib
import pathlib
import sys
import time
import xml.etree.ElementTree as ET
import zipfile


def pack(output, *dirs):
    with zipfile.ZipFile(output, "w", zipfile.ZIP_DEFLATED, compresslevel=1) as archive:
        for path in (path for name in dirs for path in sorted(pathlib.Path(name).iterdir())):
            archive.write(path, path.name)


def export(archive_path, target):
    with zipfile.ZipFile(archive_path) as archive:
        archive.extractall(target)


def open_container(archive_path):
    with zipfile.ZipFile(archive_path) as archive:
        root = ET.fromstring(archive.read("hwdef.xml"))
    version = root.get("Version"), root.get("Minor"), root.get("DIGEST")
    files = []
    properties = {}
    for element in root:
        if element.tag != "File":
            properties[element.tag] = dict(element.attrib)
            continue
        get = element.get
        attributes = {attr.get("ATTRNAME"): attr.get("ATTRVAL") for attr in element}
        files.append((get("Type"), get("Name"), get("src_db"), get("DESIGN_HIERARCHY"), get("BD_TYPE"),
                      get("DIGEST"), attributes))
    return version, properties, files


def digest(archive_path):
    digests = {}
    with zipfile.ZipFile(archive_path) as archive:
        for info in archive.infolist():
            sha1 = hashlib.sha1(usedforsecurity=False)
            with archive.open(info) as member:
                while piece := member.read(1 << 20):
                    sha1.update(piece)
            digests[info.filename] = sha1.hexdigest()
    return digests


def append(archive_path, source, method):
    compression = {"deflated": zipfile.ZIP_DEFLATED, "stored": zipfile.ZIP_STORED}[method]
    for path in sorted(pathlib.Path(source).iterdir()):
        with zipfile.ZipFile(archive_path, "a", compression, compresslevel=1) as archive:
            archive.write(path, path.name)


TASKS = {"pack": pack, "export": export, "open": open_container, "digest": digest, "append": append}


def main(task, *arguments):
    cpu = time.process_time()
    start = time.perf_counter()
    result = TASKS[task](*arguments)
    print("elapsed", time.perf_counter() - start)
    print("task_cpu", time.process_time() - cpu)
    if task == "open":
        print("entries", len(result[2]))
    if task == "digest":
        print(*(f"{name} {text}" for name, text in result.items()), sep="\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
