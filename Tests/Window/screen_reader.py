# SPDX-License-Identifier: MIT
"""What a screen reader finds in the window, and that all of it can be used so.

    python3 screen_reader.py WINDOW TOOL FOLDER

FOLDER is of the test's own. The window runs on a display, a bus and an accessibility bus of the test's own.
Skipped (exit code 77) where one of them is not installed.
"""

import os
import shutil
import subprocess
import sys
import time
from pathlib import Path

SKIPPED = 77
LAUNCHER = next((path for path in ("/usr/libexec/at-spi-bus-launcher", "/usr/lib/at-spi2-core/at-spi-bus-launcher")
                 if Path(path).exists()), None)
DEADLINE = 90  # seconds; a sanitizer is slow
WIDTH = "CPU.Menubar.Mode.HistoryGraph.Width"
INSIDE = "QRV_SCREEN_READER_TEST_INSIDE"

try:
    import gi

    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi, GLib
except (ImportError, ValueError):
    Atspi = None


class Failure(Exception):
    pass


def wait_for(condition, what):
    """The value of a condition as soon as it is true; the main loop runs meanwhile."""
    end = time.monotonic() + DEADLINE
    context = GLib.MainContext.default()
    while time.monotonic() < end:
        while context.pending():
            context.iteration(False)
        try:
            value = condition()
        except GLib.Error:  # what was there is being replaced
            value = None
        if value:
            return value
        time.sleep(0.02)
    raise Failure(f"waited in vain: {what}")


def children(item):
    return [child for child in (item.get_child_at_index(index) for index in range(item.get_child_count()))
            if child is not None]


def search(item, wanted, depth=0):
    """The first item of a tree for which `wanted` is true; tables are not entered."""
    if wanted(item):
        return item
    if depth > 20 or item.get_role() in (Atspi.Role.TREE, Atspi.Role.TABLE, Atspi.Role.TREE_TABLE):
        return None
    for child in children(item):
        found = search(child, wanted, depth + 1)
        if found is not None:
            return found
    return None


def tree_text(item, depth=0):
    lines = [f"{'  ' * depth}{item.get_role_name()} {item.get_name()!r} {item.get_description()!r}"]
    if depth < 8 and item.get_role() not in (Atspi.Role.TREE, Atspi.Role.TABLE, Atspi.Role.TREE_TABLE):
        lines += [line for child in children(item) for line in tree_text(child, depth + 1).splitlines()]
    return "\n".join(lines)


def named(root, role, name):
    return search(root, lambda item: item.get_role() == role and item.get_name() == name)


def press(item):
    """What its name says, as a screen reader presses a button."""
    actions = [item.get_action_name(index).lower() for index in range(item.get_n_actions())]
    wanted = next((name for name in ("press", "toggle", "check", "click") if name in actions), None)
    if wanted is None or not item.do_action(actions.index(wanted)):
        raise Failure(f"cannot be pressed: {item.get_name()}, which can {actions}")


def type_into(item, text):
    if not item.set_text_contents(text):
        raise Failure(f"cannot be edited: {item.get_name()}")


def key(name):
    """A key of the keyboard, for whatever has the focus."""
    subprocess.run(["xdotool", "key", name], check=True)


class Reader:
    def __init__(self, window, tool):
        self.window, self.tool = window, tool
        self.process = None

    def run_tool(self, *words):
        return subprocess.run([self.tool, *words], check=True, capture_output=True, text=True).stdout.strip()

    def start(self):
        self.process = subprocess.Popen([self.window])
        desktop = Atspi.get_desktop(0)
        self.application = wait_for(lambda: next((child for child in children(desktop)
                                             if child.get_name() == "qrvsettings-window"), None), "the window")
        self.frame = wait_for(lambda: next(iter(children(self.application)), None), "the frame of the window")
        self.table = wait_for(lambda: named(self.frame, Atspi.Role.TREE, "Settings"), "the table")
        self.filter = wait_for(lambda: named(self.frame, Atspi.Role.TEXT, "Filter"), "the filter")

    def rows(self):
        return self.table.get_n_rows()

    def cell(self, row, column):
        return self.table.get_accessible_at(row, column)

    def row_texts(self, row):
        columns = self.table.get_n_columns()
        return [self.cell(row, column).get_name() for column in range(columns)]

    def expect(self, condition, what):
        if not condition:
            raise Failure(f"{what}\n{tree_text(self.frame)}")

    def filter_modified(self):
        """The table has as many rows and columns as the filter lets through, and says what they are."""
        wait_for(lambda: self.rows() > 5, "rows")
        press(named(self.frame, Atspi.Role.RADIO_BUTTON, "Flat"))
        type_into(self.filter, "is:modified")
        wait_for(lambda: self.rows() == 2, "two modified settings")
        self.expect(self.table.get_n_columns() == 6, "six columns")
        name, _, value, layer, default, _ = self.row_texts(0)
        self.expect((value, layer, default) == ("60", "stored", "40"), "the cells of the first row")
        for part in ("CPU.Menubar.Mode.HistoryGraph.Width", "60", "stored", "modified"):
            self.expect(part in name, f"{part} in the name of the row, {name}")
        press(named(self.frame, Atspi.Role.CHECK_BOX, "Modified 2"))
        wait_for(lambda: self.rows() > 50, "all settings after the box is no longer checked")
        press(named(self.frame, Atspi.Role.CHECK_BOX, "Modified 2"))
        wait_for(lambda: self.rows() == 2, "the two after it is checked again")

    def edit_by_keys(self):
        self.take_the_keyboard()
        self.table.grab_focus()
        wait_for(lambda: self.cell(0, 0).get_state_set().contains(Atspi.StateType.FOCUSED), "the focus in the first row")
        for name in ("Return", "ctrl+a", "7", "7", "Return"):
            key(name)
        wait_for(lambda: "pending" in self.cell(0, 0).get_name(), "the edit in the name of the row")
        self.expect("77" in self.cell(0, 2).get_name(), "the value that will be stored")
        self.expect(self.run_tool("get", WIDTH) == "60", "nothing is written before it is applied")

    def review_and_apply(self):
        press(wait_for(lambda: named(self.frame, Atspi.Role.PUSH_BUTTON, "Review…"), "the button to review"))
        dialog = wait_for(lambda: next((child for child in children(self.application)
                                        if child.get_name() != self.frame.get_name()), None), "the review")
        table = wait_for(lambda: search(dialog, lambda item: item.get_role() == Atspi.Role.TREE), "the list in the review")
        wait_for(lambda: table.get_n_rows() == 1, "the edit in the list")
        press(wait_for(lambda: search(dialog, lambda item: item.get_role() == Atspi.Role.PUSH_BUTTON
                                      and item.get_name().startswith("Apply")), "the button to apply"))
        wait_for(lambda: self.run_tool("get", WIDTH) == "77", "the edit in the file")
        wait_for(lambda: self.cell(0, 2).get_name() == "77", "the new value in the table")

    def follow_another_process(self):
        """The row says who changed it, and an event says that there is something new."""
        heard = []
        listener = Atspi.EventListener.new(lambda event: heard.append(event.type))
        for kind in ("object:property-change:accessible-name", "object:text-changed", "object:model-changed",
                     "object:children-changed", "object:visible-data-changed"):
            listener.register(kind)
        self.run_tool("set", WIDTH, "88")
        wait_for(lambda: self.cell(0, 2).get_name() == "88", "the value of another process")
        self.expect("changed" in self.cell(0, 0).get_name(), "a word for what has just changed in the name of the row")
        wait_for(lambda: heard, "an event about the change")
        wait_for(lambda: named(self.frame, Atspi.Role.CHECK_BOX, "Live 1"), "the count of live changes")

    def take_the_keyboard(self):
        """There is no window manager that would give it."""
        windows = wait_for(lambda: subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "Settings"],
                                                  capture_output=True, text=True, check=False).stdout.split(), "the window")
        subprocess.run(["xdotool", "windowfocus", "--sync", windows[0]], check=True)


def inside(window, tool):
    reader = Reader(window, tool)
    reader.run_tool("set", WIDTH, "60")
    reader.run_tool("set", "Menu.Theme.Dark", "violet")
    try:
        reader.start()
        reader.filter_modified()
        reader.edit_by_keys()
        reader.review_and_apply()
        reader.follow_another_process()
    finally:
        if reader.process:
            reader.process.kill()


def main():
    window, tool, folder = sys.argv[1], sys.argv[2], Path(sys.argv[3])
    if os.environ.get(INSIDE):
        try:
            inside(window, tool)
        except Failure as failure:
            print(failure)
            return 1
        return 0
    if Atspi is None or LAUNCHER is None or any(shutil.which(name) is None for name in ("Xvfb", "dbus-run-session", "xdotool")):
        print("there is no display, bus or accessibility bus to be had")
        return SKIPPED
    return run_inside(folder)


def run_inside(folder):
    """This program again, with a display and buses."""
    shutil.rmtree(folder, ignore_errors=True)
    for name in ("config", "state", "site", "home", "run"):
        (folder / name).mkdir(parents=True, mode=0o700)
    reading, writing = os.pipe()
    display = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x900x24", "-nolisten", "tcp", "-noreset"],
                               pass_fds=(writing,), stderr=subprocess.DEVNULL)
    os.close(writing)
    number = os.read(reading, 16).decode().strip()
    environment = {**os.environ, "DISPLAY": f":{number}", "HOME": str(folder / "home"), "LC_ALL": "C.UTF-8",
                   "XDG_CONFIG_HOME": str(folder / "config"), "XDG_STATE_HOME": str(folder / "state"),
                   "XDG_CONFIG_DIRS": str(folder / "site"), "XDG_RUNTIME_DIR": str(folder / "run"), INSIDE: "1",
                   "QT_QPA_PLATFORM": "xcb", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "NO_AT_BRIDGE": "0"}
    for name in ("DBUS_SESSION_BUS_ADDRESS", "AT_SPI_BUS_ADDRESS", "WAYLAND_DISPLAY"):
        environment.pop(name, None)
    try:
        return subprocess.run(["dbus-run-session", "--", "sh", "-c", '"$0" --launch-immediately & exec "$@"', LAUNCHER,
                               sys.executable, *sys.argv], env=environment, check=False).returncode
    finally:
        display.terminate()
        display.wait()


sys.exit(main())
