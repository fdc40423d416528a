# SPDX-License-Identifier: MIT
"""The code of the README and the documents is the code of examples that are built."""

import re
import sys
import textwrap
from pathlib import Path


def main():
    documents = [Path("README.md"), *sorted(Path("Documentation").glob("*.md"))]
    blocks = [(document, textwrap.dedent(block)) for document in documents
              for block in re.findall(r"```(?:cpp|c|python)\n(.*?)```", document.read_text(), re.DOTALL)]
    examples = [path.read_text() for pattern in ("*.cpp", "*.c", "*.py") for path in Path("Examples").rglob(pattern)]
    texts = examples + [textwrap.dedent(re.sub(r"^    ", "", text, flags=re.MULTILINE)) for text in examples]
    problems = [f"{document}: this code stands in no example:\n{block}"
                for document, block in blocks if not any(block in text for text in texts)]
    if not blocks:
        problems.append("no document shows code")
    print("\n".join(problems) or f"{len(blocks)} blocks of code are built as examples")
    return 1 if problems else 0


sys.exit(main())
