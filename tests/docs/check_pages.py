#!/usr/bin/env python3
"""Links, paths and commands of all pages hold: usage: check_pages.py BUILD_DIR

Links lead to files and headings that exist, paths in backticks exist, targets of make, presets, options and
verbs are there, the BOM's page names each element and attribute, and blocks behind the mark `<!-- run -->` run,
in a directory that holds design.hdf."""
import glob
import os
import re
import subprocess
import sys
import tempfile

ROOT = os.path.realpath(os.path.join(os.path.dirname(__file__), "..", ".."))
PAGES = ["README.md", "CONTRIBUTING.md", "CHANGELOG.md", *glob.glob("docs/*.md", root_dir=ROOT),
         *glob.glob("examples/*/README.md", root_dir=ROOT)]
README_LINES = 100

LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")
PATH = re.compile(r"`((?:\.ci|benchmarks|bindings|cmake|docs|examples|hwdef|packaging|platform|tests|tools)/[\w./*-]*)`")
MAKE = re.compile(r"(?:^ {4}|`|^)make ((?:[a-z][a-z-]*\b ?)+)", re.MULTILINE)
PRESET = re.compile(r"--preset (\w+)")
OPTION = re.compile(r"\b(HWDEF_[A-Z_]+)\b")
VERB = re.compile(r"(?:^ {4}|`|^)hwdef ([a-z]+)", re.MULTILINE)
RUN = re.compile(r"<!-- run -->\n(?:```sh\n(.*?)```|((?:    [^\n]*\n)+))", re.DOTALL)


def read(path):
    with open(os.path.join(ROOT, path), encoding="utf-8") as file:
        return file.read()


def anchors(text):
    """The names under which the headings of a page can be linked to."""
    titles = re.findall(r"^#+ (.*)$", text, re.MULTILINE)
    return {re.sub(r"[^\w -]", "", title.lower()).replace(" ", "-") for title in titles}


def broken_links(page, text):
    for link in LINK.findall(text):
        if re.match(r"\w+:", link):
            continue
        path, _, anchor = link.partition("#")
        target = os.path.normpath(os.path.join(os.path.dirname(page), path)) if path else page
        if not os.path.exists(os.path.join(ROOT, target)):
            yield f"the link {link} leads nowhere"
        elif anchor and anchor not in anchors(read(target)):
            yield f"{target} has no heading #{anchor}"


def exists(page, path):
    """Below the root or beside the page; a name without an extension stands for a header and its source."""
    starts = (ROOT, os.path.join(ROOT, os.path.dirname(page)))
    return any(glob.glob(os.path.join(start, path + end)) for start in starts for end in ("", ".*"))


def unknown_names(page, text):
    yield from (f"there is no {path}" for path in PATH.findall(text) if not exists(page, path))
    targets = set(re.findall(r"^([a-z][a-z-]*):", read("Makefile"), re.MULTILINE))
    for names in MAKE.findall(text):
        yield from (f"make knows no {name}" for name in names.split()[:1] if name not in targets)
    presets = set(re.findall(r'"name": "(\w+)"', read("CMakePresets.json")))
    yield from (f"there is no preset {name}" for name in PRESET.findall(text) if name not in presets)
    built = "".join(read(path) for path in ("CMakeLists.txt", "cmake/CompileOptions.cmake", "platform/Export.h",
                                            "tests/reliability/SoakTest.cpp"))
    yield from (f"there is no option {name}" for name in OPTION.findall(text) if name not in built)


def unknown_verbs(text, command):
    for verb in set(VERB.findall(text)):
        done = subprocess.run([command, verb, "--help"], capture_output=True, check=False)
        if done.returncode != 0:
            yield f"the command knows no {verb}"


def failing_blocks(text, producer):
    for blocks in RUN.findall(text):
        script = "".join(blocks)
        with tempfile.TemporaryDirectory() as directory:
            built = os.path.join(ROOT, "examples", "blinky", "built")
            subprocess.run([producer, "design.hdf", f"{built}/blinky.hwh", f"{built}/blinky.bit"], cwd=directory,
                           check=True, stdout=subprocess.DEVNULL)
            done = subprocess.run(["sh", "-e"], input=script, cwd=directory, text=True, capture_output=True,
                                  check=False)
            if done.returncode != 0:
                yield f"this fails: {script}{done.stderr}"


def undescribed_vocabulary():
    """Elements and attributes of the BOM document that its page doesn't name."""
    vocabulary = read("hwdef/bom/BomNames.h").split("namespace value")[0]
    names = re.findall(r'^inline .* = "(\w+)"', vocabulary, re.MULTILINE)
    page = read("docs/bom.md")
    yield from (f"docs/bom.md: {name} isn't described" for name in names
                if not re.search(rf"(?<![\w-]){name}(?![\w-])", page))


def main():
    build = os.path.abspath(sys.argv[1])
    command = os.path.join(build, "tools", "hwdef")
    wrong = []
    for page in PAGES:
        text = read(page)
        found = [*broken_links(page, text), *unknown_names(page, text)]
        if os.path.exists(command):
            found += unknown_verbs(text, command)
        found += failing_blocks(text, os.path.join(build, "examples", "first_producer"))
        wrong += [f"{page}: {what}" for what in found]
    wrong += undescribed_vocabulary()
    lines = read("README.md").count("\n")
    if lines > README_LINES:
        wrong.append(f"README.md: {lines} lines, at most {README_LINES}")
    if wrong:
        sys.exit("\n".join(wrong))
    print(f"{len(PAGES)} pages hold")


main()
