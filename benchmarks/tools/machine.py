"""What the figures were taken on."""

import os
import platform
import re
import subprocess

PACKAGES = ["libarchive-tools", "coreutils", "zip", "unzip", "p7zip-full", "python3", "libzip4",
            "libminizip1", "libxml2", "libboost-dev", "libisal2", "libssl3", "libpugixml1v5", "zlib1g",
            "libarchive13", "libexpat1", "libbenchmark-dev"]


def first_line(command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()[0]
    except (OSError, subprocess.CalledProcessError, IndexError):
        return "unknown"


def cpu_model():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        found = re.search(r"model name\s*: (.*)", file.read())
    return found[1] if found else "unknown"


def memory_gib():
    return os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE") / (1 << 30)


def version(package):
    return f"{package} {first_line(['dpkg-query', '-W', '-f=${Version}', package])}"


def add_end(description):
    """A machine that others use meanwhile shows in the load behind the last run."""
    description["load of the machine"] += f", {os.getloadavg()[0]:.1f} at the end"


def describe(work_files, rounds):
    return {
        "processor": f"{cpu_model()}, {os.cpu_count()} cores, {memory_gib():.0f} GiB of memory",
        "kernel": f"{platform.system()} {platform.release().split('-')[0]}",
        "compiler": first_line([os.environ.get("CXX", "g++"), "--version"]) + ", Release",
        "packages": ", ".join(version(package) for package in PACKAGES),
        "files that are timed": f"on {work_files}",
        "runs": f"{rounds} of each contestant",
        "load of the machine": f"{os.getloadavg()[0]:.1f} at the start",
    }
