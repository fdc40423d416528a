# SPDX-License-Identifier: MIT
"""A host that loads the library at run time and uses only its C interface.

    python3 dynamic_host.py LIBRARY
"""

import ctypes
import os
import subprocess
import sys
import tempfile
import time

KEY_PATH = b"CPU.Menubar.Mode.HistoryGraph.Width"
WRITTEN_BY_THE_OTHER = 77
DEADLINE = 20

Handler = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_void_p)


class Library:
    """Each function raises what it reports as an error."""

    def __init__(self, path):
        self.functions = ctypes.CDLL(path)
        self.functions.qrv_last_error.restype = ctypes.c_char_p
        self.functions.qrv_value_release.restype = None
        self.functions.qrv_value_release.argtypes = [ctypes.c_void_p]

    def __getattr__(self, name):
        function = getattr(self.functions, "qrv_" + name)
        function.restype = ctypes.c_int32

        def call(*arguments):
            if function(*arguments) != 0:
                raise RuntimeError(self.functions.qrv_last_error().decode())

        return call

    def release(self, value):
        self.functions.qrv_value_release(value)

    def integer(self, key_path):
        value, integer = ctypes.c_void_p(), ctypes.c_int64()
        self.settings_object(key_path, ctypes.byref(value))
        self.value_get_integer(value, ctypes.byref(integer))
        self.release(value)
        return integer.value

    def write(self, integer, key_path):
        value = ctypes.c_void_p()
        self.value_create_integer(ctypes.c_int64(integer), ctypes.byref(value))
        self.settings_set_object(value, key_path)
        self.release(value)
        self.store_wait_for_saves()

    def strings(self, array):
        count, text, length = ctypes.c_size_t(), ctypes.c_char_p(), ctypes.c_size_t()
        self.value_get_count(array, ctypes.byref(count))
        for index in range(count.value):
            value = ctypes.c_void_p()
            self.value_get_element(array, ctypes.c_size_t(index), ctypes.byref(value))
            self.value_get_string(value, ctypes.byref(text), ctypes.byref(length))
            yield text.value[:length.value]
            self.release(value)

    def drain_until(self, condition):
        end = time.monotonic() + DEADLINE
        while not condition():
            if time.monotonic() > end:
                sys.exit("nothing came until the deadline")
            has_work, count = ctypes.c_bool(), ctypes.c_size_t()
            self.main_queue_wait(ctypes.c_int64(50_000_000), ctypes.byref(has_work))
            if has_work:
                self.main_queue_drain(ctypes.byref(count))


def host(library, path):
    changed = set()
    handler = Handler(lambda key_paths, _:
                      changed.update(library.strings(ctypes.c_void_p(key_paths))))
    library.store_set_monitor_file_changes(ctypes.c_bool(True))
    library.store_set_on_change(handler, None, None)
    library.store_load_defaults()
    library.store_prepare()

    assert library.integer(KEY_PATH) == 40, "the default"
    library.write(60, KEY_PATH)
    assert library.integer(KEY_PATH) == 60, "what was written"
    try:
        library.settings_set_object(None, KEY_PATH)
        sys.exit("NULL was taken for a value")
    except RuntimeError as error:
        assert "NULL" in str(error), error

    # Another key path: those that this process has just written are left out.
    subprocess.run([sys.executable, __file__, path, "--write"], check=True)
    library.drain_until(lambda: b"UpdateFrequency" in changed)
    assert library.integer(b"UpdateFrequency") == WRITTEN_BY_THE_OTHER, "what the other one wrote"
    print("read, written, refused, and received a change")


def main():
    path = sys.argv[1]
    if "--write" in sys.argv:
        Library(path).write(WRITTEN_BY_THE_OTHER, b"UpdateFrequency")
        return
    with tempfile.TemporaryDirectory() as folder:
        os.environ["XDG_CONFIG_HOME"] = folder
        os.environ["XDG_CONFIG_DIRS"] = folder + "/site"
        host(Library(path), path)


main()
