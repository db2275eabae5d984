"""Prints a keyed archive of a dictionary as JSON: its layout, and its entries with the kinds of their numbers.

A property list that is no archive is printed as it is. Usage: read_archive.py FILE
"""
import json
import plistlib
import struct
import sys


def kinds_in_file(data):
    """The kind of every object of a binary property list, by its number, from the bytes alone."""
    offset_size, _, count, _, table = struct.unpack('>6xBBQQQ', data[-32:])
    kinds = []
    for i in range(count):
        at = int.from_bytes(data[table + i * offset_size:table + (i + 1) * offset_size], 'big')
        kinds.append(data[at])
    return kinds, offset_size, table


def kind(marker):
    high = marker >> 4
    if marker in (8, 9):
        return 'boolean'
    return {1: 'integer', 2: f'real {1 << (marker & 15)}', 5: 'text', 6: 'text'}.get(high, hex(marker))


def references(data, number, kinds, offset_size, table, reference_size):
    """The objects that an array of the file refers to."""
    at = int.from_bytes(data[table + number * offset_size:table + (number + 1) * offset_size], 'big')
    length, at = data[at] & 15, at + 1
    if length == 15:
        size = 1 << (data[at] & 15)
        length, at = int.from_bytes(data[at + 1:at + 1 + size], 'big'), at + 1 + size
    return [int.from_bytes(data[at + i * reference_size:at + (i + 1) * reference_size], 'big') for i in range(length)]


def main():
    data = open(sys.argv[1], 'rb').read()
    archive = plistlib.loads(data)
    if '$archiver' not in archive:
        print(json.dumps(archive))
        return
    assert data[:8] == b'bplist00' and archive['$archiver'] == 'NSKeyedArchiver' and archive['$version'] == 100000
    objects = archive['$objects']
    root = objects[archive['$top']['root'].data]
    keys = [uid.data for uid in root['NS.keys']]
    values = [uid.data for uid in root['NS.objects']]
    record = root['$class'].data
    kinds, offset_size, table = kinds_in_file(data)
    # "$objects" is the fourth value of the top object, which is the first of the file.
    top = int.from_bytes(data[9:9 + 8 * data[-25]][7 * data[-25]:8 * data[-25]], 'big')
    entries = references(data, top, kinds, offset_size, table, data[-25])
    assert len(entries) == len(objects)
    print(json.dumps({
        'top': {name: uid.data for name, uid in archive['$top'].items()},
        'first': objects[0],
        'classes': objects[record]['$classes'],
        'keys': [objects[i] for i in keys],
        'uidsOfKeys': 'in order' if keys == list(range(2, 2 + len(keys))) else keys,
        'classLast': record == len(objects) - 1,
        'values': {objects[k]: objects[v] for k, v in zip(keys, values)},
        'kinds': {objects[k]: kind(kinds[entries[v]]) for k, v in zip(keys, values)},
    }))


main()
