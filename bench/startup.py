#!/usr/bin/env python3
"""How long `tallyforge get` takes as a whole process, beside an empty C++ program that links the same libraries.

Usage: startup.py TALLYFORGE EMPTY_PROGRAM. Runs both in turn and prints the medians and their ratio (target: 2).
"""
import os
import statistics
import subprocess
import sys
import tempfile
import time

ROUNDS = 300


def run(words, environment):
    begin = time.perf_counter()
    subprocess.run(words, env=environment, stdout=subprocess.DEVNULL, check=True)
    return time.perf_counter() - begin


def main():
    tallyforge, empty = sys.argv[1:3]
    with tempfile.TemporaryDirectory() as root:
        environment = dict(os.environ, TALLYFORGE_ROOT=root)
        subprocess.run([tallyforge, "set", "badgesize", "1.2"], env=environment, check=True)
        pairs = [(run([tallyforge, "get", "badgesize"], environment), run([empty], environment)) for _ in range(ROUNDS)]
    ours = statistics.median(pair[0] for pair in pairs)
    peer = statistics.median(pair[1] for pair in pairs)
    print(f"get {ours * 1e3:.2f} ms, empty program {peer * 1e3:.2f} ms, ratio {ours / peer:.2f} (target 2)")


if __name__ == "__main__":
    main()
