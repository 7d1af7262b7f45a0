#!/usr/bin/env python3
"""Debian packages keep the rules of Debian's policy that a look at them can judge.
usage: policy.py PACKAGE..."""
import gzip
import hashlib
import os
import re
import subprocess
import sys
import tempfile

MULTIARCH = subprocess.run(["dpkg-architecture", "-qDEB_HOST_MULTIARCH"], capture_output=True, text=True,
                           check=True).stdout.strip()
# Where each package may put its files.
PLACES = {
    "libhwdef1": (f"usr/lib/{MULTIARCH}/libhwdef.so.1",),
    "libhwdef-dev": ("usr/include/hwdef-1/", f"usr/lib/{MULTIARCH}/libhwdef.so", f"usr/lib/{MULTIARCH}/cmake/hwdef/",
                     f"usr/lib/{MULTIARCH}/pkgconfig/hwdef.pc"),
    "hwdef": ("usr/bin/hwdef", "usr/share/man/man1/hwdef", "usr/share/bash-completion/completions/hwdef",
              "usr/share/zsh/vendor-completions/_hwdef"),
}
CONTROL = {"control", "md5sums"}
LIBRARY_CONTROL = CONTROL | {"shlibs", "symbols", "triggers"}
SECTIONS = {"libhwdef1": "libs", "libhwdef-dev": "libdevel", "hwdef": "utils"}


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def read(*path):
    with open(os.path.join(*path), "rb") as file:
        return file.read()


def field_faults(package, name):
    """What is wrong with the control fields; the description's first line is the synopsis."""
    fields = {key: output("dpkg-deb", "-f", package, key).rstrip("\n")
              for key in ("Section", "Priority", "Architecture", "Maintainer", "Description", "Depends")}
    expected = {"Section": SECTIONS[name], "Priority": "optional", "Architecture": "amd64"}
    yield from (f"{key} is {fields[key]}" for key, value in expected.items() if fields[key] != value)
    if not re.fullmatch(r"[\w ]+ <[\w.+-]+@[\w-]+(\.[\w-]+)+>", fields["Maintainer"]):
        yield f"no such mail address can be: {fields['Maintainer']}"
    synopsis, *rest = fields["Description"].split("\n")
    if not 0 < len(synopsis) < 80 or re.match(r"(?i)(a|an|the) |" + re.escape(name), synopsis) or synopsis[-1] == ".":
        yield f"the synopsis is \"{synopsis}\""
    if not rest or max(map(len, rest)) > 80:
        yield "the description is missing or has lines of more than 80 characters"
    if "libc6" not in fields["Depends"] and name != "libhwdef-dev":
        yield f"depends on {fields['Depends']} only"


def control_faults(tree, name):
    """Members of the control archive; each file has its checksum, and no script runs at an installation."""
    control = os.path.join(tree, "DEBIAN")
    expected = LIBRARY_CONTROL if name == "libhwdef1" else CONTROL
    if set(os.listdir(control)) != expected:
        yield f"the control archive holds {sorted(os.listdir(control))}"
    sums = dict(reversed(line.split(None, 1)) for line in read(control, "md5sums").decode().splitlines())
    for path in files(tree):
        if not os.path.islink(os.path.join(tree, path)) and \
                sums.get(path) != hashlib.md5(read(tree, path), usedforsecurity=False).hexdigest():
            yield f"md5sums doesn't fit {path}"


def files(tree):
    """All paths but directories and the control archive."""
    return sorted(os.path.relpath(os.path.join(root, file), tree) for root, _, found in os.walk(tree)
                  if not root.startswith(os.path.join(tree, "DEBIAN")) for file in found)


def listing_faults(package):
    """Owners and modes as they stand in the archive: of directories, programs and everything else."""
    for line in output("dpkg-deb", "-c", package).splitlines():
        mode, owner, _, _, _, path = line.split(None, 5)
        allowed = {"d": "drwxr-xr-x", "l": "lrwxrwxrwx"}.get(
            mode[0], "-rwxr-xr-x" if path.startswith("./usr/bin/") else "-rw-r--r--")
        if owner != "root/root" or mode != allowed:
            yield f"{path} has mode {mode} and belongs to {owner}"


def place_faults(tree, name):
    allowed = PLACES[name] + (f"usr/share/doc/{name}/",)
    yield from (f"{path} is in the wrong place" for path in files(tree) if not path.startswith(allowed))
    documents = set(os.listdir(os.path.join(tree, "usr/share/doc", name)))
    if not {"copyright", "changelog.Debian.gz"} <= documents:
        yield f"its documents are {sorted(documents)}"
    for program in filter(lambda path: path.startswith("usr/bin/"), files(tree)):
        if not os.path.exists(os.path.join(tree, f"usr/share/man/man1/{os.path.basename(program)}.1.gz")):
            yield f"{program} has no manual"


def document_faults(tree):
    """What is compressed is so as far as can be and tells no time; manuals and histories are compressed."""
    for path in files(tree):
        if path.endswith(".gz"):
            bytes_ = read(tree, path)
            if bytes_[4:9] != b"\0\0\0\0\2" or not gzip.decompress(bytes_):
                yield f"{path} isn't what gzip -9n makes"
        elif "/man/" in path or "changelog" in path:
            yield f"{path} isn't compressed"


def binary_faults(tree, name):
    """Programs and libraries are stripped, look nowhere else for libraries, and execute no data."""
    for path in files(tree):
        full = os.path.join(tree, path)
        if os.path.islink(full) or not read(full).startswith(b"\x7fELF"):
            continue
        if re.search(r"\.(symtab|debug_\w+)\b", output("readelf", "-SW", full)):
            yield f"{path} isn't stripped"
        dynamic = output("readelf", "-dW", full)
        if "PATH)" in dynamic or "TEXTREL" in dynamic:
            yield f"{path} has a run path or text relocations"
        if re.search(r"GNU_STACK.* RWE ", output("readelf", "-lW", full)):
            yield f"{path} asks for an executable stack"
        if name == "libhwdef1" and "[libhwdef.so.1]" not in dynamic:
            yield f"{path} has another soname than the package's name says"


def history_faults(tree, package, name):
    """The newest entry is the package's version, by its maintainer."""
    entry = gzip.decompress(read(tree, "usr/share/doc", name, "changelog.Debian.gz")).decode()
    version, maintainer = (output("dpkg-deb", "-f", package, key).strip() for key in ("Version", "Maintainer"))
    if not entry.startswith(f"hwdef ({version}) ") or f"\n -- {maintainer}  " not in entry:
        yield "the history tells of another version or maintainer"
    parsed = subprocess.run(["dpkg-parsechangelog", "-l-"], input=entry, capture_output=True, text=True, check=False)
    if parsed.returncode != 0 or parsed.stderr:
        yield f"the history can't be parsed: {parsed.stderr}"


def faults(package):
    name = output("dpkg-deb", "-f", package, "Package").strip()
    with tempfile.TemporaryDirectory() as directory:
        tree = os.path.join(directory, "tree")
        output("dpkg-deb", "-R", package, tree)
        found = [*field_faults(package, name), *control_faults(tree, name), *listing_faults(package),
                 *place_faults(tree, name), *document_faults(tree), *binary_faults(tree, name),
                 *history_faults(tree, package, name)]
    return [f"{name}: {what}" for what in found]


def main():
    found = [what for package in sys.argv[1:] for what in faults(package)]
    if found:
        sys.exit("\n".join(found))
    print(f"{len(sys.argv) - 1} packages keep the policy")


main()
