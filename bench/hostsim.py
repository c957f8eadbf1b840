"""The simulated host on studio-sized scripts: reading and writing the largest corpus script, and one
knob change and one undo at several script sizes.

    scripts/python bench/hostsim.py                         50, 500 and 5,000 nodes
    scripts/python bench/hostsim.py --sizes 500 --repeat 51
    scripts/python bench/hostsim.py --script some/other.nk  read and write that file instead

Prints medians of wall-clock times; prints figures, never a verdict.
"""

import argparse
import glob
import os
import statistics
import sys
import tempfile
import time

import hostctl
import nuke

HERE = os.path.dirname(os.path.abspath(__file__))
CORPUS = os.path.join(HERE, "..", "..", "shared", "corpus", "nst")


def median_ms(samples):
    return statistics.median(samples) * 1000.0


def largest_corpus_script():
    paths = glob.glob(os.path.join(CORPUS, "**", "*.nk"), recursive=True)
    return max(paths, key=os.path.getsize) if paths else None


def bench_file(path, repeat):
    """Median times of scriptOpen and scriptSave of `path`, and how many nodes it holds."""
    hostctl.reset()
    opened, saved = [], []
    with tempfile.TemporaryDirectory() as folder:
        out = os.path.join(folder, "out.nk")
        for _ in range(repeat):
            start = time.perf_counter()
            try:
                nuke.scriptOpen(path)
            except RuntimeError as error:
                return None, None, 0, str(error)
            opened.append(time.perf_counter() - start)
            start = time.perf_counter()
            nuke.scriptSave(out)
            saved.append(time.perf_counter() - start)
    count = len(nuke.allNodes(recurseGroups=True))
    hostctl.reset()
    return median_ms(opened), median_ms(saved), count, None


def chain_script(count):
    """The text of a script of `count` nodes: chains of Read -> Grade -> Blur -> Merge, each Merge
    taking the chain before as its A input, and Dots for the rest."""
    lines = []
    for i in range(count - count % 4):
        x, y = (i // 4) * 120, (i % 4) * 60
        if i % 4 == 0:
            lines += ["Read {", " inputs 0", " file /plates/p{}.exr".format(i)]
        elif i % 4 == 3 and i > 3:
            lines += ["push $M{}".format(i - 4), "Merge2 {", " inputs 2"]
        else:
            lines += [("Grade {", "Blur {", "Merge2 {")[i % 4 - 1]]
        lines += [" xpos {}".format(x), " ypos {}".format(y), "}"]
        if i % 4 == 3:
            lines.append("set M{} [stack 0]".format(i))
    lines += ["Dot {", " xpos 0", " ypos -60", "}"] * (count % 4)
    return "\n".join(lines) + "\n"


def build_script(count, folder):
    """Opens a script of `count` nodes; gives its nodes."""
    path = os.path.join(folder, "chains_{}.nk".format(count))
    with open(path, "w") as f:
        f.write(chain_script(count))
    hostctl.reset()
    nuke.scriptOpen(path)
    return nuke.allNodes()


def bench_undo(count, repeat):
    """Median times of one knob change (a step) and of undoing it, in a script of `count` nodes."""
    with tempfile.TemporaryDirectory() as folder:
        nodes = build_script(count, folder)
    knob = nodes[len(nodes) // 8 * 4 + 1]["white"]  # a Grade half-way down
    changes, undos = [], []
    for i in range(repeat):
        start = time.perf_counter()
        knob.setValue(1.0 + (i % 7) * 0.1)
        changes.append(time.perf_counter() - start)
        start = time.perf_counter()
        nuke.undo()
        undos.append(time.perf_counter() - start)
    total = len(nuke.allNodes())
    hostctl.reset()
    return median_ms(changes), median_ms(undos), total


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sizes", type=int, nargs="+", default=[50, 500, 5000])
    parser.add_argument("--repeat", type=int, default=21)
    parser.add_argument("--file-repeat", type=int, default=5)
    parser.add_argument("--script", help="the script to read and write (default: the largest of "
                                         "the corpus)")
    args = parser.parse_args()

    path = args.script or largest_corpus_script()
    if path is None:
        print("no corpus script found under", os.path.normpath(CORPUS))
    else:
        opened, saved, count, error = bench_file(path, args.file_repeat)
        name = os.path.basename(path)
        print("{} ({:,} bytes)".format(name, os.path.getsize(path)))
        if error:
            print("  read fails: {}".format(error))
        else:
            print("  {} nodes   open {:8.1f} ms   save {:8.1f} ms   (median of {})".format(
                count, opened, saved, args.file_repeat))
    print()
    print("{:>7}  {:>12}  {:>12}   (median of {})".format("nodes", "knob change", "undo", args.repeat))
    for size in args.sizes:
        change, undo, total = bench_undo(size, args.repeat)
        print("{:>7}  {:9.3f} ms  {:9.3f} ms".format(total, change, undo))
        sys.stdout.flush()


if __name__ == "__main__":
    main()
