"""Reads the netlist of yosys: modules with their parameters, ports, instances, cells, registers."""

import json
import re
from collections import Counter
from dataclasses import dataclass

# The cells of the iCE40 library by the resource they take; SB_DFF is followed by its variant.
RESOURCE_OF_CELL = (
    (re.compile(r"SB_LUT4"), "LUT"),
    (re.compile(r"SB_DFF[A-Z]*"), "FF"),
    (re.compile(r"SB_RAM40_4K[A-Z]*"), "BRAM"),
    (re.compile(r"SB_MAC16"), "DSP"),
)
RESOURCES = ("LUT", "FF", "BRAM", "DSP")


@dataclass(frozen=True)
class Port:
    name: str
    direction: str  # "input", "output" or "inout"
    width: int


@dataclass(frozen=True)
class Register:
    name: str
    offset: int
    width: int
    access: str  # "ro", "rw" or "wo"
    initial: int | None


@dataclass
class Module:
    name: str  # as in the source, without the parameters that yosys puts into it
    parameters: dict[str, int]
    ports: list[Port]
    instances: dict[str, str]  # instance name to module name
    cells: Counter  # resource to count, this module alone
    registers: list[Register]  # by offset


class Netlist:
    """The design below one top module; every other module is reached from it."""

    def __init__(self, path):
        with open(path, encoding="utf-8") as file:
            raw = json.load(file)["modules"]
        names = {key: _source_name(key, module) for key, module in raw.items()}
        if len(set(names.values())) != len(names):
            raise ValueError(f"{path}: a module is used with two sets of parameters")
        self.modules = {names[key]: _module(names[key], raw[key], names) for key in raw}
        tops = [names[key] for key, module in raw.items() if "top" in module["attributes"]]
        if len(tops) != 1:
            raise ValueError(f"{path}: {len(tops)} top modules, 1 expected")
        self.top = self.modules[tops[0]]

    def instance_paths(self):
        """Yields (path, module) of the top module and of every instance below it."""

        def walk(path, module):
            yield path, module
            for name, type_name in module.instances.items():
                yield from walk(f"{path}/{name}", self.modules[type_name])

        return walk(self.top.name, self.top)

    def total_cells(self):
        """Counts the cells of the whole design; a module counts once per instance."""
        total = Counter()
        for _, module in self.instance_paths():
            total += module.cells
        return total


def _source_name(key, module):
    return module["attributes"].get("hdlname", key).lstrip("\\")


def _module(name, raw, names):
    cells = raw["cells"]
    nets = raw["netnames"].values()
    registers = [_register(net) for net in nets if "register" in net["attributes"]]
    return Module(
        name=name,
        parameters={
            key: int(bits, 2) for key, bits in raw.get("parameter_default_values", {}).items()
        },
        ports=[
            Port(key, port["direction"], len(port["bits"])) for key, port in raw["ports"].items()
        ],
        instances={
            key: names[cell["type"]] for key, cell in cells.items() if cell["type"] in names
        },
        cells=Counter(filter(None, (_resource(cell["type"]) for cell in cells.values()))),
        registers=sorted(registers, key=lambda register: register.offset),
    )


def _register(net):
    attributes = net["attributes"]
    initial = attributes.get("initial_value")
    return Register(
        name=attributes["register"],
        offset=int(attributes["offset"], 2),
        width=len(net["bits"]),
        access=attributes["access"],
        initial=None if initial is None else int(initial, 2),
    )


def _resource(cell_type):
    for pattern, resource in RESOURCE_OF_CELL:
        if pattern.fullmatch(cell_type):
            return resource
    return None
