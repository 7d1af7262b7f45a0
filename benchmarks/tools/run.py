#!/usr/bin/env python3
"""Runs the benchmarks and stores the figures: run.py --help"""

import argparse
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

from contests import Contests
from machine import add_end, describe
from measure import Failed

HERE = pathlib.Path(__file__).resolve().parent
ROOM_BYTES = {False: 6 << 30, True: 1 << 30}


def parse():
    parser = argparse.ArgumentParser()
    parser.add_argument("--bin", type=pathlib.Path, required=True, help="directory of the programs")
    parser.add_argument("--built", type=pathlib.Path, required=True, help="built files of the example design")
    parser.add_argument("--cache", type=pathlib.Path, required=True, help="where the corpus is kept")
    parser.add_argument("--results", type=pathlib.Path, required=True, help="file that the figures go to")
    parser.add_argument("--small", action="store_true", help="a small corpus, every workload once")
    parser.add_argument("--rounds", type=int, help="runs of each workload (7, small 1)")
    parser.add_argument("--only", default="", help="workloads to run, separated by commas; others' figures stay")
    return parser.parse_args()


def corpus(cache, built, small):
    """The corpus below `cache`, made when it isn't there or its maker is newer."""
    target = cache / ("small" if small else "full")
    maker = HERE / "corpus.py"
    done = target / "sizes"
    if not done.exists() or done.stat().st_mtime < maker.stat().st_mtime:
        shutil.rmtree(target, ignore_errors=True)
        target.mkdir(parents=True)
        subprocess.run([sys.executable, maker, built, target, *(["--small"] if small else [])], check=True)
    return target


def work_parent(small):
    """A tmpfs when there is one with room, so that no disk is timed; else the usual place."""
    tmpfs = pathlib.Path("/dev/shm")
    if tmpfs.is_dir() and os.access(tmpfs, os.W_OK) and shutil.disk_usage(tmpfs).free > ROOM_BYTES[small]:
        return tmpfs, "tmpfs"
    return pathlib.Path(tempfile.gettempdir()), "disk"


def in_process(arguments, work, wanted, rounds):
    """The figures of the in-process comparisons, by workload and contestant."""
    out = work / "in-process.json"
    command = [arguments.bin / "bench_inprocess", f"--benchmark_repetitions={rounds}",
               "--benchmark_enable_random_interleaving=true", f"--benchmark_out={out}",
               "--benchmark_out_format=json"]
    if wanted:
        command.append("--benchmark_filter=^(" + "|".join(wanted) + ")[/:]")
    environment = {**os.environ, "HWDEF_BENCH_DIR": str(work), "TMPDIR": str(work / "tmp"),
                   "HWDEF_BENCH_SMALL": "1" if arguments.small else ""}
    subprocess.run(command, check=True, env=environment, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)
    figures = {}
    for run in json.loads(out.read_text())["benchmarks"] if out.stat().st_size else []:
        if run.get("error_occurred"):
            raise Failed(f"{run['name']}: {run['error_message']}")
        if run["run_type"] != "iteration":
            continue
        workload, contestant = run["name"].split(":")[:2]
        contestant = contestant.split("/iterations")[0]
        unit = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1}[run["time_unit"]]
        found = figures.setdefault(workload, {}).setdefault(contestant, {})
        found.setdefault("wall", []).append(run["real_time"] * unit)
        found.setdefault("cpu", []).append(run["cpu_time"] * unit)
        if "bytes_per_second" in run:
            found.setdefault("bytes_per_second", []).append(run["bytes_per_second"])
    return figures


def measure(arguments, work, results, rounds):
    wanted = [name for name in arguments.only.split(",") if name]
    contests = Contests(arguments.bin, work / "corpus", work, rounds)
    contests.prepare()
    for name, run in contests.all().items():
        if wanted and name.split("/")[0] not in wanted:
            continue
        start = time.monotonic()
        results[name] = run()
        print(f"{name}: {time.monotonic() - start:.1f} s", file=sys.stderr, flush=True)
    start = time.monotonic()
    results.update(in_process(arguments, work, wanted, rounds))
    print(f"in-process: {time.monotonic() - start:.1f} s", file=sys.stderr, flush=True)


def main():
    arguments = parse()
    for name in ("bin", "built", "cache", "results"):
        setattr(arguments, name, getattr(arguments, name).resolve())
    results = json.loads(arguments.results.read_text()) if arguments.only and arguments.results.exists() else {}
    source = corpus(arguments.cache, arguments.built, arguments.small)
    parent, kind = work_parent(arguments.small)
    rounds = arguments.rounds or (1 if arguments.small else 7)
    results["machine"] = describe(kind, rounds)
    with tempfile.TemporaryDirectory(prefix="hwdef-bench-", dir=parent) as name:
        work = pathlib.Path(name)
        (work / "tmp").mkdir()
        os.environ["TMPDIR"] = str(work / "tmp")
        shutil.copytree(source, work / "corpus", copy_function=shutil.copyfile)
        try:
            measure(arguments, work, results, rounds)
            add_end(results["machine"])
        except Failed as error:
            sys.exit(f"failed: {error}")
        finally:
            arguments.results.write_text(json.dumps(results))


if __name__ == "__main__":
    main()
