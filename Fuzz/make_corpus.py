# SPDX-License-Identifier: MIT
"""Writes the inputs of Fuzz/corpus/ that are not from fuzzing: one of each form, and hostile ones.

    python3 Fuzz/make_corpus.py

Inputs named found-* come from fuzzing and are not changed. Every run writes the same files.
"""

import plistlib
import random
import struct
from datetime import datetime
from pathlib import Path

CORPUS = Path(__file__).parent / "corpus"
SIGNATURE = b"bplist00"


def big_endian(number, size):
    return number.to_bytes(size, "big")


def binary(objects, top=0, offset_size=2, reference_size=1, count=None, table=None, offsets=None,
           unused=bytes(6), signature=SIGNATURE):
    """A file in the binary format with these objects; each part can be made wrong."""
    body, places = signature, []
    for encoded in objects:
        places.append(len(body))
        body += encoded
    start = len(body)
    for place in offsets if offsets is not None else places:
        body += big_endian(place, offset_size)
    return (body + unused + bytes([offset_size & 0xFF, reference_size & 0xFF])
            + big_endian(len(objects) if count is None else count, 8) + big_endian(top, 8)
            + big_endian(start if table is None else table, 8))


def sized(marker, count, contents, width=None):
    """The marker, the count in it or after it, and the contents."""
    if width is None and count < 15:
        return bytes([marker << 4 | count]) + contents
    width = 0 if width is None else width
    return bytes([marker << 4 | 0xF, 0x10 | width]) + big_endian(count, 1 << width) + contents


def array(*references, size=1):
    return sized(0xA, len(references), b"".join(big_endian(r, size) for r in references))


def dictionary(keys, values):
    return sized(0xD, len(keys), bytes(keys) + bytes(values))


def text(characters):
    return sized(0x5, len(characters), characters.encode())


def utf16(*units):
    return sized(0x6, len(units), b"".join(big_endian(unit, 2) for unit in units))


def real(number):
    return b"\x23" + struct.pack(">d", number)


def date(seconds):
    return b"\x33" + struct.pack(">d", seconds)


def plain_tree():
    return {
        "CPU": {"Menubar": {"Enabled": True, "Width": 40}},
        "Items": ["cpu", 2.5, False, b"\x00\xff", datetime(2020, 2, 29, 23, 59, 59)],
        "Integers": [0, 255, 65536, -1, 2**63 - 1, -2**63, 2**64 - 1],
        "Text": "\u00e9\U0001F600 & <\t> \"'",
        "Empty": [{}, [], "", b""],
    }


def binary_lists():
    def nested(levels):
        return [array(index + 1, size=2) for index in range(levels)] + [b"\x09"]

    yield "plain", plistlib.dumps(plain_tree(), fmt=plistlib.FMT_BINARY)
    yield "one-value", binary([b"\x08"])
    yield "integers", binary([
        array(*range(1, 13)), b"\x10\xff", b"\x11\xff\xff", b"\x12\xff\xff\xff\xff",
        b"\x13" + b"\xff" * 8, b"\x13\x7f" + b"\xff" * 7, b"\x13\x80" + bytes(7),
        b"\x14" + bytes(8) + b"\xff" * 8, b"\x14" + b"\xff" * 8 + b"\x80" + bytes(7),
        b"\x14" + bytes(7) + b"\x01" + bytes(8), b"\x10\x00", b"\x11\x00\x00", b"\x15" + bytes(32)])
    yield "integer-out-of-range", binary([b"\x14" + bytes(7) + b"\x01" + bytes(8)])
    yield "integer-negative-128-bits", binary([b"\x14" + b"\xff" * 15 + b"\xfe"])
    yield "reals", binary([
        array(1, 2, 3, 4, 5, 6), b"\x22\x7f\x80\x00\x00", real(float("nan")), real(-0.0),
        real(5e-324), real(1.7976931348623157e308), b"\x22\x00\x00\x00\x01"])
    yield "real-of-two-bytes", binary([b"\x21\x3c\x00"])
    yield "date-first-second", binary([date(-63145526400.0)])
    yield "date-before-first-second", binary([date(-63145526400.5)])
    yield "date-last-second", binary([date(252423993599.9)])
    yield "date-after-last-second", binary([date(252423993600.0)])
    yield "date-furthest", binary([array(1, 2), date(2.0**62), date(-2.0**62)])
    yield "date-too-far", binary([date(2.0**62 + 1024)])
    yield "date-far", binary([array(1, 2), date(1.7e308), date(-1.7e308)])
    yield "dates-of-all-years", binary([array(*range(1, 7)), *map(date, (
        252423993600.5, -63145526400.5, 1e15 + 0.25, -1e15 - 0.25, 2.0**53 + 2, -1.5e18))])
    yield "date-infinite", binary([date(float("-inf"))])
    yield "date-fraction", binary([array(1, 2, 3), date(-0.25), date(5e-324), date(-5e-324)])
    yield "surrogate-pair", binary([utf16(0xD83D, 0xDE00, 0xFFFF, 0xFFFE, 0)])
    yield "surrogate-high-alone", binary([utf16(0x41, 0xD800)])
    yield "surrogate-low-alone", binary([utf16(0xDC00, 0x41)])
    yield "utf-8", binary([dictionary([1], [2]), sized(5, 2, b"\xc3\xa9"), sized(5, 8, "\u20ac\U0001F600x".encode())])
    for index, broken in enumerate([b"\xe9", b"\xc3(", b"\xc0\x80", b"\xed\xa0\x80", b"a\xe2\x82"]):
        yield f"utf-8-broken-{index}", binary([sized(5, len(broken), broken)])
    yield "refused-by-strict-readers", binary([
        dictionary([1], [2]), text("k\0"), array(3, 4, 5), utf16(0xFFFE), utf16(0x61, 0xFFFF), text("\t\r\n\x7f")])
    yield "control-characters", binary([text("".join(map(chr, range(0, 32))) + "\x7f")])
    yield "duplicate-keys", binary([dictionary([1, 1], [2, 3]), text("k"), b"\x10\x01", b"\x10\x02"])
    yield "key-no-string", binary([dictionary([1], [1]), b"\x10\x01"])
    yield "shared-dictionary", binary([array(1, 1, 1), dictionary([2], [3]), text("k"), array()])
    yield "cycle-itself", binary([array(0)])
    yield "cycle-of-two", binary([array(1, 1), dictionary([2], [0]), text("k")])
    yield "cycle-in-key", binary([dictionary([0], [1]), b"\x09"])
    yield "fan-out", binary([array(*[index + 1] * 10) for index in range(8)] + [b"\x09"])
    yield "fan-out-at-limit", binary([array(*[index + 1] * 14) for index in range(5)] + [b"\x09"])
    yield "fan-out-of-text", binary(
        [array(*[index + 1] * 14) for index in range(4)] + [sized(5, 200, b"t" * 200)])
    yield "fan-out-of-much-text", binary(
        [array(*[index + 1] * 14) for index in range(5)] + [sized(5, 200, b"t" * 200)])
    yield "fan-out-of-data-at-limit", binary(
        [array(*[index + 1] * 16) for index in range(4)] + [sized(4, 1024, b"d" * 1024, 1)])
    yield "fan-out-of-data-beyond-limit", binary(
        [array(*[index + 1] * 16) for index in range(4)] + [sized(4, 1025, b"d" * 1025, 1)])
    yield "fan-out-of-keys", binary(
        [array(*[index + 1] * 16) for index in range(4)] + [dictionary([5], [6]), sized(5, 1025, b"k" * 1025, 1), b"\x09"])
    yield "fan-out-of-dictionaries", binary(
        [dictionary([9], [index + 1]) if index % 2 else array(*[index + 1] * 12)
         for index in range(8)] + [b"\x09", text("k")])
    yield "depth-at-limit", binary(nested(512), reference_size=2)
    yield "depth-beyond-limit", binary(nested(513), reference_size=2)
    yield "depth-by-two-ways", binary(
        [array(1, 400, size=2)] + nested(512)[1:], reference_size=2)
    for width in range(4):
        largest = (1 << (8 << width)) - 1
        yield f"count-at-end-{8 << width}-bits", binary([sized(0x4, largest, b"xyz", width)])
        yield f"references-at-end-{8 << width}-bits", binary([sized(0xD, largest, b"\x00\x00", width)])
    yield "count-overflowing-twice", binary([sized(0xD, 1 << 63, b"\x00\x00", 3)])
    yield "count-of-sixteen-bytes", binary([b"\x4f\x14" + bytes(15) + b"\x01x"])
    yield "count-no-integer", binary([b"\x4f\x50x"])
    yield "count-cut-off", binary([b"\x4f"])
    yield "reference-past-end", binary([array(1)])
    yield "reference-of-eight-bytes", binary([array(2**64 - 1, size=8)], reference_size=8)
    yield "objects-overlap", binary([array(1, 2, 3), sized(4, 3, b"\x43\x42\x41")], count=4,
                                    offsets=[8, 12, 13, 14])
    yield "offsets-same", binary([array(1, 2), text("same")], count=3, offsets=[8, 11, 11])
    yield "offset-zero", binary([b"\x09"], offsets=[0])
    yield "offset-of-table", binary([b"\x09"], offsets=[9])
    yield "offset-of-eight-bytes", binary([b"\x09"], offset_size=8, offsets=[2**64 - 1])
    yield "offset-size-zero", binary([b"\x09"], offset_size=0, offsets=[])
    yield "offset-size-largest", binary([b"\x09"], offset_size=8)[:-26] + b"\xff" + binary([b"\x09"])[-25:]
    yield "reference-size-zero", binary([array(0)], reference_size=0)
    yield "reference-size-largest", binary([array(0)], reference_size=255)
    yield "objects-none", binary([b"\x09"], count=0)
    yield "objects-most", binary([b"\x09"], count=2**64 - 1)
    yield "objects-overflowing-table", binary([b"\x09"], offset_size=8, count=2**61 + 1)
    yield "top-past-end", binary([b"\x09"], top=1)
    yield "top-largest", binary([b"\x09"], top=2**64 - 1)
    yield "table-in-header", binary([b"\x09"], table=7)
    yield "table-past-end", binary([b"\x09"], table=2**64 - 1)
    yield "table-in-trailer", binary([b"\x09"], table=12)
    yield "null", binary([array(1), b"\x00"])
    yield "fill", binary([b"\x0f"])
    yield "uid", binary([b"\x80\x01"])
    yield "set", binary([b"\xc0"])
    yield "unknown-marker", binary([b"\x70"])
    yield "version-15", binary([b"\x09"], signature=b"bplist15")
    yield "version-0-and-a-byte", binary([b"\x09"], signature=b"bplist0\xff")
    yield "version-0-and-nul", binary([b"\x09"], signature=b"bplist0\0")
    yield "version-10", binary([b"\x09"], signature=b"bplist10")
    yield "signature-only", SIGNATURE
    yield "trailer-cut", binary([b"\x09"])[:-1]


def document(contents):
    return ('<?xml version="1.0" encoding="UTF-8"?>\n<plist version="1.0">' + contents
            + "</plist>\n").encode()


def xml_lists():
    one = "<plist><dict><key>k</key><string>\u00e9\U0001F600</string></dict></plist>"
    yield "plain", plistlib.dumps(plain_tree() | {"Integers": [0, -2**63, 2**64 - 1]})
    yield "bare", b"<dict><key>k</key><array><true/><false></false></array></dict>"
    yield "utf-16-little", b"\xff\xfe" + one.encode("utf-16-le")
    yield "utf-16-big", b"\xfe\xff" + one.encode("utf-16-be")
    yield "utf-32-little", b"\xff\xfe\0\0" + one.encode("utf-32-le")
    yield "utf-32-big", b"\0\0\xfe\xff" + one.encode("utf-32-be")
    yield "utf-16-without-mark", one.encode("utf-16-be")
    yield "utf-32-without-mark", one.encode("utf-32-le")
    yield "utf-16-cut", b"\xff\xfe" + one.encode("utf-16-le")[:-1]
    yield "utf-16-surrogate-alone", b"\xff\xfe" + "<string>".encode("utf-16-le") + b"\x00\xd8<\0"
    yield "utf-16-declared-in-utf-8", b'<?xml version="1.0" encoding="UTF-16"?>' + one.encode()
    yield "utf-8-declared-in-utf-16", b"\xff\xfe" + (
        '<?xml version="1.0" encoding="UTF-8"?>' + one).encode("utf-16-le")
    yield "latin-declared", b'<?xml version="1.0" encoding="ISO-8859-1"?><string>\xe9</string>'
    yield "ascii-declared", b"<?xml version='1.0' encoding='us-ascii'?><string>e</string>"
    yield "encoding-empty", b'<?xml version="1.0" encoding=""?><true/>'
    yield "mark-utf-8", b"\xef\xbb\xbf" + one.encode()
    yield "mark-twice", b"\xef\xbb\xbf\xef\xbb\xbf" + one.encode()
    yield "utf-8-overlong", b"<string>\xc0\xbc\xe0\x80\xbc</string>"
    yield "utf-8-surrogate", b"<string>\xed\xa0\x80</string>"
    yield "utf-8-past-end", b"<string>\xf4\x90\x80\x80</string>"
    yield "utf-8-cut", b"<string>\xf0\x9f\x98</string>"
    yield "nul", b"<string>a\0b</string>"
    yield "nul-at-end", b"<plist><true/></plist>\n\0 \0\n"
    yield "nul-at-end-wide", b"\xff\xfe" + "<true/>\0".encode("utf-16-le")
    yield "nul-before-text", b"<true/>\0x"
    yield "nul-in-place-of-end", b"<plist><true/>\0\0\0"
    yield "entities", document("<string>&lt;&gt;&amp;&quot;&apos;&#65;&#x1F600;&#0;&#xFFFF;</string>")
    for name, entity in [("unknown", "&nbsp;"), ("surrogate", "&#xD800;"), ("past-end", "&#x110000;"),
                         ("overflow", "&#4294967296;"), ("open", "&amp"), ("empty", "&;"),
                         ("no-digits", "&#x;"), ("signed", "&#-1;"), ("line", "&a\nb;")]:
        yield f"entity-{name}", f"<string>{entity}</string>".encode()
    yield "entities-nested", (
        b'<!DOCTYPE plist [<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;&a;&a;">]>'
        b"<plist><string>&b;&b;</string></plist>")
    yield "entity-from-file", (
        b'<!DOCTYPE plist [<!ENTITY f SYSTEM "file:///etc/hostname">]><plist><string>&f;</string></plist>')
    yield "document-type", (
        b'<!DOCTYPE plist PUBLIC "-//A>//B" \'[\'><plist><true/></plist>')
    yield "document-type-late", b"<plist><!DOCTYPE plist><true/></plist>"
    yield "comments", b"<!-- - -- > --><plist><!--><true/>--><true/><?p ?></plist><!---->"
    yield "comment-open", b"<true/><!-- "
    yield "cdata", b"<string>a<![CDATA[<&\r\n]]]]><![CDATA[>]]>b<!-- c --></string>"
    yield "cdata-open", b"<string><![CDATA[a]]</string>"
    yield "line-ends", b"<string>a\r\nb\rc\nd&#13;e</string>"
    yield "attributes", b"<plist version='1.0' a = \">\"><string xml:space='preserve' > </string ></plist>"
    yield "attribute-open", b"<plist version='1.0><true/></plist>"
    yield "white-space", b" \t\r\n<plist>\n<string> \t </string>\n</plist>\n "
    integers = ["0", "-0", "+1", "- 1", "+\n0x1F", "0x1F", "-0x8000000000000000", "18446744073709551615",
                "-9223372036854775808", " 7 "]
    yield "integers", document(
        "<array>" + "".join(f"<integer>{number}</integer>" for number in integers) + "</array>")
    for index, number in enumerate(["18446744073709551616", "-9223372036854775809", "", "0x", "1.0",
                                    "--1", "1e3", "0x10000000000000000"]):
        yield f"integer-refused-{index}", f"<integer>{number}</integer>".encode()
    reals = ["0", "-0.0", "nan", "-nan", "+INFINITY", "inf", "1e308", "4.9406564584124654e-324", ".5",
             "5.", "+1e+0", "0.1", "123456789012345678901234567890"]
    yield "reals", document("<array>" + "".join(f"<real>{number}</real>" for number in reals) + "</array>")
    for index, number in enumerate(["1e309", "1e-400", "", ".", "e5", "0x10", "1,5", "1e", "infinit"]):
        yield f"real-refused-{index}", f"<real>{number}</real>".encode()
    dates = ["0000-01-01T00:00:00Z", "9999-12-31T23:59:59Z", "2000-02-29T23:59:59.999999999Z",
             "1969-12-31T23:59:59.5Z", "2001-01-01T00:00:00.0Z", "1900-02-29T00:00:00Z", "2024-01-32T00:00:00Z",
             "2001-00-00T00:00:00Z", "2001-99-99T99:99:99.9Z", "10000-01-01T00:00:00Z", "-0001-12-31T23:59:60Z",
             "-285428781-01-01T00:00:00.5Z", "146138514314-06-20T07:45:04Z", "-146138510313-07-15T16:14:56Z"]
    yield "dates", document("<array>" + "".join(f"<date>{day}</date>" for day in dates) + "</array>")
    for index, day in enumerate(["-001-01-01T00:00:00Z", "2001-1-01T00:00:00Z", "2001-001-01T00:00:00Z",
                                 "146138514314-06-20T07:45:05Z", "9" * 40 + "-01-01T00:00:00Z", "+2001-01-01T00:00:00Z",
                                 "--2001-01-01T00:00:00Z", "2001-01-01T00:00:00.Z", "2001-01-01"]):
        yield f"date-refused-{index}", f"<date>{day}</date>".encode()
    yield "data", document("<array><data>AAEC\n\tAwQ=</data><data/><data>/+8=</data><data> </data></array>")
    for index, data in enumerate(["A", "AA==AA==", "A===", "====", "A-_=", "AAA"]):
        yield f"data-refused-{index}", f"<data>{data}</data>".encode()
    yield "duplicate-keys", b"<dict><key>k</key><true/><key/><false/><key>k</key><array/></dict>"
    yield "key-without-value", b"<dict><key>k</key></dict>"
    yield "value-without-key", b"<dict><true/></dict>"
    yield "element-unknown", b"<dict><key>k</key><String>a</String></dict>"
    yield "element-inside-text", b"<string>a<string>b</string></string>"
    yield "elements-crossed", b"<dict><key>k</key><array></dict></array>"
    yield "element-of-long-name", b"<" + "\u00e9".encode() * 60 + b"/>"
    yield "two-values", b"<plist><true/><true/></plist>"
    yield "no-value", b"<plist></plist>"
    yield "text-between", b"<array>x<true/></array>"
    yield "depth-at-limit", b"<array>" * 511 + b"<array/>" + b"</array>" * 511
    yield "depth-beyond-limit", b"<array>" * 513 + b"</array>" * 513
    yield "depth-of-dictionaries", b"<dict><key>k</key>" * 120 + b"<true/>" + b"</dict>" * 120
    yield "depth-never-closed", b"<array>" * 580
    yield "keys-with-dots", b"<dict><key>a.b</key><true/><key>.</key><true/><key></key><dict/></dict>"


def old_style_lists():
    yield "plain", b'{ a = "b"; c = ( d, <0fbd77>, { }, ( ), ); "k k" = /* x */ \'q\'; }\n// end'
    yield "bare", b"first = word; second = (1, 2.5, -3);"
    yield "bare-cut-between", b"first = word;"
    yield "bare-cut", b"first = word; second = (1"
    yield "strings", rb'( "\a\b\f\n\r\t\v\\\"\'", "\U00e9\UD83D\UDE00", "\341\0\12", a$b/c:d.e-f+g_h )'
    yield "octal-ends", rb'( "\0", "\177", "\200", "\375", "\377" )'
    yield "octal-of-no-character", rb'( "\376" )'
    yield "octal-overflow", rb'( "\777\400\501" )'
    yield "surrogate-alone", rb'( "\UD800" )'
    yield "surrogates-swapped", rb'( "\UDE00\UD83D" )'
    yield "surrogates-high-twice", rb'( "\UD83D\UD83D\UDE00" )'
    yield "escape-unknown", rb'( "\q\8\u00e9\-" )'
    yield "escape-of-long-character", '( "\\\u00e9\\\U0001F600" )'.encode()
    yield "escape-without-digits", rb'( "\Ug" )'
    yield "escape-short-surrogates", rb'( "\UD83D\UDE0" )'
    yield "escape-at-end", b'"a\\'
    yield "escape-short", rb'( "\U12\U9x\Uabc" )'
    yield "line-continued", b'"a\\\nb"'
    yield "data-spaces", b"<0f bd\n77>"
    yield "data-odd", b"<0fb>"
    yield "data-open", b"<0f"
    yield "data-empty", b"<>"
    yield "data-malformed", b"( <0fxx> )"
    yield "comment-open", b"{ /* "
    yield "comment-of-line", b"// only a comment"
    yield "utf-16", b"\xff\xfe" + "{ k = \"\u00e9\"; }".encode("utf-16-le")
    yield "mark-alone", b"\xef\xbb\xbf"
    yield "utf-8-broken", b'"\xff"'
    yield "lone-word", b"word"
    yield "lone-string", b'"text"'
    yield "duplicate-keys", b"{ k = a; k = b; }"
    yield "missing-semicolon", b"{ k = a; l = b }"
    yield "key-alone", b"{ k; 'l m'; n = (o); p; }"
    yield "key-alone-bare", b"k; l = m;"
    yield "key-alone-unfinished", b"{ k }"
    yield "missing-comma", b"( a b )"
    yield "text-after", b"{ } { }"
    yield "depth-at-limit", b"(" * 512 + b")" * 512
    yield "depth-beyond-limit", b"(" * 513 + b")" * 513
    yield "depth-of-dictionaries", b"{a=" * 300
    yield "depth-never-closed", b"(" * 2000
    yield "empty", b""
    yield "white-space", b" \n\t"


# The input of TreeDecoder in Fuzzing.h. A value is a byte for its form, followed by its contents.
KEYS = ["A", "B", "C", "D", "", ".", "A.B", "B.", ".A", "\u00e9", "\0", "a key that is longer"]
TRUE, FALSE = bytes([6, 0, 1]), bytes([6, 0, 0])


def key(name):
    return bytes([KEYS.index(name)]) if name in KEYS else bytes([12, len(name)]) + name.encode()


def entries(is_mutable, **values):
    """A dictionary; an underscore in a name stands for a dot, and for no character at all alone."""
    pairs = [(("" if name == "_" else name.replace("_", ".")), value) for name, value in values.items()]
    return bytes([len(pairs) * 2 + is_mutable]) + b"".join(key(name) + value for name, value in pairs)


def level(is_mutable, **values):
    return b"\0" + entries(is_mutable, **values)


def elements(*values):
    return bytes([3, len(values)]) + b"".join(values)


def part(index):
    return bytes([4, index])


def nested(levels, value):
    return bytes([5, levels]) + value


def integer(number):
    return bytes([6, 1, number])


def real_of(number):
    return bytes([6, 2, number])


def large_integer(index):
    return bytes([6, 3, index])


def large_real(index):
    return bytes([6, 4, index])


def string(digit):
    return bytes([6, 9, digit])


def of_memory_only(index):
    return bytes([6, 11, index, 1])


def tree_pairs():
    wide = entries(0, A=integer(1), B=TRUE, C=elements(string(0), string(1)),
                   D=level(1, A=real_of(2), B=of_memory_only(3)))
    yield "same", b"\0" + wide + wide
    yield "numbers", b"\0" + entries(0, A=integer(1), B=integer(0), C=large_integer(4), D=large_integer(5)) \
        + entries(1, A=real_of(1), B=FALSE, C=large_real(4), D=large_real(4))
    yield "number-ends", b"\0" + entries(
        0, A=large_integer(0), B=large_integer(1), C=large_integer(2), D=large_integer(3)) + entries(
        0, A=large_real(2), B=large_real(1), C=large_real(3), D=large_real(1))
    yield "reals-without-digits", b"\0" + entries(0, A=large_real(0), B=large_real(5), C=large_real(6)) \
        + entries(0, A=real_of(0), B=large_real(5), C=large_real(7))
    yield "leaf-becomes-level", b"\0" + entries(0, A=integer(1), B=level(0, A=TRUE)) \
        + entries(0, A=level(0, B=TRUE, C=FALSE), B=integer(1))
    yield "keys-alike", b"\0" + entries(0, A_B=integer(1)) + entries(0, A=level(0, B=integer(1)))
    yield "keys-alike-in-one-tree", b"\0" + entries(
        0, A_B=integer(1), A=level(1, B=integer(2))) + entries(0, A_B=integer(2))
    yield "keys-empty", b"\0" + entries(0, _=level(0, _=TRUE, A=FALSE)) + entries(0, _A=FALSE)
    yield "levels-without-leaves", b"\0" + entries(0, A=level(0, B=level(1))) + entries(1)
    shared = level(1, A=integer(1), B=level(0, C=TRUE))
    yield "shared-parts", b"\0" + entries(0, A=shared, B=part(0), C=part(1)) + entries(
        1, A=part(1), B=part(0), C=part(1), D=part(2))
    yield "fan-out", b"\0" + entries(0, A=shared, B=level(0, A=part(1), B=part(1), C=level(
        1, A=part(1), B=part(1), C=part(0)))) + entries(0, A=part(2), B=part(3), C=part(3))
    yield "depth", b"\0" + entries(0, A=nested(60, nested(60, level(0, B=integer(1))))) + entries(
        0, A=nested(60, nested(60, level(0, B=integer(2)))))
    yield "variant", b"\1" + wide + bytes([3]) + key("A") + bytes([0, 1]) + string(1) + key("D") \
        + bytes([1]) + key("B") + bytes([0]) + key("D") + bytes([2]) + key("C") + key("A") + bytes([1]) + TRUE


# Operations of StoreOperations.cpp, by their numbers there.
def where(*names):
    return bytes([4 + len(names) - 1]) + b"".join(key(name) for name in names)


def set_value(place, value):
    return bytes([16]) + place + b"\1" + value + b"\0"


def unset(place):
    return bytes([16]) + place + b"\0\0"


def set_in_profile(place, value):
    return b"\0" + place + b"\1" + value


def get(place):
    return bytes([2]) + place


def get_in_profile(place):
    return bytes([4]) + place


BEGIN_BATCH, COMMIT, REOPEN = bytes([10]), bytes([11]), bytes([13])
MANY_FILE_OPERATIONS, NO_FILE_OPERATIONS = bytes([24]), bytes([1])


def operations():
    defaults = entries(0, A=level(0, B=integer(1), C=level(0, D=TRUE)), B=string(1), C=elements(TRUE))
    ab, acd, b = where("A", "B"), where("A", "C", "D"), where("B")
    yield "default-is-removed", NO_FILE_OPERATIONS + defaults + b"".join(
        [get(ab), set_value(ab, integer(2)), get(ab), set_value(ab, real_of(1)), get(ab),
         bytes([8]) + ab, get(ab), set_value(b, string(1)), set_value(acd, integer(1))])
    yield "saved-and-reopened", MANY_FILE_OPERATIONS + defaults + b"".join(
        [set_value(ab, integer(2)), REOPEN, get(ab), set_value(acd, string(0)), REOPEN, get(acd)])
    yield "batch", MANY_FILE_OPERATIONS + defaults + b"".join(
        [BEGIN_BATCH, set_value(ab, integer(2)), set_value(b, FALSE), unset(ab), COMMIT, REOPEN,
         get(ab), get(b)])
    yield "not-storable", MANY_FILE_OPERATIONS + defaults + b"".join(
        [set_value(ab, of_memory_only(3)), set_value(b, of_memory_only(0)), get(b), REOPEN, get(ab)])
    yield "through-a-leaf", NO_FILE_OPERATIONS + defaults + b"".join(
        [set_value(where("D"), level(1, A=level(0, B=TRUE))), get(where("D", "A")),
         set_value(where("D", "A", "B", "C"), TRUE), set_value(where("D", "A", "C"), FALSE),
         get(where("D", "A")), get(where("D"))])
    yield "profiles", MANY_FILE_OPERATIONS + defaults + b"".join(
        [bytes([14, 1]), set_in_profile(ab, integer(2)), get_in_profile(ab), get_in_profile(b),
         bytes([14, 2]), get_in_profile(ab), set_in_profile(b, string(1)), REOPEN, get_in_profile(ab)])
    yield "import", MANY_FILE_OPERATIONS + defaults + b"".join(
        [set_value(ab, integer(2)), bytes([12]) + entries(1, A=level(1, B=string(0))), get(ab),
         bytes([8]) + ab, get(ab), set_value(ab, TRUE), REOPEN, get(ab)])
    yield "without-cache", MANY_FILE_OPERATIONS + defaults + b"".join(
        [bytes([15, 1]), get(ab), set_value(ab, integer(2)), get(ab), REOPEN, get(ab),
         get_in_profile(ab)])
    yield "missing-twice", NO_FILE_OPERATIONS + defaults + b"".join(
        [get(where("D", "A")), get(where("D", "A")), get_in_profile(where("D")), get_in_profile(where("D"))])
    yield "null-key-path", NO_FILE_OPERATIONS + defaults + bytes([2, 0, 16, 0, 1]) + TRUE + bytes([0, 4, 0])
    yield "level-changed-in-place", NO_FILE_OPERATIONS + defaults + b"".join(
        [set_value(where("D", "A"), TRUE), get(where("D")), set_value(where("D", "B"), FALSE),
         get(where("D")), unset(where("D", "A")), get(where("D"))])


COLOR_TEXTS = [
    "1 0.321 0.341 1", "2 -1 x 1", "0.5abc +0.25 \t1 1e-1x", "0x10 inf nan -infinity", " 1 1 1", "1  1 1",
    "1 1 1 1 ", "1 1 1", "", "   ", "1\t2 0 0 1", "+-1 -+1 +.5 -.", ". .e1 1. 1.e", "1e309 -1e309 1e-400 -0",
    "1e99999999999999999999 0e99999999999999999999 1e-99999999999999999999 1e",
    "3.4028236e38 3.4028235e38 1.17549435e-38 1e-46", "0" * 400 + "1 0." + "0" * 400 + "1 1 1", "1,5 1.5.5 1e1e1 1e+",
    "\0001 1\0 1 1", "\u00a01 \u0661 1 1", "\v1 \f1 \r1 \n1", "#3366cc", "#3366CCfF", "#3366c", "#-11111",
    "0.2\n0.4\n0.8", "1\n+1\n-1\n1e-1", "+\n-\n.\n1", "1\n2", "nan\ninf\n0x1\n1", "#\n#\n#"]

LINES = """# changes
set CPU.Menubar.Width 40
set A.B {"k":[1,2.5,true,"\\u00e9",{"$date":"2020-01-01T00:00:00.25Z"},{"$data":"AP8="},{"$real":"-inf"}]}
\tset "a b.\\n" "text"
set C two words   \r
set D -0.0
unset Menu.Theme.Dark
unset "x y"
"""


# Operations of MergeWrites.cpp, by their numbers there, with the process that runs them.
def merge_writes():
    keys = "ABC"

    def place(*names):
        return bytes([keys.index(names[0]), len(names) - 1]) + bytes(keys.index(name) for name in names[1:])

    def operation(process, number, rest=b""):
        return bytes([process, number]) + rest

    def value(process, names, number):
        return operation(process, 13, place(*names) + bytes([number]))

    def saved(process, ending=8):
        return operation(process, 6) + operation(process, ending)

    # A dictionary of one entry, as a value and as a tree.
    one = bytes([2, 1, 3])
    yield "both-are-kept", value(0, "A", 1) + value(1, "B", 2) + saved(0) + saved(1)
    yield "the-later-save-wins", value(0, "A", 1) + value(1, "A", 2) + saved(1) + saved(0)
    yield "through-a-value", value(0, "AB", 1) + value(1, "A", 2) + saved(1) + operation(0, 0, place(*"AB")) + saved(0)
    yield "failed-and-again", value(0, "A", 1) + saved(0, 10) + value(1, "B", 1) + saved(1) + value(0, "B", 2) + saved(0)
    yield "batch", operation(0, 3) + value(0, "A", 1) + saved(0) + operation(0, 11) + operation(0, 4) + saved(0)
    yield "whole-tree", value(0, "A", 1) + saved(0) + operation(1, 5, one) + saved(1) + value(0, "C", 1) + saved(0)
    yield "dictionary", operation(0, 13, place("A") + bytes([6]) + one) + saved(0) + value(1, "AB", 1) + saved(1)
    yield "write-during-a-save", value(0, "A", 1) + operation(0, 6) + value(0, "A", 2) + operation(0, 10) + saved(0)
    yield "deleted", value(0, "A", 1) + saved(0) + operation(2, 12) + value(0, "B", 1) + saved(0)


def tool_inputs():
    lines, json, key_path, text = (bytes([index]) for index in range(4))
    yield "lines", lines + LINES.encode()
    for index, line in enumerate([
            "set", "set A", "unset", "unset A B", "change A 1", 'set "A 1', 'set "A"1', "set A {", 'set A ""',
            "set A null", "set A 18446744073709551616", "set A 1e999", "set . .", "set A \x7f\x01", "\v",
            "set " + "a." * 600 + "b 1", 'unset "\\ud800"', "set A 1\rset B 2", "unset \u00a0\u2028",
            "set --type string A 5", "set --type=int --profile p A.q 1", 'set --profile "a b" -- --A -- 1', "set A --B",
            "unset --profile=p -- --A", "set --type=x A 1", "set --profile= A 1"]):
        yield f"line-{index}", lines + line.encode()
    yield "line-not-utf-8", lines + b"set A \xff"
    yield "json", json + (
        b'{"a":[0,-0,-0.0,1e5,1E-5,18446744073709551615,-9223372036854775808,true,false,"\\u0000\\ud83d\\ude00"],'
        b'"a":{},"$dictionary":{"$date":1},"d":{"$date":"2001-01-01T00:00:00Z"}}')
    for index, value in enumerate([
            '{"$date":1e300}', '{"$date":1e-20}', '{"$date":-1e-20}', '{"$date":{"$real":"nan"}}', '{"$date":1}',
            '{"$date":"0000-01-01T00:00:00Z"}', '{"$date":"9999-12-31T23:59:59.999999Z"}', '{"$date":"2001-02-29T00:00:00Z"}',
            '{"$data":"AA="}', '{"$data":"AA== "}', '{"$data":"===="}', '{"$real":"inf"}', '{"$real":"1"}', '{"$real":1}',
            '{"$dictionary":{"$data":"x"}}', '{"$dictionary":{"$dictionary":{}}}', '{"$dictionary":1}', '{"$x":1}',
            '{"$date":1,"x":2}', "null", "[null]", "", " ", "1 2", "[1,]", "{", '"\\ud800"', '"\x01"', "1e400", "-1e400",
            "1e-400", "18446744073709551616", "-9223372036854775809", "01", "+1", ".5", "1.", "NaN", "tru", "'a'", "// c\n1",
            "[" * 512 + "]" * 512, "[" * 513 + "]" * 513, '{"$dictionary":' * 300 + "{}" + "}" * 300, '{"a":' * 600,
            "[" * 3000,
            '{"A.b":1,"A":{"c":2}}', '{"A.b":1,"A.b.c":2}', '{"A":1,"A.b":2}', '{"$dictionary":{"A.b":1}}', '{"..":{},"A.b":{}}']):
        yield f"json-{index}", json + value.encode()
    yield "json-not-utf-8", json + b'"\xc3"'
    yield "json-mark", json + b"\xef\xbb\xbf1"
    for index, path in enumerate(["CPU.Menubar", "", '"', 'a"b', "a\tb\n", "\x7f", "\u0085\u2028", "a b", "\0", "--type"]):
        yield f"key-path-{index}", key_path + path.encode()
    scalars = ["true", "False", "-9223372036854775808", "18446744073709551615", "-0", "1e", ".5e+1", "-.", "nan", "-nan",
               "2020-02-29T23:59:59.5Z", "1900-02-29T00:00:00Z", "0000-01-01T00:00:00Z", "AP8=", "A P\n8 =", "AA=A", "[1]",
               '"s"', "{}", "text", "", "1e-400", "4.9e-324", "0.1", "2001-01-01T00:00:00." + "0" * 40 + "1Z"]
    for index, scalar in enumerate(scalars):
        yield f"text-{index}", text + bytes([index]) + scalar.encode()


def revisions():
    """Any bytes are a tree and its changes; these reach each of the ways."""
    for choice in range(4):
        for index in range(24):
            numbers = random.Random(100 * choice + index)
            size = 40 + 20 * index
            yield f"{choice}-{index}", bytes([choice]) + bytes(numbers.randrange(256) for _ in range(size))
    empty = bytes(2)
    yield "text-binary", empty + SIGNATURE
    yield "text-comment", empty + b"<plist><!-- a --><dict><key>a</key><true/></dict></plist>"
    yield "text-not-utf-8", empty + b"<plist><dict><key>\xff</key><true/></dict></plist>"


def write(folder, inputs):
    (CORPUS / folder).mkdir(parents=True, exist_ok=True)
    for old in (CORPUS / folder).iterdir():
        if not old.name.startswith("found-"):
            old.unlink()
    for name, contents in inputs:
        path = CORPUS / folder / name
        assert not path.exists(), path
        path.write_bytes(contents)


def named(prefix, inputs):
    return ((f"{prefix}-{name}", contents) for name, contents in inputs)


def main():
    write("CompareTrees", tree_pairs())
    write("ReviseText", revisions())
    write("StoreOperations", operations())
    write("MergeWrites", merge_writes())
    write("ColorTexts", ((f"text-{index}", bytes(text, "utf-8")) for index, text in enumerate(COLOR_TEXTS)))
    write("ToolInput", tool_inputs())
    write("PropertyLists", [*named("binary", binary_lists()), *named("xml", xml_lists()),
                            *named("old-style", old_style_lists())])


main()
