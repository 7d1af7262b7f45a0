"""Writes what nextpnr used and what the device has: resources.py REPORT LOG OUTPUT

A logic cell holds one LUT and one FF. The report counts logic cells; how many of them use which
half stands in the log only.
"""

import json
import re
import sys


def resources(report, log):
    utilization = report["utilization"]
    lut_only = logged(log, "LUT4 only")
    both = logged(log, "LUT4 and DFF")
    ff_only = logged(log, "DFF only")
    cells = utilization["ICESTORM_LC"]["available"]
    bram = utilization["ICESTORM_RAM"]
    dsp = utilization.get("ICESTORM_DSP", {"used": 0, "available": 0})  # no DSP, no line
    return {
        "used": {
            "LUT": lut_only + both,
            "FF": both + ff_only,
            "BRAM": bram["used"],
            "DSP": dsp["used"],
        },
        "available": {
            "LUT": cells,
            "FF": cells,
            "BRAM": bram["available"],
            "DSP": dsp["available"],
        },
    }


def logged(log, use):
    found = re.search(rf"(\d+) LCs used as {use}$", log, re.MULTILINE)
    if not found:
        raise ValueError(f'the log has no count of "LCs used as {use}"')
    return int(found.group(1))


def main(report_path, log_path, output_path):
    with open(report_path, encoding="utf-8") as report, open(log_path, encoding="utf-8") as log:
        counts = resources(json.load(report), log.read())
    with open(output_path, "w", encoding="utf-8", newline="\n") as file:
        json.dump(counts, file, indent=4)
        file.write("\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
