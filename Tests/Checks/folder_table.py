# SPDX-License-Identifier: MIT
"""The table of folders in ARCHITECTURE.md lists the folders that there are, all of them."""

import re
import sys
from pathlib import Path

# Folders that hold no work of ours, or that hold what their parent's row already tells.
LEFT_OUT = {".git", "build", ".cache", "corpus", "findings"}


def folders():
    found = set()
    for path in Path(".").rglob("*"):
        if path.is_file() and not LEFT_OUT & set(path.parts) and "__pycache__" not in path.parts:
            found.add(path.parent.as_posix() + "/")
    return found - {"./"}


def main():
    text = Path("ARCHITECTURE.md").read_text()
    listed = set(re.findall(r"^\| `([^`]+/)` \|", text, re.MULTILINE))
    problems = [f"{name} is in the table and not in the tree" for name in sorted(listed - folders())]
    problems += [f"{name} is in the tree and not in the table" for name in sorted(folders() - listed)]
    if not listed:
        problems.append("ARCHITECTURE.md has no table of folders")
    print("\n".join(problems) or f"{len(listed)} folders listed and there")
    return 1 if problems else 0


sys.exit(main())
