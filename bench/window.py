#!/usr/bin/env python3
"""What the window costs, on a display of its own (Xvfb) and a fresh stock device:
from the start of the command to the first frame on the display, memory, wake-ups while nothing moves, and the road of
one change: from the pointer's move on a slider to the painted frame, the durable write included.

The device lies in the folder for temporary files: TMPDIR=/dev/shm leaves out what the disk takes to sync.
"""

import argparse
import os
import statistics
import subprocess
import sys
import tempfile
import time

from comparing.processes import furnished_device
from comparing.window import Display, Window, at_rest

repository = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def first_frame(window):
    """Milliseconds from the start of the command to its first frame."""
    while not window.traced("frame"):
        if window.process.poll() is not None:
            sys.exit("the window has not opened")
        time.sleep(0.002)
    return (window.traced("frame")[0][3] - window.begun) / 1e6


def report(what, values, unit):
    values = sorted(values)
    print(f"{what}: median {statistics.median(values):.2f} {unit}, "
          f"fastest {values[0]:.2f}, nine tenths within {values[int(len(values) * 0.9)]:.2f}, of {len(values)}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", nargs="?", metavar="FOLDER", default=os.path.join(repository, "build", "release"),
                        help="where it is built (build/release)")
    parser.add_argument("starts", nargs="?", metavar="STARTS", type=int, default=15,
                        help="how often the window is started (%(default)s)")
    options = parser.parse_args()
    if options.starts < 1:
        parser.error("one start is the least")
    with Display() as display, tempfile.TemporaryDirectory(prefix="tallyforge-bench-") as folder:
        device, trace = furnished_device(repository, folder), os.path.join(folder, "trace")
        first = []
        for _ in range(options.starts):
            with Window(options.build, device, display, trace) as window:
                first.append(first_frame(window))
        report("start to first frame", first, "ms")
        with Window(options.build, device, display, trace) as window:
            window.place()
            measure(window)


def measure(window):
    row = window.rows("tallyforge")["Badge"]
    window.click(row["x"] + 60, row["y"] + 22)
    time.sleep(0.5)
    wake_ups, _ = at_rest(window, 3)
    print(f"wake-ups in 3 s at rest: {wake_ups}")

    slider = window.rows("badge")["Size"]
    y = str(int(slider["y"] + 50))
    left = int(15 + 14 + (345 - 28) * 0.4)
    window.xdo("mousemove", str(left), y, "mousedown", "1")
    for move in range(300):
        window.xdo("mousemove", str(left + 1 + move % 150), y)
        time.sleep(0.02)  # so that no frame has to wait for the display's pace
    window.xdo("mouseup", "1")
    time.sleep(1)
    inputs = [line[0] for line in window.traced("input")]
    frames = window.traced("frame")
    roads, handled = [], []
    for at in inputs[2:-1]:
        frame = next((frame for frame in frames if frame[0] > at and frame[4] > 0), None)
        if frame and frame[3] - at < 100e6:
            roads.append((frame[3] - at) / 1e6)
            handled.append((frame[0] - at) / 1e6)
    report("from a move on the slider to its frame, written durably", roads, "ms")
    report("of that until painting begins, most of it the disk's syncs", handled, "ms")
    painted = [(frame[2] - frame[1]) / 1e6 for frame in frames[10:] if frame[4] > 0]
    report("painting such a frame", painted, "ms")

    subprocess.run([window.program, "set", "badgeanimtype", "1", "closeboxanimtype", "6", "newdotanimtype", "11"],
                   env=window.environment, check=True)
    seen = len(window.traced("frame"))
    time.sleep(3)
    moving = [frame for frame in window.traced("frame")[seen + 5:] if frame[4] > 0]
    report("a frame with three animations, stepped, painted and shown",
           [(frame[3] - frame[0]) / 1e6 for frame in moving], "ms")
    report("pixels painted in it", [frame[5] for frame in moving], "pixels")
    print(f"memory: {window.status('VmRSS') / 1024:.1f} MiB, at most {window.status('VmHWM') / 1024:.1f} MiB")


if __name__ == "__main__":
    main()
