# SPDX-License-Identifier: MIT
"""Numbers and names in the documents and headers are those of the code.

A fact is a constant, found in the sources by its name, and the texts that repeat it.
"""

import functools
import math
import re
import sys
from dataclasses import dataclass
from pathlib import Path

SOURCES = ("Frameworks", "Tools")
MEBIBYTE = 1024 * 1024
# What follows the name of a constant in seconds, up to its value.
VALUE = r"\b\s*[={(][^;\d]*(\d+)"
WORDS = {"one": 1, "two": 2, "three": 3, "four": 4, "five": 5}
# The permission bits that the sources name.
MODES = {"S_IRWXU": 0o700, "S_IRUSR": 0o400, "S_IWUSR": 0o200}

DURABILITY = "Documentation/Durability.md"
TOUR = "Documentation/Tour.md"
TOOL_PAGE = "Documentation/man/qrvsettings.1"
FILE_PAGE = "Documentation/man/qrvsettings.5"
CONCEPTS_PAGE = "Documentation/man/qrvsettings.7"
HEADERS = "Frameworks"


class NotFound(Exception):
    pass


@dataclass
class Fact:
    what: str
    # In which sources (a pattern of their names), and what the constant looks like; the group is its value.
    sources: str
    constant: str
    # Documents that repeat it, each with what the text looks like; the group is the number. A third
    # element is the unit of the number.
    texts: tuple
    # What the text looks like in the headers that repeat it, if any does.
    in_headers: str = ""


def sources(pattern):
    return [path for folder in SOURCES for path in sorted(Path(folder).rglob(pattern)) if path.suffix in {".cpp", ".h"}]


def number(text):
    """The value of a constant expression of the sources, or of a number in a text."""
    text = text.strip()
    if text in WORDS:
        return WORDS[text]
    if "S_I" in text:
        return sum(MODES[name.strip()] for name in text.split("|"))
    if re.fullmatch(r"0\d{3}", text):
        return int(text, 8)
    plain = re.sub(r"std::size_t\{(\d+)\}", r"\1", text).replace("'", "").replace(",", "")
    try:
        return math.prod(int(factor) for factor in plain.split("*"))
    except ValueError:
        raise NotFound(f'"{text}" is no number, and is not known to Tests/Checks/documented_facts.py') from None


def shown(value, like):
    return f"{value:04o}" if re.fullmatch(r"0\d{3}", like.strip()) else str(value)


def value_of(fact):
    found = {}
    for path in sources(fact.sources):
        for text in re.findall(fact.constant, path.read_text()):
            found.setdefault(number(text), path)
    if not found:
        raise NotFound(f"{fact.what}: no source named {fact.sources} has a constant like /{fact.constant}/; "
                       f"when it has moved or has another name, say so in Tests/Checks/documented_facts.py")
    if len(found) > 1:
        places = ", ".join(f"{value} in {path}" for value, path in found.items())
        raise NotFound(f"{fact.what}: the sources disagree: {places}")
    return next(iter(found.items()))


def differing(document, matches, value, scale, truth):
    for match in matches:
        if number(match[1]) * scale != value:
            quoted = " ".join(match[0].split())
            yield f'{document}: "{quoted}", but the {truth.format(shown(value // scale, match[1]))}'


def problems_of(fact):
    value, source = value_of(fact)
    for document, pattern, scale in ((*text, 1)[:3] for text in fact.texts):
        matches = list(re.finditer(pattern, Path(document).read_text()))
        if not matches:
            yield f"{document}: no text like /{pattern}/, which says the {fact.what} ({value} in {source})"
        yield from differing(document, matches, value, scale, f"{fact.what} is {{}} in {source}")
    for header in sorted(Path(HEADERS).rglob("*.h")) if fact.in_headers else ():
        text = re.sub(r"\n *///? ", " ", header.read_text())
        yield from differing(header, re.finditer(fact.in_headers, text), value, 1, f"{fact.what} is {{}} in {source}")


FACTS = (
    Fact("lifetime of a change record in seconds", "QRVSettings*", rf"\b(?:localChangeLifetime|lifetime){VALUE}",
         ((TOUR, r"last (\w+) seconds"), (TOUR, r"the (\w+) seconds are over")),
         r"last (\d+|one|two|three|four|five) s(?:econds)?\b"),
    Fact("timeout of a reader in seconds", "NSFileCoordinator.h", rf"\breaderLockTimeout{VALUE}",
         ((DURABILITY, r"time out after (\w+) seconds"), (FILE_PAGE, r"times out after (\w+) seconds")),
         r"than about (\w+) seconds"),
    Fact("limit of levels", "NSPropertyListSerialization.h", r"\bmaximumLevels = ([^;]+);",
         ((FILE_PAGE, r"([\d,]+) levels"),)),
    Fact("limit of bytes", "NSPropertyListSerialization.h", r"\bmaximumSize = ([^;]+);",
         ((FILE_PAGE, r"at most ([\d,]+) MiB", MEBIBYTE),)),
    Fact("limit of a file of locks", "QRVSettings+SiteFiles.h", r"\bmaximumSizeOfLocks = ([^;]+);",
         ((FILE_PAGE, r"text of up to ([\d,]+) MiB", MEBIBYTE),
          ("Frameworks/include/QRVSettings/QRVSettings.h", r"a file of locks: ([\d,]+) MiB", MEBIBYTE))),
    Fact("limit of text and data", "NSPropertyListSerialization.h", r"\bmaximumContents = ([^;]+);",
         ((FILE_PAGE, r"([\d,]+) MiB of\s+text and data", MEBIBYTE),)),
    Fact("limit of values", "NSPropertyListSerialization.h", r"\bmaximumValues = ([^;]+);",
         ((FILE_PAGE, r"([\d,]+) values"),)),
    Fact("limit of changes in the history", "QRVHistory.h", r"\bQRVHistoryMaximumChanges = ([^;]+);",
         ((CONCEPTS_PAGE, r"at most ([\d,]+) changes"),)),
    Fact("age of the history in hours", "QRVHistory.h", r"\bQRVHistoryMaximumAge\{([^}]+)\}",
         ((CONCEPTS_PAGE, r"changes and (\d+) days", 24),)),
    Fact("limit of symbolic links", "*", r"\bmaximumSymbolicLinks = (\d+);",
         ((DURABILITY, r"up to (\d+) links"),), r"(?:after|up to) (\d+) (?:of them|links)"),
    Fact("mode of a new file", "NewFileLinux.cpp", r"\bprivateMode = ([^;]+);",
         ((DURABILITY, r"new file has mode (\d+)"), (FILE_PAGE, r"new file has mode (\d+)")),
         r"new file is of mode (0\d{3})"),
    Fact("mode of a lock file", "FileLock*.cpp", r"\bmode_t mode = ([^;]+);",
         ((FILE_PAGE, r"has mode (\d+), is empty"),), r"mode (0\d{3}), never deleted"),
    Fact("mode of a new folder", "FilePathsLinux.cpp", r"\bmkdir\([^,]+, ([A-Z_]+)\)",
         ((DURABILITY, r"creates them with mode (\d+)"),), r"each of mode (0\d{3})"),
)


def problems_of_messages():
    """Messages that name a limit, wherever in the sources they are."""
    limits = (("levels", r'"[^"\n]*?([\d,]+) levels', 1), ("bytes", r'"[^"\n]*?([\d,]+) MiB', MEBIBYTE))
    for what, pattern, scale in limits:
        limit, _ = value_of(next(fact for fact in FACTS if fact.what == f"limit of {what}"))
        for path in (*sources("*.cpp"), *sources("*.h")):
            for match in re.finditer(pattern, path.read_text()):
                if number(match[1]) * scale != limit:
                    yield f"{path}: {match[0]}, but the limit of {what} is {limit // scale}"


def names_beside():
    """The endings of the files beside a settings file: lock, temporary file, start of a backup."""
    for path in sources("*.cpp"):
        body = re.search(r"^FilesBeside \w+\(.*?^}", path.read_text(), re.MULTILINE | re.DOTALL)
        if body:
            return re.findall(r'"(\.\w[^"]*)"', body[0]), path
    raise NotFound("no source defines a function that returns FilesBeside")


def problems_of_names():
    endings, source = names_beside()
    if len(endings) != 3:
        yield f"{source}: {endings} are not the endings of lock, temporary file and backup"
        return
    lock, temporary, backup = endings
    name = "org.qrv.monitor.menubar.7.plist"
    wanted = {
        DURABILITY: (f"`.NAME{lock}`", f"`.NAME{temporary}`", f"`NAME{backup}1`"),
        FILE_PAGE: (f".I .{name}{lock}\n", f".I .{name}{temporary}\n", f".I {name}{backup}1\n"),
    }
    for document, texts in wanted.items():
        page = Path(document).read_text().replace("\\-", "-")
        yield from (f"{document}: does not name {text.strip()}, as {source} does"
                    for text in texts if text not in page)


def words(text):
    return re.findall(r"[a-z]+", re.sub(r"^\.[A-Z]+ ", "", text, flags=re.MULTILINE).lower())


def meanings_in(section):
    """Exit codes with their texts, from the tagged paragraphs of a manual page."""
    paragraphs = section.split(".TP\n")[1:]
    return {int(code): text for code, text in
            (re.fullmatch(r"\.B (\d+)\n(.*)", paragraph, re.DOTALL).groups() for paragraph in paragraphs)}


def exit_codes():
    for path in sources("*.h"):
        body = re.search(r"enum class ExitCode\b[^{]*\{(.*?)\}", path.read_text(), re.DOTALL)
        if body:
            return {name: int(code) for name, code in re.findall(r"(\w+) = (\d+)", body[1])}, path
    raise NotFound("no header defines enum class ExitCode")


def problems_of_exit_codes():
    codes, source = exit_codes()
    section = Path(TOOL_PAGE).read_text().partition(".SH EXIT STATUS\n")[2].partition("\n.SH ")[0]
    meanings = meanings_in(section + "\n")
    if list(meanings) != sorted(codes.values()):
        yield f"{TOOL_PAGE}: EXIT STATUS lists {list(meanings)}, and {source} has {sorted(codes.values())}"
    for name, text in re.findall(r'ExitCodeMeaning\{ExitCode::(\w+),\s*"([^"]*)"\}', source.read_text()):
        listed = meanings.get(codes[name], "")
        if words(listed) != words(text):
            yield f'{TOOL_PAGE}: exit status {codes[name]} is "{" ".join(listed.split())}", and in {source} "{text}"'
    for match in re.finditer(r"exits with code (\d+)", Path(DURABILITY).read_text()):
        if int(match[1]) != codes.get("NotWritten"):
            yield f'{DURABILITY}: "{match[0]}", but NotWritten is {codes.get("NotWritten")} in {source}'
    page = Path(TOOL_PAGE).read_text()
    for match in re.finditer(r"with status (\d+) after this time", page):
        if int(match[1]) != codes.get("TimedOut"):
            yield f'{TOOL_PAGE}: "{match[0]}", but TimedOut is {codes.get("TimedOut")} in {source}'


def main():
    checks = [functools.partial(problems_of, fact) for fact in FACTS]
    problems = []
    for check in (*checks, problems_of_messages, problems_of_names, problems_of_exit_codes):
        try:
            problems += check()
        except NotFound as problem:
            problems.append(str(problem))
    print("\n".join(problems) or f"{len(FACTS)} constants, the names of files and the exit codes are as documented")
    return 1 if problems else 0


sys.exit(main())
