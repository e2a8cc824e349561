"""Width of a text in dialog units, estimated so that a layout can be judged without Windows.

A dialog unit is a quarter of the mean width of the dialog font's Latin letters, so the classes below hold for
every font that Windows puts in the place of "MS Shell Dlg 2". They are a little generous.
"""
import unicodedata

_NARROW = frozenset("iljtfrI.,:;'|!()[]{} \u00a0/\\-")
_WIDE_LOWER = frozenset("mw")
_WIDE_UPPER = frozenset("MWOQ@%")
_JOINING = frozenset(("Mn", "Me", "Cf"))


def character_width(character):
    if unicodedata.category(character) in _JOINING:
        return 0.0
    if unicodedata.east_asian_width(character) in "WF":
        return 7.5
    if character in _WIDE_LOWER or character in _WIDE_UPPER:
        return 6.5
    if character in _NARROW:
        return 2.6
    if character.isupper():
        return 5.2
    return 4.3


def text_width(text):
    """Width of one line; the mark of an access key takes no room."""
    return sum(character_width(c) for c in text.replace("&&", "\0").replace("&", "").replace("\0", "&"))
