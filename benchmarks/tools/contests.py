"""The whole-process comparisons, each of them with the checks of what the programs made."""

import filecmp
import hashlib
import pathlib
import shutil
import struct
import zipfile

from measure import Contestant, Failed, contest, run

# The system's own interpreter, as the other peers are the system's.
PYTHON = "/usr/bin/python3"
PEERS = pathlib.Path(__file__).with_name("peers.py")
BOM_NAMES = ("hwdef.xml", "sysdef.xml")


def require(condition, what):
    if not condition:
        raise Failed(what)


def remove(path):
    """Removes a file or a directory that a benchmark made itself."""
    if path.is_dir():
        shutil.rmtree(path)
    else:
        path.unlink(missing_ok=True)


def files_of(*dirs):
    return {path.name: path for name in dirs for path in sorted(name.iterdir())}


class Contests:
    """`bin` holds the programs, `corpus` what they read, `work` what they make."""

    def __init__(self, bin_dir, corpus, work, rounds):
        self.driver = bin_dir / "bench_driver"
        self.copier = bin_dir / "bench_copier"
        self.corpus = corpus
        self.work = work
        self.rounds = rounds
        self.sizes = [int(word) for word in corpus.joinpath("sizes").read_text().split()]
        self.checked = set()

    def many(self, count):
        return self.work / f"many{count}.hdf"

    def prepare(self):
        """The containers that others read, made by the library itself."""
        for count in self.sizes:
            run([self.driver, "make", self.many(count), self.corpus / "many", count])
        run([self.driver, "make", self.work / "mixed.hdf", self.corpus / "mixed", 0])
        run([self.driver, "pack", self.work / "corpus.hdf", self.corpus / "files", self.corpus / "random"])
        run([self.driver, "pack", self.work / "big.hdf", self.corpus / "big"])

    def once(self, key):
        """True for the first call with that key: comparing all bytes after one run is enough."""
        new = key not in self.checked
        self.checked.add(key)
        return new

    def fresh(self, path, directory=False):
        def make():
            remove(path)
            if directory:
                path.mkdir()
        return make

    def archive_check(self, key, path, expected):
        """The archive holds the files byte for byte; tells the archive's size."""
        def check(_):
            with zipfile.ZipFile(path) as archive:
                members = [info for info in archive.infolist()
                           if not info.is_dir() and info.filename not in BOM_NAMES]
                require(len(members) == len(expected), f"{path} has {len(members)} members")
                for info in members if self.once(key) else []:
                    source = expected[pathlib.PurePath(info.filename).name]
                    require(archive.read(info) == source.read_bytes(), f"{info.filename} in {path} differs")
            return {"size": path.stat().st_size}
        return check

    def digest_check(self, key, path, check):
        """Besides `check`: the archive ends in the SHA-256 of all bytes in front of it."""
        def check_both(figures):
            content = path.read_bytes() if self.once((key, "digest")) else None
            require(content is None or content[-64:] == hashlib.sha256(content[:-64]).hexdigest().encode(),
                    f"the archive digest of {path} differs from hashlib's")
            return check(figures)
        return check_both

    def packing(self, key, dirs):
        expected = files_of(*(self.corpus / name for name in dirs))
        def packer(name, command, suffix="zip"):
            out = self.work / f"packed.{suffix}"
            check = self.archive_check((key, name), out, expected)
            if name == "hwdef":
                check = self.digest_check(key, out, check)
            return Contestant(name, [out if part == "OUT" else part for part in command], self.fresh(out),
                              check, self.corpus)
        return contest([
            packer("hwdef", [self.driver, "pack", "OUT", *dirs], "hdf"),
            packer("bsdtar -1", ["bsdtar", "--format", "zip", "--options",
                                 "zip:compression=deflate,zip:compression-level=1", "-cf", "OUT", *dirs]),
            packer("zip -1", ["zip", "-q", "-r", "-1", "OUT", *dirs]),
            packer("7z -mx=1", ["7z", "a", "-tzip", "-mx=1", "-mmt=1", "-bd", "OUT", *dirs]),
            packer("python zipfile level 1", [PYTHON, PEERS, "pack", "OUT", *dirs]),
        ], self.rounds)

    def pack(self):
        return self.packing("pack", ["files", "random"])

    def pack_random(self):
        return self.packing("pack-random", ["random"])

    def export(self):
        container = self.work / "corpus.hdf"
        expected = files_of(self.corpus / "files", self.corpus / "random")
        out = self.work / "exported"
        def check_for(name):
            def check(_):
                found = [path.name for path in out.iterdir() if path.name not in BOM_NAMES]
                require(len(found) == len(expected), f"{name} exported {len(found)} files")
                for file in found if self.once(("export", name)) else []:
                    require(filecmp.cmp(out / file, expected[file], shallow=False), f"{file} differs")
            return check
        def exporter(name, *command):
            return Contestant(name, command, self.fresh(out, directory=True), check_for(name))
        return contest([
            exporter("hwdef", self.driver, "export", container, out),
            exporter("unzip", "unzip", "-qq", container, "-d", out),
            exporter("bsdtar", "bsdtar", "-xf", container, "-C", out),
            exporter("7z", "7z", "x", "-y", "-mmt=1", "-bd", f"-o{out}", container),
            exporter("python zipfile", PYTHON, PEERS, "export", container, out),
        ], self.rounds)

    def open(self, count):
        def check(figures):
            require(figures["entries"] == count, f"{figures['entries']} of {count} entries")
        return contest([
            Contestant("hwdef", [self.driver, "open", self.many(count)], check=check),
            Contestant("python zipfile + ElementTree", [PYTHON, PEERS, "open", self.many(count)], check=check),
        ], self.rounds)

    def rewrite(self):
        container = self.work / "mixed.hdf"
        original = container.read_bytes()
        out = self.work / "rewritten.hdf"
        expected = files_of(self.corpus / "mixed")
        def start_over():
            out.write_bytes(original)
        return contest([
            Contestant("hwdef", [self.driver, "rewrite", out], start_over,
                       self.digest_check("rewrite", out,
                                         self.archive_check(("rewrite", "hwdef"), out, expected))),
            Contestant("zip -U", ["zip", "-q", "-U", container, "*", "--out", out], self.fresh(out),
                       self.archive_check(("rewrite", "zip"), out, expected)),
            Contestant("cp", ["cp", container, out], self.fresh(out),
                       self.archive_check(("rewrite", "cp"), out, expected)),
        ], self.rounds)

    def copy_all(self):
        container = self.many(self.sizes[-1])
        out = self.work / "copied.zip"
        expected = files_of(self.corpus / "many")
        def copier(name, *command):
            return Contestant(name, command, self.fresh(out),
                              self.archive_check(("copy-all", name), out, expected))
        return contest([
            copier("hwdef", self.copier, container, out),
            copier("zip -U", "zip", "-q", "-U", container, "*", "--out", out),
        ], self.rounds)

    def digest(self):
        container = self.work / "corpus.hdf"
        files = files_of(self.corpus / "files", self.corpus / "random")
        sha1s = {name: hashlib.sha1(path.read_bytes()) for name, path in files.items()}
        words = {name: "".join(map(str, struct.unpack(">5I", sha1.digest()))) for name, sha1 in sha1s.items()}
        hexadecimal = {name: sha1.hexdigest() for name, sha1 in sha1s.items()}
        whole = hashlib.sha1()
        with zipfile.ZipFile(container) as archive:
            for info in archive.infolist():
                name = info.filename
                whole.update(archive.read(name) if name in BOM_NAMES else files[name].read_bytes())
        def check_for(expected):
            def check(figures):
                lines = [line.split(" ") for line in figures["output"].splitlines()]
                require({line[0]: line[1] for line in lines if line[0] in expected} == expected,
                        "the digests differ from those of the files")
            return check
        def check_whole(figures):
            require(figures["output"].split()[0] == whole.hexdigest(), "the digest of all bytes differs")
        return contest([
            Contestant("hwdef", [self.driver, "digest", container], check=check_for(words)),
            Contestant("python zipfile + hashlib", [PYTHON, PEERS, "digest", container],
                       check=check_for(hexadecimal)),
            Contestant("bsdtar -xO into sha1sum", ["sh", "-c", f"bsdtar -xOf '{container}' | sha1sum"],
                       check=check_whole),
        ], self.rounds)

    def append(self):
        out = self.work / "appended.zip"
        added = self.corpus / "added"
        expected = files_of(added)
        def appender(name, *command):
            return Contestant(name, command, self.fresh(out),
                              self.archive_check(("append", name), out, expected))
        return contest([
            appender("hwdef", self.driver, "append", out, added),
            appender("python append (level 1)", PYTHON, PEERS, "append", out, added, "deflated"),
            appender("python append (stored)", PYTHON, PEERS, "append", out, added, "stored"),
        ], self.rounds)

    def memory_big(self):
        image = self.corpus / "big" / "image.bit"
        container = self.work / "big.hdf"
        out = self.work / "big-out"
        def same_file(_):
            require(filecmp.cmp(out / "image.bit", image, shallow=False), "the exported image differs")
        def same_archive(name):
            def check(_):
                if not self.once(("big", name)):
                    return
                with zipfile.ZipFile(out) as archive, archive.open("image.bit") as member:
                    with open(image, "rb") as file:
                        while piece := file.read(1 << 20):
                            require(member.read(len(piece)) == piece, f"the image of {name} differs")
                        require(not member.read(1), f"the image of {name} is too long")
            return check
        sha1 = hashlib.sha1()
        with open(image, "rb") as file:
            while piece := file.read(1 << 20):
                sha1.update(piece)
        text = "image.bit " + "".join(map(str, struct.unpack(">5I", sha1.digest())))
        def same_digest(figures):
            require(text in figures["output"].splitlines(), "the image's digest differs from hashlib's")
        return contest([
            Contestant("pack", [self.driver, "pack", out, image.parent], self.fresh(out),
                       same_archive("pack")),
            Contestant("export", [self.driver, "export", container, out],
                       self.fresh(out, directory=True), same_file),
            Contestant("digest", [self.driver, "digest", container], self.fresh(out), same_digest),
            Contestant("copy", [self.driver, "copy", "image.bit", container, out], self.fresh(out),
                       same_archive("copy")),
        ], self.rounds)

    def memory_open(self):
        container = self.many(self.sizes[-1])
        with zipfile.ZipFile(container) as archive:
            text_kib = archive.getinfo("hwdef.xml").file_size / 1024
        def check(figures):
            require(figures["entries"] == self.sizes[-1], "entries are missing")
            return {"text": text_kib}
        return contest([Contestant("hwdef", [self.driver, "open", container], check=check)], self.rounds)

    def all(self):
        """Name and function of each comparison."""
        return {
            "pack": self.pack, "pack-random": self.pack_random, "export": self.export,
            "open-python/medium": lambda: self.open(self.sizes[1]),
            "open-python/large": lambda: self.open(self.sizes[2]),
            "rewrite": self.rewrite, "copy-all": self.copy_all, "digest": self.digest, "append": self.append,
            "memory-big": self.memory_big, "memory-open": self.memory_open,
        }
