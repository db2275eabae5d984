"""The other side of the comparisons: Python's own property lists, and a keyed unarchiver on top of them.

write FOLDER              writes sample.binary and sample.xml as Python writes them
check FOLDER              reads ours.binary and ours.xml, which must be the sample; ours.binary to the byte
singles FOLDER            reads singles.binary, which must hold the listed single-precision reals
archives FIXTURES FOLDER  compares N.plist / N.refused with what the Nth fixture holds
archive FOLDER            resolves archive.binary, which must be the sample without UIDs
foreign FOLDER            writes archives as other programs lay them out
generate FOLDER SEED N    writes python.files, N generated property lists, binary ones and XML ones in turn
compare FOLDER SEED N     reads ours.files, which must hold the same N values
answer FOLDER SEED N      reads ours.files, and writes what they hold to python.files, as binary ones
"""

import datetime
import pathlib
import plistlib
import random
import struct
import sys
from plistlib import UID

DATE = datetime.datetime(2014, 9, 17, 16, 30, 5)


def sample(uids):
    value = {
        "true": True,
        "false": False,
        "zero": 0,
        "byte": 255,
        "short": 256,
        "long": 65536,
        "wide": 4294967296,
        "largest signed": 9223372036854775807,
        "large unsigned": 9223372036854775808,
        "largest unsigned": 18446744073709551615,
        "minus one": -1,
        "lowest": -9223372036854775808,
        "tenth": 0.1,
        "whole real": 1.0,
        "huge": 1e300,
        "empty": "",
        "ascii": "#FF8800",
        "fifteen characters": "123456789012345",
        "umlaut": "Größe",
        "beyond": "a\U0001F600b",
        "markup": "<a href='x'>&amp; \"q\"</a>",
        "spaces": "  two\tand\nlines  ",
        "data": bytes(range(256)),
        "no data": b"",
        "date": DATE,
        "array": [1, "1", 1.0, True, [], [0.1, "#FF8800"]],
        "dictionary": {"true": False, "inner": {}},
    }
    if uids:
        value["uid"] = UID(70000)
    return value


def same(a, b):
    """Equal in kind and value: to Python 1, 1.0 and True are equal."""
    if type(a) is not type(b):
        return False
    if isinstance(a, dict):
        return list(a) == list(b) and all(same(a[k], b[k]) for k in a)
    if isinstance(a, list):
        return len(a) == len(b) and all(map(same, a, b))
    return a == b


class Refused(Exception):
    pass


def unarchived(archive):
    if not isinstance(archive, dict) or archive.get("$archiver") != "NSKeyedArchiver":
        raise Refused("no archive")
    if not isinstance(archive["$top"].get("root"), UID):
        raise Refused("no root")
    objects = archive["$objects"]

    def follow(uid, path=()):
        if not isinstance(uid, UID) or not 0 < uid.data < len(objects) or uid.data in path:
            raise Refused("reference")
        found = objects[uid.data]
        if not isinstance(found, dict):
            return found
        path += (uid.data,)
        name = objects[found["$class"].data]["$classname"]
        if name in ("NSDictionary", "NSMutableDictionary"):
            keys = [follow(key, path) for key in found["NS.keys"]]
            if not all(isinstance(key, str) for key in keys):
                raise Refused("key")
            return dict(zip(keys, (follow(value, path) for value in found["NS.objects"])))
        if name in ("NSArray", "NSMutableArray"):
            return [follow(value, path) for value in found["NS.objects"]]
        if name in ("NSString", "NSMutableString"):
            return found["NS.string"]
        if name == "NSDate":
            return datetime.datetime(2001, 1, 1) + datetime.timedelta(seconds=found["NS.time"])
        raise Refused(name)

    return follow(archive["$top"]["root"])


def with_uids(value):
    """XML spells a UID as a dictionary."""
    if isinstance(value, dict):
        return UID(value["CF$UID"]) if list(value) == ["CF$UID"] else {k: with_uids(v) for k, v in value.items()}
    return [with_uids(v) for v in value] if isinstance(value, list) else value


def write(folder):
    (folder / "sample.binary").write_bytes(plistlib.dumps(sample(True), fmt=plistlib.FMT_BINARY, sort_keys=False))
    (folder / "sample.xml").write_bytes(plistlib.dumps(sample(False), fmt=plistlib.FMT_XML, sort_keys=False))


def check(folder):
    binary = (folder / "ours.binary").read_bytes()
    assert same(plistlib.loads(binary), sample(True)), plistlib.loads(binary)
    assert binary == plistlib.dumps(sample(True), fmt=plistlib.FMT_BINARY, sort_keys=False), binary.hex()
    xml = plistlib.loads((folder / "ours.xml").read_bytes(), fmt=plistlib.FMT_XML)
    assert same(xml, sample(False)), xml


def singles(folder):
    values = plistlib.loads((folder / "singles.binary").read_bytes())
    expected = [struct.unpack(">f", bytes.fromhex(bits))[0] for bits in ("3dcccccd", "c1a00000", "7f7fffff", "00000001")]
    assert values == expected, values


def archive(folder):
    data = plistlib.loads((folder / "archive.binary").read_bytes())
    assert list(data) == ["$version", "$archiver", "$top", "$objects"], list(data)
    assert same(unarchived(data), sample(False)), unarchived(data)


def archives(fixtures, folder):
    wrong, read, refused = [], 0, 0
    for number, path in enumerate(sorted(fixtures.rglob("*"), key=str)):
        if not path.is_file():
            continue
        try:
            expected = unarchived(with_uids(plistlib.loads(path.read_bytes())))
        except Refused:
            expected = None
        ours = folder / f"{number}.plist"
        if expected is None:
            refused += 1
            if not (folder / f"{number}.refused").exists():
                wrong.append(f"{path} should have been refused")
        elif not ours.exists():
            wrong.append(f"{path} should have been read")
        else:
            read += 1
            value = plistlib.loads(ours.read_bytes())
            if not same(value, expected):
                wrong.append(f"{path}: {value} instead of {expected}")
    print(*wrong, f"{read} read, {refused} refused", sep="\n")
    assert not wrong and read >= 3


def foreign(folder):
    record = {"$classname": "NSMutableDictionary", "$classes": ["NSMutableDictionary", "NSDictionary", "NSObject"]}
    text = {"$classname": "NSMutableString", "$classes": ["NSMutableString", "NSString", "NSObject"]}
    data = {
        "$version": 100000,
        "$archiver": "NSKeyedArchiver",
        "$top": {"root": UID(5)},
        "$objects": ["$null", "never referred to", record, text, "badgecolor",
                     {"NS.keys": [UID(4), UID(7)], "NS.objects": [UID(6), UID(6)], "$class": UID(2)},
                     {"NS.string": "#00FF00", "$class": UID(3)}, "textcolor", {"orphan": UID(99)}],
    }
    (folder / "foreign.binary").write_bytes(plistlib.dumps(data, fmt=plistlib.FMT_BINARY))

    def spelled(value):
        if isinstance(value, UID):
            return {"CF$UID": value.data}
        if isinstance(value, dict):
            return {k: spelled(v) for k, v in value.items()}
        return [spelled(v) for v in value] if isinstance(value, list) else value

    (folder / "foreign.xml").write_bytes(plistlib.dumps(spelled(data), fmt=plistlib.FMT_XML))


PIECES = ["a", "badge", "#FF8800", "<", "&amp;", "]]>", '"', "'", "\t", "\n", " ", "ö", "€", "\ufffd", "\U0001f600", "\u202e"]


def generated(chance, binary, depth=0):
    """Any value that the form holds; never -0.0, which Python takes for 0.0 and writes as one object."""

    def text():
        return "".join(chance.choices(PIECES, k=chance.randrange(40 if chance.randrange(20) == 0 else 6)))

    kind = chance.randrange(10 if depth < 4 else 7)
    if kind == 0:
        return chance.random() < 0.5
    if kind == 1:
        return chance.randrange(-(1 << 63), 1 << 64) >> chance.randrange(64)
    if kind == 2:
        return chance.choice((1, -1)) * (1 + chance.randrange(1 << 53)) * 10.0 ** chance.randrange(-300, 280)
    if kind == 3:
        return chance.randbytes(chance.randrange(40))
    if kind == 4:
        return datetime.datetime(1, 1, 1) + datetime.timedelta(seconds=chance.randrange(315537897600))
    if kind == 5:
        # Large ones, so that none comes twice: Python writes each of two equal ones out, the device refers to the first.
        return UID(chance.randrange(1 << 64) >> chance.randrange(32)) if binary else text()
    if kind == 6:
        return text()
    if kind == 7:
        return [generated(chance, binary, depth + 1) for _ in range(chance.randrange(6))]
    return {text(): generated(chance, binary, depth + 1) for _ in range(chance.randrange(8))}


def all_generated(seed, count):
    chance = random.Random(int(str(seed)))
    return [generated(chance, number % 2 == 0) for number in range(int(str(count)))]


def packed(files):
    return b"".join(struct.pack(">I", len(file)) + file for file in files)


def unpacked(path):
    data, files, at = path.read_bytes(), [], 0
    while at < len(data):
        length = struct.unpack_from(">I", data, at)[0]
        files.append(data[at + 4:at + 4 + length])
        at += 4 + length
    return files


def generate(folder, seed, count):
    forms = (plistlib.FMT_BINARY, plistlib.FMT_XML)
    (folder / "python.files").write_bytes(packed(
        plistlib.dumps(value, fmt=forms[number % 2], sort_keys=False)
        for number, value in enumerate(all_generated(seed, count))))


def compare(folder, seed, count):
    files = unpacked(folder / "ours.files")
    assert len(files) == int(str(count)), len(files)
    for number, (file, value) in enumerate(zip(files, all_generated(seed, count))):
        read = plistlib.loads(file)
        assert same(read, value), f"file {number}: {read} instead of {value}"


def answer(folder, _seed, count):
    files = unpacked(folder / "ours.files")
    assert len(files) == int(str(count)), len(files)
    (folder / "python.files").write_bytes(packed(
        plistlib.dumps(plistlib.loads(file), fmt=plistlib.FMT_BINARY, sort_keys=False) for file in files))


globals()[sys.argv[1]](*map(pathlib.Path, sys.argv[2:]))
