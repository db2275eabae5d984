"""Writes themes as other archivers may write them: make_archives.py FOLDER

Each file NAME.tft holds a theme whose "themename" is NAME, with "badgesize" 1.25 and "badgebgcol" "#ABCDEF".
"""
import pathlib
import plistlib
import sys

UID = plistlib.UID
folder = pathlib.Path(sys.argv[1])


def in_xml(value):
    """The same with the dictionaries that stand for UIDs in an XML property list."""
    if isinstance(value, UID):
        return {'CF$UID': value.data}
    if isinstance(value, dict):
        return {key: in_xml(each) for key, each in value.items()}
    return [in_xml(each) for each in value] if isinstance(value, list) else value


def write(name, objects, fmt=plistlib.FMT_BINARY, root=1, **more):
    archive = {'$version': 100000, '$archiver': 'NSKeyedArchiver', '$top': {'root': UID(root)}, '$objects': objects}
    archive.update(more)
    archive = in_xml(archive) if fmt == plistlib.FMT_XML else archive
    (folder / (name + '.tft')).write_bytes(plistlib.dumps(archive, fmt=fmt, sort_keys=False))


def record(*classes):
    return {'$classname': classes[0], '$classes': list(classes)}


IMMUTABLE = record('NSDictionary', 'NSObject')
MUTABLE = record('NSMutableDictionary', 'NSDictionary', 'NSObject')
MUTABLE_STRING = record('NSMutableString', 'NSString', 'NSObject')


def plain(name, cls):
    return ['$null', {'NS.keys': [UID(2), UID(3), UID(4)], 'NS.objects': [UID(5), UID(6), UID(7)], '$class': UID(8)},
            'themename', 'badgesize', 'badgebgcol', name, 1.25, '#ABCDEF', cls]


write('immutable', plain('immutable', IMMUTABLE))
write('mutable', plain('mutable', MUTABLE))
write('xml', plain('xml', MUTABLE), plistlib.FMT_XML)
write('überschrift', plain('überschrift', MUTABLE))
write('xml immutable', plain('xml immutable', IMMUTABLE), plistlib.FMT_XML)

objects = plain('x', MUTABLE)
objects[5] = {'NS.string': 'mutable string', '$class': UID(9)}
write('mutable string', objects + [MUTABLE_STRING])
objects = plain('x', MUTABLE)
objects[2] = {'NS.string': 'themename', '$class': UID(9)}
objects[5] = 'mutable key'
write('mutable key', objects + [MUTABLE_STRING])

# Objects that nothing refers to, among them some of unknown classes.
write('orphans', plain('orphans', MUTABLE) + ['nobody', {'$class': UID(11), 'x': UID(9)}, record('NSUnknown', 'NSObject'), 7])
# The root is not the first object; the class stands before it.
write('other order', ['$null', MUTABLE, 'themename', 'badgesize', 'badgebgcol', 'other order', 1.25, '#ABCDEF',
                      {'NS.keys': [UID(2), UID(3), UID(4)], 'NS.objects': [UID(5), UID(6), UID(7)], '$class': UID(1)}], root=8)
# One object serves as several values.
write('shared', ['$null', {'NS.keys': [UID(2), UID(3), UID(4), UID(9), UID(10)],
                           'NS.objects': [UID(5), UID(6), UID(7), UID(6), UID(7)], '$class': UID(8)},
                 'themename', 'badgesize', 'badgebgcol', 'shared', 1.25, '#ABCDEF', MUTABLE, 'badgetxtsize', 'badgetxtcol'])
# A list is no setting, yet no reason to refuse the theme.
write('with a list', ['$null', {'NS.keys': [UID(2), UID(3), UID(4), UID(9)], 'NS.objects': [UID(5), UID(6), UID(7), UID(10)],
                                '$class': UID(8)}, 'themename', 'badgesize', 'badgebgcol', 'with a list', 1.25, '#ABCDEF',
                      MUTABLE, 'badgepos', {'NS.objects': [UID(6)], '$class': UID(11)}, record('NSArray', 'NSObject')])
