"""Writes a C source that sets the registers of a handoff: init_source.py HANDOFF OUTPUT"""

import sys
import xml.etree.ElementTree as ET

ACCESS = {"ro": "read only", "rw": "read and write", "wo": "write only"}

TEMPLATE = """\
/* Sets the registers of {design} to their initial values. Made from the memory map. */
#include <stddef.h>
#include <stdint.h>

enum {design}_register {{
{registers}
}};

struct {design}_setting {{
    uint8_t offset;
    uint8_t value;
}};

typedef void (*{design}_write)(void *bus, uint8_t offset, uint8_t value);

/* Calls "write" once per setting, in the order of the offsets; "bus" is handed through to it. */
void {design}_init(void *bus, {design}_write write);

static const struct {design}_setting settings[] = {{
{settings}
}};

void {design}_init(void *bus, {design}_write write)
{{
    for (size_t i = 0; i < sizeof settings / sizeof settings[0]; ++i)
        write(bus, settings[i].offset, settings[i].value);
}}
"""


def source(root):
    design = root.get("design")
    registers = []
    settings = []
    for register in root.iterfind("memoryMap/register"):
        constant = f"{design}_{register.get('name')}".upper()
        access = register.get("access")
        registers.append(f"    {constant} = {register.get('offset')}, /* {ACCESS[access]} */")
        if access != "ro" and register.get("initial") is not None:
            settings.append(f"    {{{constant}, {register.get('initial')}}},")
    return TEMPLATE.format(
        design=design, registers="\n".join(registers), settings="\n".join(settings)
    )


def main(handoff_path, output_path):
    text = source(ET.parse(handoff_path).getroot())
    with open(output_path, "w", encoding="utf-8", newline="\n") as file:
        file.write(text)


if __name__ == "__main__":
    main(*sys.argv[1:])
