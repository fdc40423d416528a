# SPDX-License-Identifier: MIT
"""Every text of the window is in every catalogue, with a translation that fits.

    python3 translations.py SOURCE LUPDATE            fails and names what is missing
    python3 translations.py SOURCE LUPDATE --write    brings new texts into the catalogues
"""

import re
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
from pathlib import Path

WINDOW = "Tools/qrvsettings-window"
PLACES = re.compile(r"%(?:L?\d+|n)")
# A key of the keyboard in the text of a menu entry or button.
MNEMONIC = re.compile(r"&(?=[^&\s])")


def updated(source, lupdate, catalogue):
    """A catalogue with all texts of the sources, and without those that are gone."""
    plural = ["-pluralonly"] if catalogue.stem.endswith("_en") else []  # English needs no more
    command = [lupdate, "-silent", "-locations", "none", "-no-obsolete", *plural, "-source-language", "en",
               str(source / WINDOW), "-ts", str(catalogue)]
    subprocess.run(command, check=True, capture_output=True)


def texts(catalogue):
    found = {}
    for context in ElementTree.parse(catalogue).getroot().iter("context"):
        for message in context.iter("message"):
            key = (context.findtext("name"), message.findtext("source"), message.findtext("comment") or "")
            found[key] = message
    return found


def translations_of(message):
    translation = message.find("translation")
    forms = translation.findall("numerusform")
    return [form.text or "" for form in forms] or [translation.text or ""]


def problems_of(name, message):
    source = message.findtext("source")
    if message.find("translation").get("type") == "unfinished":
        yield f"{name}: no translation: {source!r}"
        return
    for text in translations_of(message):
        if not text:
            yield f"{name}: an empty translation: {source!r}"
        # A form for one thing may do without its number.
        wanted, given = set(PLACES.findall(source)) - {"%n"}, set(PLACES.findall(text)) - {"%n"}
        if not given <= wanted if len(translations_of(message)) > 1 else wanted != given:
            yield f"{name}: other places for values: {source!r}, {text!r}"
        if bool(MNEMONIC.search(source)) != bool(MNEMONIC.search(text)):
            yield f"{name}: a key of the keyboard on one side only: {source!r}, {text!r}"


def problems(source, lupdate):
    catalogues = sorted((source / WINDOW / "Translations").glob("*.ts"))
    if not catalogues:
        yield "there are no catalogues"
    for catalogue in catalogues:
        with tempfile.TemporaryDirectory() as folder:
            copy = Path(folder, catalogue.name)
            shutil.copy(catalogue, copy)
            updated(source, lupdate, copy)
            wanted, held = texts(copy), texts(catalogue)
        yield from (f"{catalogue.name}: a text that no source has: {key}" for key in held if key not in wanted)
        yield from (f"{catalogue.name}: lacks a text: {key}" for key in wanted if key not in held)
        for key in held.keys() & wanted.keys():
            yield from problems_of(catalogue.name, held[key])


def main():
    source, lupdate = Path(sys.argv[1]), sys.argv[2]
    if sys.argv[3:] == ["--write"]:
        for catalogue in (source / WINDOW / "Translations").glob("*.ts"):
            updated(source, lupdate, catalogue)
        return 0
    found = sorted(problems(source, lupdate))
    print("\n".join(found) or "all texts are translated")
    return 1 if found else 0


sys.exit(main())
