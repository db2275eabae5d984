#!/usr/bin/env python3
"""How long `tallyforge get` takes as a whole process, beside an empty C++ program that links the same libraries.

Runs both in turn and prints the medians and their ratio (target: 2).
"""
import argparse
import os
import statistics
import subprocess
import tempfile
import time

ROUNDS = 300


def run(words, environment):
    begin = time.perf_counter()
    subprocess.run(words, env=environment, stdout=subprocess.DEVNULL, check=True)
    return time.perf_counter() - begin


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("tallyforge", metavar="TALLYFORGE", help="the command: build/release/bin/tallyforge")
    parser.add_argument("empty", metavar="EMPTY_PROGRAM", help="the empty one: build/release/bin/empty_program")
    options = parser.parse_args()
    tallyforge, empty = options.tallyforge, options.empty
    with tempfile.TemporaryDirectory() as root:
        environment = dict(os.environ, TALLYFORGE_ROOT=root)
        subprocess.run([tallyforge, "set", "badgesize", "1.2"], env=environment, check=True)
        pairs = [(run([tallyforge, "get", "badgesize"], environment), run([empty], environment)) for _ in range(ROUNDS)]
    ours = statistics.median(pair[0] for pair in pairs)
    peer = statistics.median(pair[1] for pair in pairs)
    print(f"get {ours * 1e3:.2f} ms, empty program {peer * 1e3:.2f} ms, ratio {ours / peer:.2f} (target 2)")


if __name__ == "__main__":
    main()
