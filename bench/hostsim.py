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


def build_script(count):
    """`count` nodes: chains of Read -> Grade -> Blur -> Merge, wired to the chain before, and Dots
    for the rest."""
    hostctl.reset()
    nuke.Undo.disable()
    previous = None
    made = []
    for i in range(0, count - count % 4, 4):
        read = nuke.nodes.Read(file="/plates/p{}.exr".format(i))
        grade = nuke.nodes.Grade(inputs=[read])
        blur = nuke.nodes.Blur(inputs=[grade])
        merge = nuke.nodes.Merge2(inputs=[blur] + ([previous] if previous is not None else []))
        previous = merge
        made += [read, grade, blur, merge]
    for _ in range(count % 4):
        made.append(nuke.nodes.Dot(inputs=[previous]))
    nuke.Undo.enable()
    nuke.Undo.undoTruncate()
    return made


def bench_undo(count, repeat):
    """Median times of one knob change (a step) and of undoing it, in a script of `count` nodes."""
    nodes = build_script(count)
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
