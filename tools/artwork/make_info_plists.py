#!/usr/bin/env python3
"""make_info_plists.py OUT: writes the property lists of the stock device's apps into the folder OUT.

What an app is called comes from apps.json; the same table always gives the same bytes.
"""

import datetime
import json
import pathlib
import plistlib
import sys

FORMATS = {"xml": plistlib.FMT_XML, "binary": plistlib.FMT_BINARY}


def info(app):
    phone = app.get("phoneIcon", "AppIcon60x60")
    pad = app.get("padIcon", "AppIcon76x76")
    facts = {
        "CFBundleIdentifier": app["identifier"],
        "CFBundleDisplayName": app["displayName"],
        "CFBundleName": app["name"],
        "CFBundleExecutable": pathlib.PurePosixPath(app["folder"]).stem,
        "CFBundlePackageType": "APPL",
        "CFBundleInfoDictionaryVersion": "6.0",
        "CFBundleShortVersionString": app["version"],
        "CFBundleVersion": app["build"],
        "CFBundleIcons": {"CFBundlePrimaryIcon": {"CFBundleIconFiles": [phone]}},
        "CFBundleIcons~ipad": {"CFBundlePrimaryIcon": {"CFBundleIconFiles": [phone, pad]}},
        "UIDeviceFamily": [1, 2],
    }
    if "tags" in app:
        facts["SBAppTags"] = app["tags"]
    return facts


def store_metadata(app):
    facts = dict(app["store"])
    released = datetime.datetime.strptime(facts["releaseDate"], "%Y-%m-%dT%H:%M:%SZ")
    facts["releaseDate"] = released
    facts["kind"] = "software"
    facts["copyright"] = f"© {released.year} {facts['artistName']}"
    facts["softwareVersionBundleId"] = app["identifier"]
    facts["bundleShortVersionString"] = app["version"]
    facts["bundleVersion"] = app["build"]
    return facts


def write(path, facts, form):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(plistlib.dumps(facts, fmt=FORMATS[form], sort_keys=True))


def main(arguments):
    if len(arguments) != 2:
        print("usage: make_info_plists.py OUT", file=sys.stderr)
        return 2
    out = pathlib.Path(arguments[1])
    table = pathlib.Path(__file__).with_name("apps.json")
    for app in json.loads(table.read_text(encoding="utf-8")):
        folder = out / app["folder"]
        write(folder / "Info.plist", info(app), app["format"])
        if "store" in app:
            write(folder.parent / "iTunesMetadata.plist", store_metadata(app), "binary")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
