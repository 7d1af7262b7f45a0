"""Writes the handoff, the XML view of a netlist: handoff.py NETLIST DEVICE OUTPUT"""

import json
import sys
import xml.etree.ElementTree as ET

from netlist import RESOURCES, Netlist


def handoff(netlist, device):
    root = ET.Element("handoff", format="1", design=netlist.top.name)
    ET.SubElement(root, "target", device)
    modules = ET.SubElement(root, "modules")
    for module in netlist.modules.values():
        modules.append(module_element(module))
    for path, module in netlist.instance_paths():
        if module.registers:
            root.append(memory_map_element(path, module))
    return root


def module_element(module):
    element = ET.Element("module", name=module.name)
    for name, value in module.parameters.items():
        ET.SubElement(element, "parameter", name=name, value=str(value))
    for port in module.ports:
        ET.SubElement(
            element, "port", name=port.name, direction=port.direction, width=str(port.width)
        )
    for name, type_name in module.instances.items():
        ET.SubElement(element, "instance", name=name, module=type_name)
    ET.SubElement(element, "cells", {key: str(module.cells[key]) for key in RESOURCES})
    return element


def memory_map_element(path, module):
    element = ET.Element("memoryMap", instance=path, module=module.name)
    for register in module.registers:
        child = ET.SubElement(
            element,
            "register",
            name=register.name,
            offset=f"0x{register.offset:02x}",
            width=str(register.width),
            access=register.access,
        )
        if register.initial is not None:
            child.set("initial", f"0x{register.initial:02x}")
    return element


def main(netlist_path, device_path, output_path):
    with open(device_path, encoding="utf-8") as file:
        root = handoff(Netlist(netlist_path), json.load(file))
    ET.indent(root)
    text = ET.tostring(root, encoding="unicode")
    with open(output_path, "w", encoding="utf-8", newline="\n") as file:
        file.write(f'<?xml version="1.0" encoding="UTF-8"?>\n{text}\n')


if __name__ == "__main__":
    main(*sys.argv[1:])
