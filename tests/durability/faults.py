#!/usr/bin/env python3
"""Disturbs the saves of the real programs at each of their system calls, and looks at what is left.

Every command below runs once undisturbed, which tells its system calls on the device and what it leaves. Then it runs again
and again on the same device: killed before and after each of the calls, with each of them failing in several ways, with short
reads and writes, and with a disk that fails or fills up at a call and stays so. Afterwards

- every file is the old one, the new one or, where a command saves several times, one it saved on the way;
- no unfinished file is there, or, after a kill and on a failing disk, none on the device that outlasts the next start, and
  beside a file of this machine (a picture, an export) none that outlasts its next writing;
- status 0 means that all is new, the whole output was printed and nothing was said; otherwise the status is 1 and one line
  says why;
- after a kill the same command, undisturbed, brings what it would have brought in the first place.
"""

import argparse
import errno
import os
import pathlib
import plistlib
import shutil
import signal
import stat
import subprocess
import sys
import tempfile

KILLS = ["kill-before", "kill-after"]
ERRORS = ["ENOSPC", "EIO", "EACCES", "EROFS", "EMFILE", "EINTR"]
LASTING = ["ENOSPC", "EIO"]
TRANSFERS = {"read", "write", "pread", "pwrite"}

DOMAIN = "var/mobile/Library/Preferences/com.quillon.tallyforge.plist"
THEMES = "var/mobile/Documents/Tallyforge"
TIES = THEMES + "/PerAppThemes"
CONFIG = THEMES + "/Config/config.tfc"
STOCK = pathlib.Path(__file__).resolve().parents[2] / "resources/stock"
DEFAULTS = "Library/Application Support/Tallyforge"


def is_unfinished(path):
    name = path.rsplit("/", 1)[-1]
    return name in (".tallyforge-new", ".tallyforge-copy") or (name[0] == "." and name.endswith(".tallyforge-new"))


class World:
    """A folder with the device ("root") and files of this machine ("files")."""

    def __init__(self, folder):
        self.folder = folder

    def take(self):
        """Everything in it: path to kind, mode and contents."""
        found = {}
        waiting = [""]
        while waiting:
            below = waiting.pop()
            for entry in os.scandir(os.path.join(self.folder, below)):
                path = below + entry.name
                status = entry.stat(follow_symlinks=False)
                if entry.is_symlink():
                    found[path] = ("link", 0, os.readlink(entry.path))
                elif entry.is_dir():
                    found[path] = ("folder", stat.S_IMODE(status.st_mode), b"")
                    waiting.append(path + "/")
                else:
                    with open(entry.path, "rb") as file:
                        found[path] = ("file", stat.S_IMODE(status.st_mode), file.read())
        return found

    def put_back(self, wanted, present):
        """Makes of `present` what is `wanted`."""
        for path in sorted(present, reverse=True):
            if wanted.get(path) != present[path]:
                full = os.path.join(self.folder, path)
                os.rmdir(full) if present[path][0] == "folder" else os.unlink(full)
        for path in sorted(wanted):
            if wanted[path] == present.get(path):
                continue
            kind, mode, contents = wanted[path]
            full = os.path.join(self.folder, path)
            if kind == "link":
                os.symlink(contents, full)
                continue
            if kind == "folder":
                os.mkdir(full)
            else:
                with open(full, "wb") as file:
                    file.write(contents)
            os.chmod(full, mode)


class Programs:
    """Where the programs are, and how they are run."""

    def __init__(self, prefix, library, world):
        self.prefix = prefix
        self.library = library
        self.world = world
        self.environment = {k: v for k, v in os.environ.items()
                            if k not in ("DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "DISPLAY", "WAYLAND_DISPLAY")}
        self.environment["TALLYFORGE_ROOT"] = os.path.join(world, "root")

    def run(self, words, more=None, prefix=None):
        environment = dict(self.environment)
        environment.update(more or {})
        process = subprocess.Popen([os.path.join(prefix or self.prefix, "bin", "tallyforge"), *words], env=environment,
                                   cwd=os.path.join(self.world, "files"), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        try:
            output, errors = process.communicate(timeout=60)
        except subprocess.TimeoutExpired:
            process.kill()
            output, errors = process.communicate()
            return "it hung", errors.decode("utf-8", "replace"), output
        return process.returncode, errors.decode("utf-8", "replace"), output

    def faults(self, program, scope, log, **more):
        environment = {"LD_PRELOAD": self.library, "FAULT_PROGRAM": program, "FAULT_LOG": log,
                       "FAULT_SCOPE": ":".join(os.path.join(self.world, folder) for folder in scope)}
        options = os.environ.get("ASAN_OPTIONS", "")
        environment["ASAN_OPTIONS"] = (options + ":" if options else "") + "verify_asan_link_order=0"
        environment.update(more)
        return environment


class Case:
    def __init__(self, group, name, words, *, before=(), prepare=None, scope=("root", "files"), program="tallyforge",
                 says=False, fatal=True, start=("get", "badgesize"), environment=None, own_prefix=False):
        self.group = group
        self.name = name
        self.words = list(words)
        self.before = before  # commands that make the device what it is before
        self.prepare = prepare  # and what else does
        self.scope = scope  # the folders whose calls count
        self.program = program  # the one of the two that does it
        self.says = says  # a line on standard error belongs to success
        self.fatal = fatal  # a failure that is said is status 1
        self.start = list(start)  # what starts next
        self.environment = environment or {}
        self.own_prefix = own_prefix  # the program with a stock device of three files


def put(world, path, contents):
    file = pathlib.Path(world, path)
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_bytes(contents)


def foreign_files(world):
    """What no command has any business with."""
    put(world, "root/var/mobile/Library/Preferences/com.example.other.plist", b"another domain")
    put(world, "root/" + THEMES + "/notes.txt", b"no theme")
    put(world, "root/" + TIES + "/com.example.kept", b"whatever")
    put(world, "files/bystander", b"a file of this machine")


def shown_app(world):
    foreign_files(world)
    file = pathlib.Path(world, "root", DOMAIN)
    domain = plistlib.loads(file.read_bytes())
    domain.update({"perappapp": "com.example.app", "perapptheme": "/" + THEMES + "/mine.tft", "unknown": [1, "two"]})
    file.write_bytes(plistlib.dumps(domain, fmt=plistlib.FMT_BINARY, sort_keys=False))


def linked_domain(world):
    """The domain's file is a link that leads through another one to a folder elsewhere on the device."""
    foreign_files(world)
    file = pathlib.Path(world, "root", DOMAIN)
    put(world, "root/var/elsewhere/real.plist", file.read_bytes())
    put(world, "root/var/elsewhere/bystander", b"a file of the device")
    file.unlink()
    file.symlink_to("/var/mobile/Library/between")
    pathlib.Path(world, "root/var/mobile/Library/between").symlink_to("../../elsewhere/real.plist")


def damaged_domain(world):
    foreign_files(world)
    put(world, "root/" + DOMAIN, b"bplist00 and then nothing of use")


def default_themes(world):
    foreign_files(world)
    source = pathlib.Path(world, "root", THEMES, "mine.tft").read_bytes()
    for name in ("mine.tft", "one.tft", "two.tft"):
        put(world, "root/" + DEFAULTS + "/" + name, source[:-1] + b"\0" if name == "mine.tft" else source)


def several_ties(world):
    foreign_files(world)
    tie = pathlib.Path(world, "root", TIES, "com.example.app")
    put(world, "root/" + TIES + "/com.example.second", tie.read_bytes())


def large_themes(world):
    """Themes that are too large to be told at a first glance, and a link to one."""
    foreign_files(world)
    value = "x" * 20000
    for name in ("large", "huge"):
        theme = {"$version": 100000, "$archiver": "NSKeyedArchiver", "$top": {"root": plistlib.UID(1)}, "$objects": [
            "$null", {"$class": plistlib.UID(4), "NS.keys": [plistlib.UID(2)], "NS.objects": [plistlib.UID(3)]}, "themename",
            name, {"$classname": "NSDictionary", "$classes": ["NSDictionary", "NSObject"]}, value]}
        put(world, f"root/{THEMES}/{name}.tft", plistlib.dumps(theme, fmt=plistlib.FMT_BINARY))
    os.symlink("large.tft", os.path.join(world, "root", THEMES, "linked.tft"))


def theme_file(world):
    foreign_files(world)
    file = pathlib.Path(world, "root", THEMES, "mine.tft")
    put(world, "files/in.tft", file.read_bytes().replace(b"Mine", b"Fern"))
    put(world, "files/again.tft", file.read_bytes().replace(b"badgesize", b"badgesizf"))


def old_output(world):
    foreign_files(world)
    put(world, "files/out", b"an older file")


def linked_output(world):
    put(world, "files/elsewhere/real", b"an older file")
    foreign_files(world)
    os.symlink("elsewhere/real", os.path.join(world, "files/out"))


def drive_script(steps):
    def prepare(world):
        old_output(world)
        put(world, "script", steps.encode())
    return prepare


def preview(world):
    """A device whose preview shows two icons."""
    drive_script('open badge\ntap "App Store"\n')(world)
    for app in ("AppStore.app", "MobileSMS.app"):
        for file in pathlib.Path(STOCK, "Applications", app).iterdir():
            put(world, f"root/Applications/{app}/{file.name}", file.read_bytes())


HOME = "home/tallyforge/device/"
STAMP = HOME + ".tallyforge-furnished"


def older_version(world):
    """A device of an older version, which had another stamp and one file less, and on which its user has been at work."""
    put(world, STAMP, b"an older version")
    pathlib.Path(world, HOME + "Applications/A.app/Info.plist").unlink()
    put(world, HOME + "System/mark.png", b"the user's own mark")
    pathlib.Path(world, HOME + THEMES, "ember.tft").unlink()
    put(world, HOME + "notes", b"the user's own notes")


def power_cut(world):
    """A device whose furnishing was interrupted by a power cut: no stamp; files that are cut short, empty or zeros."""
    pathlib.Path(world, STAMP).unlink()
    shutil.rmtree(pathlib.Path(world, HOME + "Applications"))
    mark = pathlib.Path(world, HOME + "System/mark.png")
    mark.write_bytes(mark.read_bytes()[:5000])
    frost = pathlib.Path(world, HOME + DEFAULTS, "frost.tft")
    frost.write_bytes(bytes(len(frost.read_bytes())))
    put(world, HOME + THEMES + "/ember.tft", b"")
    put(world, HOME + THEMES + "/frost.tft", b"the user's own theme")


def older_choice(world):
    preview(world)
    put(world, "root/" + CONFIG, b"an older choice")


SETTINGS = [("set", "badgesize", "1", "badgebgcol", "#123456", "closeboxpos", "3")]
MINE = SETTINGS + [("theme", "save", "Mine"), ("set", "badgesize", "0.5")]
TIED = MINE + [("tie", "set", "com.example.app", "Mine"), ("theme", "save", "Other")]
DRAWS = {"program": "tallyforge-draw", "scope": ("files",)}
FURNISHES = {"fatal": False, "start": ["list"], "own_prefix": True, "scope": ("home", "prefix/share"),
             "environment": {"TALLYFORGE_ROOT": "", "XDG_DATA_HOME": "WORLD/home"}}

CASES = [
    Case("settings", "set, first of all", ["set", "badgesize", "1"]),
    Case("settings", "set", ["set", "badgesize", "2", "badgebgcol", "#ABCDEF"], before=SETTINGS, prepare=foreign_files),
    Case("settings", "set, old file damaged", ["set", "badgesize", "2"], before=SETTINGS, prepare=damaged_domain, says=True),
    Case("settings", "set, behind links", ["set", "badgesize", "2"], before=SETTINGS, prepare=linked_domain),
    Case("settings", "unset", ["unset", "badgesize"], before=SETTINGS, prepare=foreign_files),
    Case("settings", "randomize", ["randomize", "newdot", "--seed", "7"], before=SETTINGS, prepare=foreign_files),
    Case("settings", "reset", ["reset", "newdot"], before=SETTINGS, prepare=foreign_files),
    Case("settings", "theme load", ["theme", "load", "Mine"], before=MINE, prepare=foreign_files),
    Case("themes", "theme save, first of all", ["theme", "save", "Mine"], before=SETTINGS),
    Case("themes", "theme save", ["theme", "save", "Other"], before=MINE, prepare=foreign_files),
    Case("themes", "theme save --overwrite", ["theme", "save", "Mine", "--overwrite"], before=MINE, prepare=foreign_files),
    Case("themes", "theme delete", ["theme", "delete", "Mine"], before=MINE, prepare=foreign_files),
    Case("themes", "theme restore", ["theme", "restore"], before=MINE, prepare=default_themes),
    Case("themes", "theme import", ["theme", "import", "in.tft"], before=MINE, prepare=theme_file),
    Case("themes", "theme import --overwrite", ["theme", "import", "again.tft", "--overwrite"], before=MINE,
         prepare=theme_file),
    Case("ties", "tie set, first of all", ["tie", "set", "com.example.app", "Mine"], before=MINE),
    Case("ties", "tie set, replacing", ["tie", "set", "com.example.app", "Other"], before=TIED, prepare=foreign_files),
    Case("ties", "tie set, shown on the screen", ["tie", "set", "com.example.app", "Other"], before=TIED, prepare=shown_app),
    Case("ties", "tie set none", ["tie", "set", "com.example.app", "none"], before=TIED, prepare=foreign_files),
    Case("ties", "tie set none, untied", ["tie", "set", "com.example.b", "none"], before=TIED, prepare=foreign_files),
    Case("ties", "tie clear", ["tie", "clear", "com.example.app"], before=TIED, prepare=shown_app),
    Case("ties", "tie clear --all", ["tie", "clear", "--all"], before=TIED, prepare=shown_app),
    Case("reading", "theme list", ["theme", "list"], before=TIED, prepare=foreign_files),
    Case("reading", "theme show", ["theme", "show", "Mine"], before=TIED, prepare=foreign_files),
    Case("reading", "tie list", ["tie", "list"], before=TIED, prepare=several_ties),
    Case("reading", "theme list, large files", ["theme", "list"], before=TIED, prepare=large_themes),
    Case("host", "theme export", ["theme", "export", "Mine", "out"], before=MINE, prepare=foreign_files),
    Case("host", "theme export, replacing", ["theme", "export", "Mine", "out"], before=MINE, prepare=old_output),
    Case("host", "theme export, behind a link", ["theme", "export", "Mine", "out"], before=MINE, prepare=linked_output),
    Case("host", "render", ["render", "out"], prepare=old_output, **DRAWS),
    Case("host", "animate", ["animate", "out", "--seconds", "0.1"], prepare=old_output, **DRAWS),
    Case("host", "theme gallery", ["theme", "gallery", "out", "--scale", "0.5"], before=MINE, prepare=old_output, **DRAWS),
    Case("host", "drive: render FILE", ["drive", "../script"], prepare=drive_script("render out\n"), **DRAWS),
    Case("host", "drive --trace FILE", ["drive", "../script", "--trace", "out"],
         prepare=drive_script("open badge\nopen badgecolor\n"), **DRAWS),
    Case("host", "drive: inspect FILE", ["drive", "../script"], prepare=drive_script("inspect out\n"), **DRAWS),
    Case("preview", "drive: preview's icon, first of all", ["drive", "../script"], prepare=preview,
         program="tallyforge-draw", scope=("root/var/mobile/Documents",)),
    Case("preview", "drive: preview's icon", ["drive", "../script"], prepare=older_choice, program="tallyforge-draw",
         scope=("root/var/mobile/Documents",)),
    Case("furnishing", "first start", ["list"], **FURNISHES),
    Case("refurnishing", "start of a new version", ["list"], before=[("list",)], prepare=older_version, **FURNISHES),
    Case("refurnishing", "start after a power cut", ["list"], before=[("list",)], prepare=power_cut, **FURNISHES),
]


class Campaign:
    def __init__(self, bin_folder, library, every, traps):
        self.bin = pathlib.Path(bin_folder).resolve()
        self.every = every
        self.traps = traps
        memory = pathlib.Path("/dev/shm")
        self.base = tempfile.mkdtemp(prefix="tallyforge-faults-", dir=memory if os.access(memory, os.W_OK) else None)
        self.world = World(os.path.join(self.base, "world"))
        self.programs = Programs(str(self.bin.parent), library, self.world.folder)
        self.problems = []
        self.rows = []

    def close(self):
        shutil.rmtree(self.base)

    def problem(self, case, what, text):
        self.problems.append(f"{case.name}: {what}: {text}")

    def run(self, case, more=None, words=None):
        environment = {k: v.replace("WORLD", self.world.folder) for k, v in case.environment.items()}
        environment.update(more or {})
        prefix = os.path.join(self.world.folder, "prefix") if case.own_prefix else None
        return self.programs.run(words or case.words, environment, prefix)

    def make_old(self, case):
        shutil.rmtree(self.world.folder, ignore_errors=True)
        for folder in ("root", "files", "home"):
            os.makedirs(os.path.join(self.world.folder, folder))
        if case.own_prefix:
            self.make_prefix()
        for words in case.before:
            status, errors, _ = self.run(case, words=list(words))
            if status != 0:
                raise SystemExit(f"{case.name}: {' '.join(words)} failed: {errors}")
        if case.prepare:
            case.prepare(self.world.folder)
        return self.world.take()

    def make_prefix(self):
        prefix = pathlib.Path(self.world.folder, "prefix")
        (prefix / "bin").mkdir(parents=True)
        shutil.copy2(self.bin / "tallyforge", prefix / "bin/tallyforge")
        stock = "prefix/share/tallyforge/stock/"
        put(self.world.folder, stock + "System/mark.png", b"a mark" * 2000)
        put(self.world.folder, stock + "Applications/A.app/Info.plist", b"a property list")
        for name in ("ember.tft", "frost.tft"):
            put(self.world.folder, stock + DEFAULTS + "/" + name, b"the theme " + name.encode())

    def undisturbed(self, case, log):
        """The calls, what is there afterwards, what each file was on the way, and what was printed."""
        history = pathlib.Path(self.base, "history")
        shutil.rmtree(history, ignore_errors=True)
        history.mkdir()
        strict = {"FAULT_STRICT": "1"} if self.traps else {}
        faults = self.programs.faults(case.program, case.scope, log, FAULT_HISTORY=str(history), **strict)
        status, errors, output = self.run(case, faults)
        if status == -signal.SIGSYS:
            self.problem(case, "undisturbed", "a call that changes files goes around the library")
        elif status != 0 or bool(errors) != case.says:
            self.problem(case, "undisturbed", f"status {status}: {errors}")
        passed = {}
        for name in history.glob("*.name"):
            path = os.path.relpath(name.read_text(), self.world.folder)
            passed.setdefault(path, set()).add(name.with_suffix("").read_bytes())
        return self.calls(log), self.world.take(), passed, output

    @staticmethod
    def calls(log):
        with open(log, encoding="utf-8", errors="replace") as file:
            return file.read().splitlines()

    def campaign(self, case):
        log = os.path.join(self.base, "log")
        old = self.make_old(case)
        calls, new, passed, output = self.undisturbed(case, log)
        os.unlink(log)
        present = new
        plan = []
        for number, call in enumerate(calls, 1):
            acts = KILLS + ERRORS + [name + "+" for name in LASTING]
            if call.split()[0] in TRANSFERS:
                acts = acts + ["short"]
            if call.split()[0] == "openat2":
                acts = acts + ["EAGAIN"]  # a folder was moved while ".." was resolved
            plan += [(number, act) for act in acts]
        plan = plan[::self.every]
        for number, act in plan:
            self.world.put_back(old, present)
            value = act
            if act not in KILLS and act != "short":
                value = str(getattr(errno, act.rstrip("+"))) + ("+" if act.endswith("+") else "")
            result = self.run(case, self.programs.faults(case.program, case.scope, log, FAULT_AT=str(number), FAULT_DO=value))
            present = self.world.take()
            what = f"{act} at call {number}, {calls[number - 1].replace(self.world.folder + '/', '')}"
            reached = self.calls(log) if os.path.exists(log) else []
            if reached[:number] != calls[:number]:
                self.problem(case, what, "the calls before it are others than undisturbed")
            if reached:
                os.unlink(log)
            self.judge(case, what, act, result, present, old, new, passed, output)
            if act in KILLS or act.endswith("+"):
                present = self.start_again(case, what, present, old, new)
        kills = sum(act in KILLS for _, act in plan)
        self.rows.append((case.group, case.name, len(calls), kills, len(plan) - kills))

    def judge(self, case, what, act, result, present, old, new, passed, output):
        status, errors, printed = result
        may_remain = act in KILLS or act.endswith("+")
        for path in sorted(set(present) | set(old) | set(new)):
            value = present.get(path)
            if value in (old.get(path), new.get(path)) or (value and value[2] in passed.get(path, ())):
                continue
            if value and is_unfinished(path) and may_remain:
                continue
            self.problem(case, what, f"{path} is neither old nor new: {str(value)[:80]}")
        lines = errors.count("\n")
        if act in KILLS:
            if status != -signal.SIGKILL:
                self.problem(case, what, f"it was not killed: {status} {errors}")
        elif status == 0 and not (errors and not case.fatal):
            if present != new:
                self.problem(case, what, f"status 0, but not all is new: {errors}")
            if printed != output:
                self.problem(case, what, f"status 0, but it prints something else: {printed[:80]}")
            if bool(errors) != case.says:
                self.problem(case, what, f"status 0, and it says: {errors!r}")
        elif act == "EAGAIN":
            self.problem(case, what, f"it does not ask again: status {status}: {errors}")
        elif status not in ((1,) if case.fatal else (0, 1)):
            self.problem(case, what, f"status {status}: {errors}")
        elif not errors.startswith("tallyforge: ") or (lines != 1 and not act.endswith("+")):
            self.problem(case, what, f"status {status}, and it says: {errors!r}")

    def start_again(self, case, what, present, old, new):
        if present in (old, new):
            return present
        left = [path for path in present if is_unfinished(path)]
        if any(not path.startswith("files/") for path in left):
            self.run(case, words=case.start)
            after = self.world.take()
            if any(is_unfinished(path) and not path.startswith("files/") for path in after):
                self.problem(case, what, f"an unfinished file outlasts the next start: {left}")
            if not case.own_prefix and {k: v for k, v in present.items() if k not in left} != {
                    k: v for k, v in after.items() if k not in left}:
                self.problem(case, what, "the next start changes something else")
        self.run(case)
        after = self.world.take()
        if after != new:
            others = [path for path in set(after) | set(new) if after.get(path) != new.get(path)]
            self.problem(case, what, f"done again, the outcome is another one: {others}")
        return after


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("bin", help="the folder of the programs")
    parser.add_argument("library", help="the library that disturbs them")
    parser.add_argument("--group", action="append", help="only these: " + ", ".join(dict.fromkeys(c.group for c in CASES)))
    parser.add_argument("--case", default="", metavar="TEXT", help="only commands whose name in the table holds it")
    parser.add_argument("--every", type=int, default=1, metavar="N", help="only every Nth disturbance")
    parser.add_argument("--no-trap", action="store_true",
                        help="do not look for calls that go around the library: a sanitizer makes some of its own")
    options = parser.parse_args()

    os.umask(0o022)
    campaign = Campaign(options.bin, os.path.abspath(options.library), options.every, not options.no_trap)
    try:
        for case in CASES:
            if (not options.group or case.group in options.group) and options.case in case.name:
                campaign.campaign(case)
    finally:
        campaign.close()
    print(f"{'command':36} {'calls':>6} {'kills':>6} {'faults':>6}")
    for _, name, calls, kills, faults in campaign.rows:
        print(f"{name:36} {calls:6} {kills:6} {faults:6}")
    print(f"{'all':36} {sum(r[2] for r in campaign.rows):6} {sum(r[3] for r in campaign.rows):6} "
          f"{sum(r[4] for r in campaign.rows):6}")
    for problem in campaign.problems[:60]:
        print("PROBLEM " + problem)
    if campaign.problems:
        sys.exit(f"{len(campaign.problems)} problems")
    if any(calls < 5 for _, _, calls, _, _ in campaign.rows):
        sys.exit("a command whose calls were not seen")


if __name__ == "__main__":
    main()
