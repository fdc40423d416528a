# SPDX-License-Identifier: MIT
"""The code of the README is the code of an example that is built."""

import re
import sys
from pathlib import Path


def main():
    blocks = re.findall(r"```cpp\n(.*?)```", Path("README.md").read_text(), re.DOTALL)
    examples = {path: path.read_text() for path in Path("Examples").rglob("*.cpp")}
    problems = [f"README.md: this code stands in no example:\n{block}"
                for block in blocks if not any(block in text for text in examples.values())]
    if not blocks:
        problems.append("README.md shows no code")
    print("\n".join(problems) or f"{len(blocks)} blocks of code are built as examples")
    return 1 if problems else 0


sys.exit(main())
