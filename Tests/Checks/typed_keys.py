# SPDX-License-Identifier: MIT
"""The compiler refuses a misspelt typed key and a value of the wrong kind, and takes what is right.

    python3 typed_keys.py COMPILER
"""

import re
import subprocess
import sys

PROGRAM = """#include <QRVSettings/QRVHeldKeys.h>
inline constexpr QRVKey<std::int64_t> interval("Host.Interval");
void host() {{
{}
}}
"""
COMPILES = (
    "const bool isOn = QRVSettingsValue(Keys::CPU::Menubar::Enabled); (void)isOn;",
    "const std::string theme = QRVSettingsProfileValue(Keys::Menu::Theme::Dark); (void)theme;",
    "QRVSettingsSetValue(1, Keys::Processes::Combine);",
    "QRVSettingsSetValue(NSColor{}, Keys::Network::Menubar::Mode::Status::NoIP::Color);",
    "QRVSettingsSetValue(nullptr, Keys::CPU::Menubar::Enabled);",
    "const std::int64_t seconds{QRVSettingsValue(interval, 30)}; (void)seconds;",
    "QRVSettingsClearCacheForKeyPath(interval);",
    'QRVSettingsSetObjectForKeyPath("any", Keys::CPU::Menubar::Enabled);',
    "const QRVHeldKey held(Keys::CPU::Menubar::Enabled); const bool isHeldOn = held.value(); (void)isHeldOn;",
    "const QRVHeldProfileKey<std::int64_t> heldInterval{interval}; (void)heldInterval.value(30);",
)
# Each with a word of the message, so that no other mistake makes it fail.
DOES_NOT_COMPILE = (
    ("QRVSettingsValue(Keys::CPU::Menubar::Enable);", "Enable"),
    ("QRVSettingsValue(Keys::CPU::Menubr::Enabled);", "Menubr"),
    ("QRVSettingsValue(Keys::Menu::Theme::Vibrancy);", "Vibrancy"),
    ("QRVSettingsValue(Keys::Device::Device);", "Device"),
    ('QRVSettingsValue("CPU.Menubar.Enabled");', "QRVSettingsValue"),
    ("QRVSettingsSetValue(1, Keys::CPU::Menubar::Enabled);", "QRVSettingsSetValue"),
    ('QRVSettingsSetValue("true", Keys::CPU::Menubar::Enabled);', "QRVSettingsSetValue"),
    ("QRVSettingsSetValue(true, Keys::Processes::Combine);", "QRVSettingsSetValue"),
    ("QRVSettingsProfileSetValue(true, Keys::Processes::Combine);", "QRVSettingsProfileSetValue"),
    ("QRVSettingsSetValue(1, Keys::Menu::Theme::Dark);", "QRVSettingsSetValue"),
    ('QRVSettingsSetValue("1 0 0 1", Keys::Network::Menubar::Mode::Status::NoIP::Color);', "QRVSettingsSetValue"),
    ("const NSArray items = QRVSettingsValue(Keys::CPU::Menubar::Enabled);", "NSArray"),
    ("const bool isOn{QRVSettingsValue(Keys::Processes::Combine)};", "bool"),
    ('constexpr QRVKey<int> key("Host.Key");', "QRVKey"),
    ("const QRVHeldKey<bool> heldCombine(Keys::Processes::Combine);", "QRVHeldKey"),
    ('const QRVHeldKey<bool> heldText("CPU.Menubar.Enabled");', "QRVHeldKey"),
)


def messages(compiler, statements):
    """The errors of a program of these statements, a line for each, by the number of the statement."""
    lines = "\n".join(statements)
    result = subprocess.run(
        [compiler, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Wconversion", "-Werror",
         "-IFrameworks/include", "-x", "c++", "-"],
        input=PROGRAM.format(lines), capture_output=True, text=True, check=False)
    first = PROGRAM.partition("{}")[0].count("\n") + 1
    found = {}
    for line, text in re.findall(r"^<stdin>:(\d+):\d+: error: (.*)$", result.stderr, re.MULTILINE):
        found.setdefault(int(line) - first, []).append(text)
    return found, result.stderr


def problems(compiler):
    found, errors = messages(compiler, COMPILES)
    if found or errors:
        yield f"does not compile:\n{errors}"
    found, errors = messages(compiler, [statement for statement, _ in DOES_NOT_COMPILE])
    for number, (statement, word) in enumerate(DOES_NOT_COMPILE):
        if number not in found:
            yield f"compiles: {statement}"
        elif not any(word in text for text in found[number]):
            yield f'does not compile, but not because of "{word}": {statement}\n{errors}'


def main():
    found = list(problems(sys.argv[1]))
    print("\n".join(found) or f"{len(COMPILES)} statements compile, and {len(DOES_NOT_COMPILE)} do not")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
