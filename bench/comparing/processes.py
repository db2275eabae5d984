"""Whole processes beside those of other programs that do the same."""

import contextlib
import os
import shutil
import subprocess
import sys
import tempfile
import time


class MissingPeer(Exception):
    """The peer is not on this machine, or does not do here what it is to be compared in."""


def run_time(words, environment, times):
    """What one of some runs takes, in seconds. Every run has to succeed."""
    quiet = [(os.POSIX_SPAWN_OPEN, 1, "/dev/null", os.O_WRONLY, 0), (os.POSIX_SPAWN_OPEN, 2, "/dev/null", os.O_WRONLY, 0)]
    begun = time.perf_counter()
    for _ in range(times):
        child = os.posix_spawnp(words[0], words, environment, file_actions=quiet)
        if os.waitpid(child, 0)[1] != 0:
            if os.path.basename(words[0]) == "tallyforge":
                sys.exit(f"compare: {' '.join(words)} has failed")
            raise MissingPeer(f"{' '.join(words)} has failed")
    return (time.perf_counter() - begun) / times


def pairs_of(ours, peer, pairs, our_times, peer_times):
    """Both take the number of the run, so that none does what the one before has done."""
    measured = []
    for pair in range(pairs):
        first, second = (ours, peer) if pair % 2 == 0 else (peer, ours)
        times = {ours: our_times, peer: peer_times}
        took = {work: work(times[work]) for work in (first, second)}
        measured.append((took[ours], took[peer]))
    return measured


def furnished_device(repository, folder):
    device = os.path.join(folder, "device")
    shutil.copytree(os.path.join(repository, "resources", "stock"), device, symlinks=True)
    os.makedirs(os.path.join(device, "var/mobile/Library/Preferences"), exist_ok=True)
    return device


@contextlib.contextmanager
def workplace(repository):
    """A folder with a device in it, and an environment whose home is that folder."""
    with tempfile.TemporaryDirectory(prefix="tallyforge-bench-") as folder:
        environment = {"PATH": os.environ["PATH"], "HOME": folder, "LANG": "C.UTF-8", "XDG_RUNTIME_DIR": folder,
                       "TALLYFORGE_ROOT": furnished_device(repository, folder)}
        yield folder, environment


def tool(name):
    path = shutil.which(name)
    if not path:
        raise MissingPeer(f"{name} is not installed")
    return path


def render_ours(build, folder, environment):
    words = [os.path.join(build, "bin", "tallyforge"), "render", os.path.join(folder, "ours.png"), "--pane", "badge"]
    return lambda times: run_time(words, environment, times)


def same_screen(build, folder, environment):
    """The screen as an SVG and as a page."""
    program = os.path.join(build, "bin", "pane_to_svg")
    if not os.path.exists(program):
        raise MissingPeer("pane_to_svg was not built")
    pages = [os.path.join(folder, "badge.svg"), os.path.join(folder, "badge.html")]
    if subprocess.run([program, *pages], env=environment, check=False, capture_output=True).returncode != 0:
        raise MissingPeer("pane_to_svg has failed")
    return pages


def size_of_png(path):
    with open(path, "rb") as file:
        head = file.read(24)
    return int.from_bytes(head[16:20], "big"), int.from_bytes(head[20:24], "big")


def demand_picture(path, name):
    """Of the right size, and with as much in it as a screen has: a blank page is a few thousand bytes."""
    if not os.path.exists(path) or size_of_png(path) != (750, 1334) or os.path.getsize(path) < 20_000:
        raise MissingPeer(f"{name} has not made a picture of the screen, 750 x 1334 px")


def difference(build, folder, picture, name):
    """In words, how far the peer's picture is from ours, which has been drawn."""
    words = [os.path.join(build, "bin", "picture_difference"), os.path.join(folder, "ours.png"), picture]
    run = subprocess.run(words, capture_output=True, text=True, check=False)
    if run.returncode != 0:
        raise MissingPeer(f"the pictures cannot be compared: {run.stderr.strip()}")
    return f"beside {name}, {run.stdout.strip()}"


def render_rsvg(repository, build, pairs):
    convert = tool("rsvg-convert")
    with workplace(repository) as (folder, environment):
        svg = same_screen(build, folder, environment)[0]
        out = os.path.join(folder, "peer.png")
        words = [convert, "-w", "750", "-h", "1334", "-o", out, svg]
        run_time(words, environment, 1)
        demand_picture(out, "rsvg-convert")
        measured = pairs_of(render_ours(build, folder, environment), lambda times: run_time(words, environment, times), pairs, 5, 5)
        return measured, [difference(build, folder, out, "rsvg-convert")]


def render_chromium(repository, build, pairs):
    chromium = tool("chromium")
    with workplace(repository) as (folder, environment):
        page = same_screen(build, folder, environment)[1]
        out = os.path.join(folder, "peer.png")
        words = [chromium, "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
                 "--force-device-scale-factor=2", "--window-size=375,667", "--user-data-dir=" + os.path.join(folder, "profile"),
                 "--screenshot=" + out, "file://" + page]
        run_time(words, environment, 1)  # makes its profile
        demand_picture(out, "chromium")
        measured = pairs_of(render_ours(build, folder, environment), lambda times: run_time(words, environment, times), pairs, 5, 1)
        return measured, [difference(build, folder, out, "chromium")]


class Setter:
    """Sets a value, a new one each time; `words` takes the value."""

    def __init__(self, words, environment):
        self.words, self.environment, self.count = words, environment, 0

    def __call__(self, times):
        took = 0.0
        for _ in range(times):
            self.count += 1
            took += run_time(self.words(self.value()), self.environment, 1)
        return took / times

    def value(self):
        return f"0.{self.count % 2 * 25 + 25}"


def set_ours(build, environment):
    program = os.path.join(build, "bin", "tallyforge")
    return Setter(lambda value: [program, "set", "badgesize", value], environment)


def demand_value(words, environment, value):
    said = subprocess.run(words, env=environment, capture_output=True, text=True, check=False).stdout
    if value not in said:
        raise MissingPeer(f"{' '.join(words)} says {said.strip()!r} instead of {value}")


@contextlib.contextmanager
def session_bus(environment):
    daemon = subprocess.Popen([tool("dbus-daemon"), "--session", "--nofork", "--nopidfile", "--print-address=1"],
                              env=environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    try:
        yield {**environment, "DBUS_SESSION_BUS_ADDRESS": daemon.stdout.readline().strip()}
    finally:
        daemon.terminate()
        daemon.wait()


SCHEMA = """<schemalist><schema id="example.bench" path="/example/bench/">
<key name="badgesize" type="d"><default>0</default></key></schema></schemalist>"""


def set_gsettings(repository, build, pairs):
    settings = tool("gsettings")
    with workplace(repository) as (folder, environment):
        with open(os.path.join(folder, "example.bench.gschema.xml"), "w", encoding="utf-8") as file:
            file.write(SCHEMA)
        subprocess.run([tool("glib-compile-schemas"), folder], check=True, capture_output=True)
        environment = {**environment, "GSETTINGS_SCHEMA_DIR": folder, "GSETTINGS_BACKEND": "dconf"}
        with session_bus(environment) as environment:
            ours = set_ours(build, environment)
            peer = Setter(lambda value: [settings, "set", "example.bench", "badgesize", value], environment)
            run_time(peer.words("0.75"), environment, 1)
            if not os.path.exists(os.path.join(folder, ".config/dconf/user")):
                raise MissingPeer("gsettings keeps nothing in a file here")
            measured = pairs_of(ours, peer, pairs, 20, 20)
            demand_value([settings, "get", "example.bench", "badgesize"], environment, peer.value())
            demand_value([ours.words("")[0], "get", "badgesize"], environment, ours.value())
            return measured, []


def set_gnustep(repository, build, pairs):
    defaults = tool("defaults")
    with workplace(repository) as (_, environment):
        ours = set_ours(build, environment)
        peer = Setter(lambda value: [defaults, "write", "example.bench", "badgesize", value], environment)
        measured = pairs_of(ours, peer, pairs, 20, 5)
        demand_value([defaults, "read", "example.bench", "badgesize"], environment, peer.value())
        demand_value([ours.words("")[0], "get", "badgesize"], environment, ours.value())
        return measured, []


# Each returns the pairs of its item, and remarks.
COMPARISONS = {"render-rsvg": render_rsvg, "render-chromium": render_chromium, "set-gsettings": set_gsettings,
               "set-gnustep": set_gnustep}
