# SPDX-License-Identifier: MIT
"""Every source under Tests/ is compiled; a test that no build file names would never fail."""

import json
import sys
from pathlib import Path


def main():
    commands = json.loads(Path(sys.argv[1]).read_text())
    built = {Path(command["directory"], command["file"]).resolve() for command in commands}
    sources = {path.resolve() for path in Path("Tests").rglob("*.cpp")
               if path.parent.name != "consumer"}  # which the tests of the package build
    problems = [f"{path} is in no build" for path in sorted(sources - built)]
    if not sources:
        problems.append("no test sources found")
    print("\n".join(problems) or f"{len(sources)} test sources are built")
    return 1 if problems else 0


sys.exit(main())
