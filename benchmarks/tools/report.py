#!/usr/bin/env python3
"""Writes the report: report.py RESULTS TEMPLATE OUTPUT

The template is the report with places to fill: {{machine}}, {{summary}} and, for each workload,
{{table KEY}}. A workload that the template forgets, or one that has no figures, is an error. Says which
targets aren't reached; why they aren't is for the template to say.
"""

import json
import pathlib
import re
import sys
from statistics import median

from targets import WORKLOADS

HEADINGS = {
    "wall": "wall", "cpu": "CPU", "elapsed": "task alone", "task_cpu": "CPU of the task alone",
    "size": "output", "peak": "peak memory", "text": "text of the BOM",
    "first": "first tenth of the calls", "last": "last tenth of the calls",
}


def unit_of(measure, value):
    """The unit that suits the value, and how many of it make one of the value's own."""
    if measure == "size":
        return "MB", 1e-6
    if measure in ("peak", "text"):
        return "MiB", 1 / 1024
    return ("s", 1) if value >= 1 else ("ms", 1e3) if value >= 1e-3 else ("µs", 1e6)


def digits(value):
    return f"{value:.0f}" if value >= 100 else f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def with_spread(measure, values):
    unit, factor = unit_of(measure, median(values))
    middle, least, most = (digits(value * factor) for value in (median(values), min(values), max(values)))
    return f"{middle} {unit} ({middle if least == most else f'{least} to {most}'})"


def row(cells):
    return "| " + " | ".join(cells) + " |"


def last_column(key, figures, name, measure):
    """What the contestant's own figures are worth comparing with: ours, or the number of bytes."""
    if "bytes_per_second" in figures[name] and key == "limits":
        return f"{median(figures[name]['bytes_per_second']) / 1e9:.2f} GB/s"
    if "hwdef" in figures and name != "hwdef":
        return f"{median(figures[name][measure]) / median(figures['hwdef'][measure]):.2f} x"
    return ""


def table(workload, figures):
    names = sorted(figures, key=lambda name: (name != "hwdef", int(name) if name.isdigit() else 0))
    heading = "speed" if workload.key == "limits" else "time of ours" if "hwdef" in figures else ""
    columns = [HEADINGS[measure] for measure in workload.measures]
    lines = [f"**{workload.title}**", "", row(["", *columns, heading]),
             row(["---"] + ["---:"] * (len(columns) + 1))]
    for name in names:
        cells = [with_spread(measure, figures[name][measure]) if measure in figures[name] else ""
                 for measure in workload.measures]
        lines.append(row([name, *cells, last_column(workload.key, figures, name, workload.measures[0])]))
    lines.append("")
    for target in (judge(figures) for judge in workload.targets):
        lines.append(f"- Target: {target.asked}. Found: {target.found}, {verdict(target)}.")
    return "\n".join(lines).rstrip()


def verdict(target):
    return "reached" if target.reached else "**not reached**"


def summary(results):
    lines = [row(["workload", "target", "found", ""]), row(["---"] * 4)]
    for workload in WORKLOADS:
        for judge in workload.targets:
            target = judge(results[workload.key])
            lines.append(row([workload.title, target.asked, target.found, verdict(target)]))
    return "\n".join(lines)


def machine(results):
    return "\n".join(f"- {name}: {value}" for name, value in results["machine"].items())


def fill(template, results):
    known = {workload.key: workload for workload in WORKLOADS}
    used = set()

    def place(match):
        name, _, key = match[1].partition(" ")
        if name == "machine":
            return machine(results)
        if name == "summary":
            return summary(results)
        used.add(key)
        return table(known[key], results[key])

    text = re.sub(r"\{\{([^}]+)\}\}", place, template)
    forgotten = [key for key in known if key not in used]
    if forgotten:
        sys.exit(f"the template has no place for {', '.join(forgotten)}")
    return text


def main(results_path, template_path, output_path):
    results = json.loads(pathlib.Path(results_path).read_text(encoding="utf-8"))
    missing = [workload.key for workload in WORKLOADS if workload.key not in results]
    if missing:
        sys.exit(f"no figures for {', '.join(missing)}")
    template = pathlib.Path(template_path).read_text(encoding="utf-8")
    pathlib.Path(output_path).write_text(fill(template, results), encoding="utf-8")
    for workload in WORKLOADS:
        for target in (judge(results[workload.key]) for judge in workload.targets):
            if not target.reached:
                print(f"not reached: {workload.title}: {target.asked}: {target.found}")


if __name__ == "__main__":
    main(*sys.argv[1:])
