"""The workloads as the report shows them, each with its targets.

A target gives the text of what was asked, the figure found as text, and whether that is enough.
"""

from statistics import median

MIB_IN_KIB = 1024


class Target:
    def __init__(self, asked, found, reached):
        self.asked = asked
        self.found = found
        self.reached = reached


def middle(figures, contestant, measure):
    return median(figures[contestant][measure])


def and_cpu(measure, ratio_of):
    """The ratio by CPU time, which a busy machine disturbs less, behind one of another measure."""
    if measure == "cpu":
        return ""
    return f" (CPU {ratio_of('task_cpu' if measure == 'elapsed' else 'cpu'):.2f} x)"


def at_least(factor, ours, peers, measure):
    """Ours is that many times as fast as the fastest of the peers."""
    def judge(figures):
        fastest = min(peers, key=lambda peer: middle(figures, peer, measure))
        def ratio_of(measured):
            return middle(figures, fastest, measured) / middle(figures, ours, measured)
        ratio = ratio_of(measure)
        whom = fastest if len(peers) == 1 else "the fastest peer"
        asked = f"{factor:g} x {whom}" if factor > 1 else f"no slower than {whom}"
        return Target(asked, f"{ratio:.2f} x {fastest}{and_cpu(measure, ratio_of)}", ratio >= factor)
    return judge


def faster(ours, peer, measure):
    judge_ratio = at_least(1, ours, [peer], measure)
    def judge(figures):
        found = judge_ratio(figures)
        reached = middle(figures, ours, measure) < middle(figures, peer, measure)
        return Target(f"faster than {peer}", found.found, reached)
    return judge


def within(factor, ours, peer, measure):
    """Ours takes at most that many times as long."""
    def judge(figures):
        def ratio_of(measured):
            return middle(figures, ours, measured) / middle(figures, peer, measured)
        ratio = ratio_of(measure)
        found = f"{ratio:.2f} x{and_cpu(measure, ratio_of)}"
        return Target(f"within {factor:g} x {peer}", found, ratio <= factor)
    return judge


def no_larger(peer):
    def judge(figures):
        ours, theirs = middle(figures, "hwdef", "size"), middle(figures, peer, "size")
        return Target(f"output not larger than that of {peer}", f"{ours / 1e6:.2f} MB to {theirs / 1e6:.2f} MB",
                      ours <= theirs)
    return judge


def even_calls(figures):
    """The last hundred calls of a thousand against the first hundred."""
    ratio = middle(figures, "hwdef", "last") / middle(figures, "hwdef", "first")
    return Target("last hundred calls within 1.5 x the first hundred", f"{ratio:.2f} x", ratio <= 1.5)


def peak_below(mib):
    def judge(figures):
        highest = max(max(found["peak"]) for found in figures.values()) / MIB_IN_KIB
        return Target(f"peak below {mib} MiB in each", f"{highest:.1f} MiB", highest < mib)
    return judge


def peak_of_text(factor):
    def judge(figures):
        ratio = max(figures["hwdef"]["peak"]) / middle(figures, "hwdef", "text")
        return Target(f"peak below {factor} x the text of the BOM", f"{ratio:.2f} x", ratio < factor)
    return judge


def growth(bound):
    def judge(figures):
        small, large = sorted(figures, key=int)
        def ratio_of(measured):
            return middle(figures, large, measured) / middle(figures, small, measured) * int(small) / int(large)
        ratio = ratio_of("wall")
        found = f"{ratio:.2f} x{and_cpu('wall', ratio_of)}"
        return Target(f"time per entry within {bound} x", found, ratio <= bound)
    return judge


class Workload:
    """`key` is that of the figures; `measures` are the columns, the first one the one that is judged."""

    def __init__(self, key, title, measures, targets=()):
        self.key = key
        self.title = title
        self.measures = measures
        self.targets = targets


TOOLS = ["bsdtar -1", "zip -1", "7z -mx=1", "python zipfile level 1"]
XML_PEERS = ["libzip + libxml2 tree", "libzip + libxml2 events"]
TASK_ALONE = ["elapsed", "task_cpu", "wall", "cpu"]
PYTHON_APPEND = ["python append (level 1)", "python append (stored)"]
PYTHON_OPEN = "python zipfile + ElementTree"

SIZES = [("medium", "10,000"), ("large", "100,000")]

WORKLOADS = [
    Workload("pack", "Pack the whole corpus", ["wall", "cpu", "size"],
             [at_least(4.5, "hwdef", TOOLS, "wall"), no_larger("bsdtar -1")]),
    Workload("pack-random", "Pack random data", ["wall", "cpu", "size"], [at_least(5, "hwdef", TOOLS, "wall")]),
    Workload("export", "Export everything to a directory", ["wall", "cpu"],
             [at_least(2.2, "hwdef", ["unzip", "bsdtar", "7z", "python zipfile"], "wall")]),
    Workload("open/small", "Open 100 entries, in process", ["wall", "cpu"]),
    *(Workload(f"open/{size}", f"Open {count} entries, in process", ["wall", "cpu"],
               [at_least(5, "hwdef", XML_PEERS, "wall")]) for size, count in SIZES),
    *(Workload(f"open-python/{size}", f"Open {count} entries, against python", TASK_ALONE,
               [at_least(12, "hwdef", [PYTHON_OPEN], "elapsed")]) for size, count in SIZES),
    Workload("member", "Read one member of 100,000", ["wall", "cpu"],
             [at_least(12, "hwdef", ["libzip"], "wall"), at_least(10, "hwdef", ["minizip"], "wall")]),
    Workload("rewrite", "Rewrite a container unchanged, whole processes", ["wall", "cpu"],
             [faster("hwdef", "zip -U", "wall"), within(3, "hwdef", "cp", "wall")]),
    Workload("rewrite-opened", "Rewrite an opened container unchanged, in process", ["wall", "cpu"],
             [within(3, "hwdef", "copy of the bytes", "wall")]),
    Workload("copy-all", "Copy all of 100,000 members as they are", ["wall", "cpu"],
             [at_least(2.5, "hwdef", ["zip -U"], "wall")]),
    Workload("digest", "Digests of all members", ["cpu", "wall"],
             [at_least(1, "hwdef", ["python zipfile + hashlib", "bsdtar -xO into sha1sum"], "cpu")]),
    Workload("sha1", "SHA-1 alone, 10 MiB", ["wall", "cpu"], [at_least(2.3, "hwdef", ["Boost at -O2"], "wall")]),
    Workload("append", "Add 1,000 members of 10 KB one call at a time", TASK_ALONE + ["first", "last"],
             [at_least(10, "hwdef", PYTHON_APPEND, "elapsed"), even_calls]),
    Workload("add-4k", "Add 4 KB to a container of 1 GiB", ["wall", "cpu"], [within(3, "1 GiB", "1 MiB", "wall")]),
    Workload("memory-big", "Memory for one member of 1 GiB", ["peak", "wall"], [peak_below(48)]),
    Workload("memory-open", "Memory for opening 100,000 entries", ["peak", "text"], [peak_of_text(6)]),
    *(Workload(f"growth/{name}", f"Growth of {name}", ["wall", "cpu"], [growth(1.3)])
      for name in ("open", "writeHDF", "merge", "write", "removeUnnecessaryFilesForQVA", "addFileAttrs",
                   "setHwSrcDB")),
    Workload("limits", "The machine's limits for the same bytes", ["wall", "cpu"]),
]
