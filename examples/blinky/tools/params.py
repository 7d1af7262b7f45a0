"""Writes the software parameters of a netlist: params.py NETLIST OUTPUT

The members are texts, all of them, and "refName" comes first.
"""

import json
import sys

from netlist import RESOURCES, Netlist


def parameters(netlist):
    paths = list(netlist.instance_paths())
    result = {"refName": f"{netlist.top.name}_0", "design": netlist.top.name}
    for name, value in netlist.top.parameters.items():
        result[name.lower()] = str(value)
    for _, module in paths:
        for register in module.registers:
            result[f"register_{register.name}"] = f"0x{register.offset:02x}"
    result["modules"] = str(len(netlist.modules))
    result["instances"] = str(len(paths) - 1)  # the top module is no instance
    cells = netlist.total_cells()
    for resource in RESOURCES:
        result[f"cells_{resource.lower()}"] = str(cells[resource])
    return result


def main(netlist_path, output_path):
    with open(output_path, "w", encoding="utf-8", newline="\n") as file:
        json.dump(parameters(Netlist(netlist_path)), file, indent=4)
        file.write("\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
