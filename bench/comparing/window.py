"""The window on a display of its own (Xvfb) and a fresh stock device: what it costs at rest and after much use."""

import json
import os
import plistlib
import subprocess
import sys
import tempfile
import time

from comparing import report
from comparing.processes import MissingPeer, furnished_device, tool

BUNDLE = "Library/PreferenceBundles/tallyforgeprefs.bundle"


class Display:
    """An X server that only its owner knows."""

    def __enter__(self):
        self.server = subprocess.Popen([tool("Xvfb"), "-displayfd", "1", "-screen", "0", "1280x1400x24", "-nolisten", "tcp",
                                        "-noreset"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.name = ":" + self.server.stdout.readline().strip()
        return self

    def __exit__(self, *_):
        self.server.terminate()
        self.server.wait()


class Window:
    """Tallyforge's window, open as long as the block is. `trace` is where its frames are written down."""

    def __init__(self, build, device, display, trace=None):
        self.program = os.path.join(build, "bin", "tallyforge")
        self.trace = trace
        self.environment = {name: value for name, value in os.environ.items()
                            if name not in ("WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "DBUS_SESSION_BUS_ADDRESS")}
        self.environment.update(DISPLAY=display.name, TALLYFORGE_ROOT=device)
        if trace:
            self.environment["TALLYFORGE_TRACE_FRAMES"] = trace

    def __enter__(self):
        if self.trace and os.path.exists(self.trace):
            os.remove(self.trace)
        self.begun = time.monotonic_ns()
        self.process = subprocess.Popen([self.program], env=self.environment, stdout=subprocess.DEVNULL)
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()

    def xdo(self, *words):
        return subprocess.run(["xdotool", *words], env=self.environment, check=True, capture_output=True, text=True).stdout

    def place(self):
        """Waits for the window and gives it the keyboard."""
        for _ in range(500):
            found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Tallyforge$"], env=self.environment,
                                   capture_output=True, text=True, check=False).stdout.split()
            if found:
                break
            if self.process.poll() is not None:
                sys.exit("the window has not opened")
            time.sleep(0.02)
        else:
            sys.exit("the window has not opened in ten seconds")
        self.xdo("windowmove", "--sync", found[0], "0", "0", "windowfocus", "--sync", found[0])

    def rows(self, pane, scrolled=False):
        """The frames of a pane's rows that can be used, by their titles, when it has opened or been scrolled to its end."""
        pull = "drag 4 600 4 100 0.2\nwait 3\n" * 4 if scrolled else ""
        told = subprocess.run([self.program, "drive"], input=f"open {pane}\n{pull}inspect\n", env=self.environment,
                              check=True, capture_output=True, text=True).stdout
        return {row["title"]: row["frame"] for row in json.loads(told)["rows"] if row["enabled"]}

    def scroll(self, to_end):
        self.xdo("mousemove", "180", "600", "click", "--repeat", "60", "--delay", "5", "5" if to_end else "4")
        time.sleep(1)

    def click(self, x, y):
        self.xdo("mousemove", str(int(x)), str(int(y)), "click", "1")

    def status(self, field):
        """A number of /proc/PID/status, over all threads where it counts switches."""
        tasks = [f"/proc/{self.process.pid}"]
        if field.endswith("switches"):
            tasks = [f"{tasks[0]}/task/{task}" for task in os.listdir(f"{tasks[0]}/task")]
        total = 0
        for task in tasks:
            with open(f"{task}/status", encoding="ascii") as file:
                total += next(int(line.split()[1]) for line in file if line.startswith(field + ":"))
        return total

    def traced(self, kind):
        """The numbers of the trace's lines of that kind."""
        try:
            with open(self.trace, encoding="ascii") as file:
                return [[int(word) for word in line.split()[1:]] for line in file if line.startswith(kind)]
        except FileNotFoundError:
            return []

    def processor_ticks(self):
        with open(f"/proc/{self.process.pid}/stat", encoding="ascii") as file:
            fields = file.read().rsplit(")", 1)[1].split()
        return int(fields[11]) + int(fields[12])


def at_rest(window, seconds):
    """Wake-ups, and the processor's share in per cent, over some seconds in which nothing happens."""
    time.sleep(1.5)  # what fades has faded
    wake_ups, ticks = window.status("voluntary_ctxt_switches"), window.processor_ticks()
    time.sleep(seconds)
    share = (window.processor_ticks() - ticks) / os.sysconf("SC_CLK_TCK") / seconds * 100
    return window.status("voluntary_ctxt_switches") - wake_ups, share


class Lost(Exception):
    """The window is not where it was to be."""


def slides(window, action):
    """Does the action; whether another screen slid in: many frames, each most of the window."""
    seen = len(window.traced("frame"))
    action()
    time.sleep(1.2)
    return sum(frame[5] > 375 * 667 / 2 for frame in window.traced("frame")[seen:]) >= 5


def visit_panes(window, device, pane, progress, visited, closed):
    """Opens every screen below this one, as its rows lead there (colour pickers, lists of choices and of apps too), and
    comes back. Rows that lead nowhere, as those do that are dimmed, are noted as closed."""
    with open(os.path.join(device, BUNDLE, pane + "prefs.plist"), "rb") as file:
        rows = plistlib.load(file)["items"]
    at_top, at_end = window.rows(pane), window.rows(pane, scrolled=True)
    for row in rows:
        child = row.get("detail", "").removesuffix("ListController")
        if not child or row["label"] not in at_end:
            continue
        if progress:
            print(f"\r\033[Kthe window: {child} ...", end="", file=sys.stderr, flush=True)
        frame = at_end[row["label"]]
        window.scroll(to_end=True)
        if frame["y"] < 64:  # under the bar
            frame = at_top[row["label"]]
            window.scroll(to_end=False)
        if not slides(window, lambda: window.click(frame["x"] + 60, frame["y"] + frame["height"] / 2)):
            closed.append(f"{row['label']} of {pane}")
            continue
        visited.append(child)
        if os.path.exists(os.path.join(device, BUNDLE, child + "prefs.plist")):
            visit_panes(window, device, child, progress, visited, closed)
        if not slides(window, lambda: window.xdo("key", "Escape")):
            raise Lost(f"the window does not come back from {child}")


def measure(repository, build, progress):
    """Rows of a table: what is measured, the figure, target, aim, met or not."""
    try:
        with Display() as display, tempfile.TemporaryDirectory(prefix="tallyforge-bench-") as folder:
            device = furnished_device(repository, folder)
            with Window(build, device, display, os.path.join(folder, "trace")) as window:
                window.place()
                if progress:
                    print("\r\033[Kthe window at rest ...", end="", file=sys.stderr, flush=True)
                wake_ups, share = at_rest(window, 10)
                visited, closed = [], []
                visit_panes(window, device, "tallyforge", progress, visited, closed)
                memory = window.status("VmRSS") / 1024
                after, share_after = at_rest(window, 10)
    except (MissingPeer, Lost) as why:
        return [["the window", "", "", "", f"{report.MISSING}: {why}"]]

    return [["wake-ups in ten seconds at rest", f"{wake_ups}, {share:.1f} % of a core", "0, 0 %", "",
             report.verdict(wake_ups + share, 0, 0)],
            [f"the same after visiting {len(visited)} screens", f"{after}, {share_after:.1f} % of a core", "0, 0 %", "",
             report.verdict(after + share_after, 0, 0)],
            [f"memory after visiting {len(visited)} screens" + (f" (closed: {', '.join(closed)})" if closed else ""), f"{memory:.1f} MiB", "64 MiB", "48 MiB", report.verdict(memory, 64, 48)]]
