#!/usr/bin/env python3
"""Makes the corpus of the benchmarks from the example design: corpus.py BUILT_DIR OUTPUT [--small]

The same input makes the same bytes. Below OUTPUT:
  files/   what is packed: about 60 MB of bitstreams, 500 C sources and headers, 5 MB of XML
  random/  60 MB that can't be compressed
  mixed/   500 files that make a container of 14 MB
  added/   1,000 files of 10 KB, to be added one call at a time
  many/    as many small files as the largest container has members
  big/     one file of 1 GiB
  sizes    the numbers of members of the containers, smallest first
"""

import argparse
import json
import pathlib
import random
import re
import xml.etree.ElementTree as ET

KIB = 1024
MIB = 1024 * KIB


class Scale:
    """How large everything is; the small one only shows that all works."""

    def __init__(self, small):
        self.bitstreams = MIB * (2 if small else 60)
        self.sources = 50 if small else 500
        self.xml = MIB * (1 if small else 5)
        self.random = MIB * (2 if small else 60)
        self.mixed = 50 if small else 500
        self.added = 200 if small else 1000
        self.members = [100, 1000, 4000] if small else [100, 10_000, 100_000]
        self.big = MIB * (64 if small else 1024)


def bitstreams(built, target, total):
    """Bitstreams of several seeds and two devices, alone and joined as a chain of devices is loaded.

    A chain's bitstreams begin at different offsets of the frame memory, so no two files are alike.
    """
    seeds = [path.read_bytes() for path in sorted(built.glob("*.bit"))]
    chooser = random.Random(1)
    lengths = [1, 1, 2, 3, 8, 16, 32, 60]
    written = number = 0
    while written < total:
        parts = []
        for _ in range(lengths[number % len(lengths)]):
            seed = chooser.choice(seeds)
            start = chooser.randrange(len(seed))
            parts.append(seed[start:] + seed[:start])
        content = b"".join(parts)[: total - written]
        target.joinpath(f"blinky_chain{number:03}.bit").write_bytes(content)
        written += len(content)
        number += 1


def renamed(source, name, chooser):
    """The source for another instance: its names, and other initial values."""
    text = source.replace("blinky", name).replace("BLINKY", name.upper())
    return re.sub(r", 0x[0-9a-f]{2}}", lambda _: f", 0x{chooser.randrange(256):02x}}}", text)


def sources(built, target, count):
    source = built.joinpath("blinky_init.c").read_text(encoding="ascii")
    header = source[: source.index("static const")]
    chooser = random.Random(2)
    for number in range(count):
        suffix, template = (".h", header) if number % 3 == 0 else (".c", source)
        length = chooser.randrange(KIB, 20 * KIB)
        text = ""
        instance = 0
        while len(text) < length:
            text += renamed(template, f"ip{number:03}_u{instance}", chooser)
            instance += 1
        target.joinpath(f"ip{number:03}_init{suffix}").write_text(text[:length], encoding="ascii")


def cell_element(parent, name, cell, instance):
    element = ET.SubElement(parent, "cell", name=f"u{instance}/{name}", type=cell["type"])
    for port, bits in cell["connections"].items():
        nets = " ".join(bit if isinstance(bit, str) else str(bit + 5000 * instance) for bit in bits)
        ET.SubElement(element, "port", name=port, direction=cell["port_directions"].get(port, ""), nets=nets)


def netlist_xml(netlist, instances):
    root = ET.Element("netlist", creator=netlist["creator"])
    for instance in instances:
        for name, module in netlist["modules"].items():
            parent = ET.SubElement(root, "module", name=f"{name}_{instance}")
            for cell_name, cell in module["cells"].items():
                cell_element(parent, cell_name, cell, instance)
    ET.indent(root)
    return ET.tostring(root, encoding="utf-8", xml_declaration=True)


def netlists(built, target, total):
    netlist = json.loads(built.joinpath("blinky.netlist.json").read_text(encoding="utf-8"))
    written = number = 0
    while written < total:
        instances = range(3 * number, 3 * number + 1 + number % 3)
        content = netlist_xml(netlist, instances)
        target.joinpath(f"netlist{number:02}.xml").write_bytes(content)
        written += len(content)
        number += 1


def noise(target, total, size):
    chooser = random.Random(3)
    for number in range(-(-total // size)):
        target.joinpath(f"noise{number:02}.bin").write_bytes(chooser.randbytes(size))


def mixed(files, noise_dir, target, count):
    """Every other file is noise, so that the container has the size that users' containers have."""
    texts = [path.read_bytes() for path in sorted(files.glob("ip*"))]
    noise_bytes = noise_dir.joinpath("noise00.bin").read_bytes()
    for number in range(count):
        start = number * 17_011 % (len(noise_bytes) - 54 * KIB)
        content = noise_bytes[start : start + 52 * KIB] if number % 2 else texts[number // 2 % len(texts)]
        target.joinpath(f"part{number:03}.dat").write_bytes(content)


def slices(text, length):
    start = 0
    while True:
        if start + length > len(text):
            start %= 997
        yield text[start : start + length]
        start += length + 13


def added(files, target, count):
    pieces = slices(b"".join(path.read_bytes() for path in sorted(files.glob("ip*"))), 10 * KIB)
    for number in range(count):
        target.joinpath(f"added{number:04}.c").write_bytes(next(pieces))


def many(files, target, count):
    text = b"".join(path.read_bytes() for path in sorted(files.glob("ip*")))
    chooser = random.Random(4)
    suffixes = ["c", "h", "bit", "xml", "tcl", "mmi"]
    for number in range(count):
        length = chooser.randrange(60, 600)
        start = chooser.randrange(len(text) - length)
        name = f"block{number:06}_part.{suffixes[number % len(suffixes)]}"
        target.joinpath(name).write_bytes(text[start : start + length])


def big(files, noise_dir, target, total):
    """Bitstreams and noise by turns, as a device image with encrypted partitions has them."""
    streams = b"".join(path.read_bytes() for path in sorted(files.glob("*.bit")))[: 3 * MIB]
    block = streams + noise_dir.joinpath("noise00.bin").read_bytes()[:MIB]
    with open(target / "image.bit", "wb") as image:
        while image.tell() < total:
            image.write(block[: total - image.tell()])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("built", type=pathlib.Path)
    parser.add_argument("output", type=pathlib.Path)
    parser.add_argument("--small", action="store_true")
    arguments = parser.parse_args()
    scale = Scale(arguments.small)
    dirs = {}
    for name in ("files", "random", "mixed", "added", "many", "big"):
        dirs[name] = arguments.output / name
        dirs[name].mkdir(parents=True)
    bitstreams(arguments.built, dirs["files"], scale.bitstreams)
    sources(arguments.built, dirs["files"], scale.sources)
    netlists(arguments.built, dirs["files"], scale.xml)
    noise(dirs["random"], scale.random, MIB * (2 if arguments.small else 10))
    mixed(dirs["files"], dirs["random"], dirs["mixed"], scale.mixed)
    added(dirs["files"], dirs["added"], scale.added)
    many(dirs["files"], dirs["many"], scale.members[-1])
    big(dirs["files"], dirs["random"], dirs["big"], scale.big)
    arguments.output.joinpath("sizes").write_text(" ".join(map(str, scale.members)) + "\n", encoding="ascii")


if __name__ == "__main__":
    main()
