"""Runs programs and takes their time and memory."""

import os
import subprocess
import tempfile
import time


class Failed(Exception):
    """A program, or the check of what it made, failed."""


def run(command, cwd=None):
    """The figures of one run, all children included: wall, cpu (seconds), and what it printed.

    A program that prints "name value" lines adds these as figures; other lines are kept in "output".
    """
    command = [str(part) for part in command]
    with tempfile.TemporaryFile() as output:
        start = time.perf_counter()
        process = subprocess.Popen(command, cwd=cwd, stdin=subprocess.DEVNULL, stdout=output, stderr=output)
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.perf_counter() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        output.seek(0)
        text = output.read().decode("utf-8", "replace")
    if process.returncode != 0:
        raise Failed(f"{command}: status {process.returncode}\n{text[-2000:]}")
    figures = {"wall": wall, "cpu": usage.ru_utime + usage.ru_stime, "output": text}
    for line in text.splitlines():
        words = line.split()
        if len(words) == 2 and words[0] in ("elapsed", "task_cpu", "peak", "first", "last", "entries"):
            figures[words[0]] = float(words[1])
    return figures


class Contestant:
    """One program of a contest. `prepare` is called before, `check` after each run; neither is timed."""

    def __init__(self, name, command, prepare=None, check=None, cwd=None):
        self.name = name
        self.command = command
        self.prepare = prepare or (lambda: None)
        self.check = check or (lambda figures: None)
        self.cwd = cwd


def contest(contestants, rounds):
    """Runs the contestants by turns, each round beginning with another one, and collects the figures."""
    collected = {contestant.name: {} for contestant in contestants}
    for number in range(rounds):
        first = number % len(contestants)
        for contestant in contestants[first:] + contestants[:first]:
            contestant.prepare()
            figures = run(contestant.command, contestant.cwd)
            more = contestant.check(figures) or {}
            for name, value in {**figures, **more}.items():
                if name != "output":
                    collected[contestant.name].setdefault(name, []).append(value)
    return collected
