# SPDX-License-Identifier: MIT
"""An installed copy serves projects that are built elsewhere, also after it was moved.

    python3 package.py STEP SOURCE BUILD FOLDER

FOLDER is of the tests' own: it is made by the step `install`, and the other steps work in it.
"""

import json
import os
import shutil
import subprocess
import sys
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1] / "Checks"))
import border  # noqa: E402: found there

WANTED = "HistoryGraph = {Width = 60}"


class Failure(Exception):
    pass


def run(*command, environment=None):
    words = [str(word) for word in command]
    result = subprocess.run(words, capture_output=True, text=True, check=False,
                            env={**os.environ, **(environment or {})})
    if result.returncode != 0:
        raise Failure(f"{' '.join(words)}: status {result.returncode}\n{result.stdout}{result.stderr}")
    return result.stdout


class Steps:
    def __init__(self, source, build, folder):
        self.source, self.build, self.folder = source, build, folder
        self.prefix = folder / "moved"

    def install(self):
        """Into one folder, which then gets another name."""
        shutil.rmtree(self.folder, ignore_errors=True)
        run("cmake", "--install", self.build, "--prefix", self.folder / "installed")
        (self.folder / "installed").rename(self.prefix)
        names = {path.name for path in self.prefix.rglob("*")}
        for name in ("libQRVSettings.so.7", "libQRVSettings.a", "QRVSettings.h", "QRVSettingsC.h", "Qt.h", "qrvsettings.pc",
                     "qrvsettings.1.gz", "qrvsettings.5.gz", "qrvsettings.7.gz", "_qrvsettings", "qrvsettings.fish"):
            if name not in names:
                raise Failure(f"not installed: {name}")
        for path in self.prefix.rglob("*"):
            if path.suffix in {".pc", ".cmake", ".h"} and str(self.folder) in path.read_text():
                raise Failure(f"names the folder it was installed to: {path}")

    def tool(self):
        tool = self.prefix / "bin/qrvsettings"
        environment = self.environment("tool")
        run(tool, "set", "A.B", "7", environment=environment)
        if run(tool, "get", "A.B", environment=environment) != "7\n":
            raise Failure("the installed tool does not read what it wrote")

    def find_shared(self):
        self.use_cmake("find-shared", "QRVSettings", f"-DCMAKE_PREFIX_PATH={self.prefix}")

    def find_static(self):
        self.use_cmake("find-static", "QRVSettingsStatic", f"-DCMAKE_PREFIX_PATH={self.prefix}")

    def find_static_from_c(self):
        self.use_cmake("find-static-c", "QRVSettingsStatic", f"-DCMAKE_PREFIX_PATH={self.prefix}",
                       source="main.c")

    def own_names(self):
        """A host may name its functions and classes like the inside of the library that it links."""
        self.use_cmake("own-names", "QRVSettingsStatic", f"-DCMAKE_PREFIX_PATH={self.prefix}",
                       source="own_names.cpp")

    def find_history(self):
        self.use_cmake("find-history", "QRVHistory", f"-DCMAKE_PREFIX_PATH={self.prefix}", source="history.cpp")
        self.use_pkgconfig("pkgconfig-history", package="qrvhistory", source="history.cpp")

    def examples(self):
        build = self.folder / "examples/build"
        run("cmake", "-G", "Ninja", "-S", self.prefix / "share/doc/qrvsettings-doc/examples", "-B", build,
            f"-DCMAKE_PREFIX_PATH={self.prefix}")
        run("cmake", "--build", build, "--target", "first-setting")
        self.expect_output("examples", build / "first-setting", "width: 60")

    def subdirectory(self):
        self.use_cmake("subdirectory", "QRVSettings", f"-DQRV_SOURCE={self.source}")

    def pkgconfig_shared(self):
        self.use_pkgconfig("pkgconfig-shared")

    def pkgconfig_static(self):
        self.use_pkgconfig("pkgconfig-static", "--static")

    def library_folder(self):
        return next(self.prefix.rglob("libQRVSettings.a")).parent

    def environment(self, name):
        home = self.folder / name / "home"
        shutil.rmtree(home, ignore_errors=True)
        home.mkdir(parents=True)
        return {"XDG_CONFIG_HOME": str(home), "XDG_CONFIG_DIRS": str(home / "site"), "HOME": str(home),
                "XDG_STATE_HOME": str(home / "state")}

    def expect_consumer(self, name, program, **more):
        self.expect_output(name, program, WANTED, **more)

    def expect_output(self, name, program, wanted, **more):
        output = run(program, environment={**self.environment(name), **more})
        if wanted not in output:
            raise Failure(f"{program} prints {output}")

    def use_cmake(self, name, library, *arguments, source="main.cpp"):
        build = self.folder / name / "build"
        ccache = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
        run("cmake", "-G", "Ninja", "-S", self.source / "Tests/Package/consumer", "-B", build,
            "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON",
            f"-DQRV_LIBRARY={library}", f"-DQRV_SOURCE_FILE={source}", *ccache, *arguments)
        run("cmake", "--build", build, "--target", "consumer")
        self.expect_consumer(name, build / "consumer")
        commands = json.loads((build / "compile_commands.json").read_text())
        for folder, path in border.include_paths(commands, "CMakeFiles/consumer.dir"):
            self.expect_border(path, folder)

    @staticmethod
    def expect_border(path, folder="."):
        problems = list(border.problems_of(path, folder))
        if problems:
            raise Failure("\n".join(f"the include path {' '.join(path)} {problem}" for problem in problems))

    def use_pkgconfig(self, name, *options, package="qrvsettings", source="main.cpp"):
        path = {"PKG_CONFIG_PATH": str(self.library_folder() / "pkgconfig")}
        flags = run("pkg-config", "--cflags", "--libs", *options, package, environment=path).split()
        self.expect_border(border.include_path(flags))
        if options:  # the linker is to take the archive although the shared library is there too
            flags = ["-l:libQRVSettings.a" if flag == "-lQRVSettings" else flag for flag in flags]
        program = self.folder / name / "consumer"
        program.parent.mkdir(parents=True, exist_ok=True)
        run("g++", "-std=c++20", self.source / "Tests/Package/consumer" / source, "-o", program, *flags)
        self.expect_consumer(name, program, LD_LIBRARY_PATH=str(self.library_folder()))


def main():
    step, *folders = sys.argv[1:]
    try:
        getattr(Steps(*(Path(folder) for folder in folders)), step)()
    except Failure as failure:
        print(failure)
        return 1
    return 0


sys.exit(main())
