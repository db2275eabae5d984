#!/usr/bin/env python3
"""What the window costs, on a display of its own (Xvfb) and a fresh stock device:
from the start of the command to the first frame on the display, memory, wake-ups while nothing moves, and the road of
one change: from the pointer's move on a slider to the painted frame, the durable write included.

    bench/window.py [BUILD FOLDER] [STARTS]

The device lies in the folder for temporary files: TMPDIR=/dev/shm leaves out what the disk takes to sync.
"""

import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

repository = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
build = sys.argv[1] if len(sys.argv) > 1 else os.path.join(repository, "build", "release")
starts = int(sys.argv[2]) if len(sys.argv) > 2 else 15
program = os.path.join(build, "bin", "tallyforge")


def lines(path, kind):
    try:
        with open(path, encoding="ascii") as file:
            return [[int(word) for word in line.split()[1:]] for line in file if line.startswith(kind)]
    except FileNotFoundError:
        return []


def status(process, field):
    with open(f"/proc/{process.pid}/status", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith(field + ":"))


def start(environment, trace):
    if os.path.exists(trace):
        os.remove(trace)
    begun = time.monotonic_ns()
    process = subprocess.Popen([program], env=environment, stdout=subprocess.DEVNULL)
    while not lines(trace, "frame"):
        if process.poll() is not None:
            sys.exit("the window has not opened")
        time.sleep(0.002)
    return process, (lines(trace, "frame")[0][3] - begun) / 1e6


def report(what, values, unit):
    values = sorted(values)
    print(f"{what}: median {statistics.median(values):.2f} {unit}, "
          f"fastest {values[0]:.2f}, nine tenths within {values[int(len(values) * 0.9)]:.2f}, of {len(values)}")


def main():
    folder = tempfile.mkdtemp(prefix="tallyforge-bench-")
    server = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "1280x1400x24", "-nolisten", "tcp",
                               "-noreset"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    process = None
    try:
        device = os.path.join(folder, "device")
        shutil.copytree(os.path.join(repository, "resources", "stock"), device, symlinks=True)
        os.makedirs(os.path.join(device, "var/mobile/Library/Preferences"), exist_ok=True)
        trace = os.path.join(folder, "trace")
        environment = {name: value for name, value in os.environ.items()
                       if name not in ("WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "DBUS_SESSION_BUS_ADDRESS")}
        environment.update(DISPLAY=":" + server.stdout.readline().strip(), TALLYFORGE_ROOT=device,
                           TALLYFORGE_TRACE_FRAMES=trace)

        def xdo(*words):
            return subprocess.run(["xdotool", *words], env=environment, check=True, capture_output=True,
                                  text=True).stdout

        first = []
        for _ in range(starts):
            process, took = start(environment, trace)
            first.append(took)
            process.terminate()
            process.wait()
        report("start to first frame", first, "ms")

        process, _ = start(environment, trace)
        window = xdo("search", "--onlyvisible", "--name", "^Tallyforge$").split()[0]
        xdo("windowmove", "--sync", window, "0", "0")

        def rows(pane):
            told = subprocess.run([program, "inspect", "--pane", pane], env=environment, check=True,
                                  capture_output=True, text=True).stdout
            return {row["title"]: row["frame"] for row in json.loads(told)["rows"]}

        row = rows("tallyforge")["Badge"]
        xdo("mousemove", str(int(row["x"] + 60)), str(int(row["y"] + 22)), "click", "1")
        time.sleep(2)
        before = status(process, "voluntary_ctxt_switches")
        time.sleep(3)
        print(f"wake-ups in 3 s at rest: {status(process, 'voluntary_ctxt_switches') - before}")

        slider = rows("badge")["Size"]
        y = str(int(slider["y"] + 50))
        left = int(15 + 14 + (345 - 28) * 0.4)
        xdo("mousemove", str(left), y, "mousedown", "1")
        for move in range(300):
            xdo("mousemove", str(left + 1 + move % 150), y)
            time.sleep(0.02)  # so that no frame has to wait for the display's pace
        xdo("mouseup", "1")
        time.sleep(1)
        inputs = [line[0] for line in lines(trace, "input")]
        frames = lines(trace, "frame")
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

        subprocess.run([program, "set", "badgeanimtype", "1", "closeboxanimtype", "6", "newdotanimtype", "11"],
                       env=environment, check=True)
        seen = len(lines(trace, "frame"))
        time.sleep(3)
        moving = [frame for frame in lines(trace, "frame")[seen + 5:] if frame[4] > 0]
        report("a frame with three animations, stepped, painted and shown",
               [(frame[3] - frame[0]) / 1e6 for frame in moving], "ms")
        report("pixels painted in it", [frame[5] for frame in moving], "pixels")
        print(f"memory: {status(process, 'VmRSS') / 1024:.1f} MiB, at most {status(process, 'VmHWM') / 1024:.1f} MiB")
    finally:
        if process and process.poll() is None:
            process.terminate()
            process.wait()
        server.terminate()
        server.wait()
        shutil.rmtree(folder, ignore_errors=True)


main()
