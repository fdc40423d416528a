# SPDX-License-Identifier: MIT
"""qrvsettings(3) has every function of the C interface as its header declares it, every constant, and no others."""

import re
import sys
from pathlib import Path

HEADER = "Frameworks/include/QRVSettings/QRVSettingsC.h"
PAGE = "Documentation/man/qrvsettings.3"


def plain(declaration):
    """Without blanks where they mean nothing."""
    return re.sub(r"\s*([*(),])\s*", r"\1", " ".join(declaration.split()))


def declared():
    text = Path(HEADER).read_text()
    functions = {plain(function) for function in re.findall(r"^QRV_EXPORT ([^;]*);", text, re.MULTILINE)}
    return functions, set(re.findall(r"^ {4}(QRV_\w+) = ", text, re.MULTILINE))


def in_bold(line):
    """The text of a request for bold or alternating fonts: words, or texts in quotation marks."""
    words = re.findall(r'"([^"]*)"|(\S+)', line.partition(" ")[2])
    return "".join(quoted or word for quoted, word in words)


def documented():
    """What has a paragraph of its own, with text below it."""
    functions, constants = set(), set()
    for tag, text in re.findall(r"^\.TP\n(\.B.*)\n(.*)", Path(PAGE).read_text(), re.MULTILINE):
        tag = in_bold(tag)
        if not text or text.startswith("."):
            continue
        if re.fullmatch(r"QRV_\w+", tag):
            constants.add(tag)
        elif tag.endswith(");") and "(*" not in tag:
            functions.add(plain(tag.removesuffix(";")))
    return functions, constants


def main():
    problems, count = [], 0
    for wanted, there in zip(declared(), documented()):
        count += len(wanted)
        problems += [f"{HEADER} declares what {PAGE} does not describe: {name}" for name in sorted(wanted - there)]
        problems += [f"{PAGE} describes what {HEADER} does not declare: {name}" for name in sorted(there - wanted)]
        if not wanted:
            problems.append(f"{HEADER} declares nothing that this check understands")
    print("\n".join(problems) or f"{count} functions and constants are described")
    return 1 if problems else 0


sys.exit(main())
