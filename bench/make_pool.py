"""Lays out a synthetic preset pool for the benchmarks.

    scripts/python bench/make_pool.py DIR [--presets 5000] [--folders 200]

Half of the folders are class folders below ``nodes``, half are categories below ``toolsets``;
the presets are spread over them evenly. A preset holds a few lines of text: the windows list
files and never read them, so the contents don't matter for what is measured.
"""

import argparse
import os

PRESET_TEXT = "# synthetic preset {index}\n"


def make_pool(root, presets=5000, folders=200):
    """Creates the pool at `root` and returns the number of files and folders written."""
    folders = max(2, folders)
    paths = []
    for k in range(folders):
        if k % 2 == 0:
            paths.append(os.path.join(root, "nodes", "Class{:04d}".format(k // 2)))
        else:
            paths.append(os.path.join(root, "toolsets", "category{:04d}".format(k // 2)))
    for path in paths:
        os.makedirs(path, exist_ok=True)
    for index in range(presets):
        folder = paths[index % folders]
        name = "preset_{:05d}_{}.nk".format(index, ("soft", "hard", "warm", "cold")[index % 4])
        with open(os.path.join(folder, name), "w") as handle:
            handle.write(PRESET_TEXT.format(index=index))
    return presets, folders


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("root")
    parser.add_argument("--presets", type=int, default=5000)
    parser.add_argument("--folders", type=int, default=200)
    args = parser.parse_args()
    files, dirs = make_pool(args.root, args.presets, args.folders)
    print("{} presets in {} folders under {}".format(files, dirs, args.root))


if __name__ == "__main__":
    main()
