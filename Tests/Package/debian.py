# SPDX-License-Identifier: MIT
"""The Debian packages hold what Debian expects, install, work and go again.

    python3 debian.py STEP SOURCE BUILD FOLDER

FOLDER is of the tests' own: the step `make` makes the packages there, and the other steps examine them.
Skipped (exit code 77) where a tool of Debian is not installed.
"""

import os
import shutil
import subprocess
import sys
from pathlib import Path

SKIPPED = 77
PATH = f"{os.environ['PATH']}:/usr/sbin:/sbin"  # where dpkg looks for programs, also as a user
# Each package with what its dependencies have to name.
PACKAGES = {
    "libqrvsettings7": ("libc6",),
    "libqrvhistory7": ("libqrvsettings7 (= 7", "libsqlite3-0"),  # left out where SQLite is not installed
    "libqrvsettings-dev": ("libqrvsettings7 (= 7",),
    "qrvsettings": ("libqrvsettings7 (= 7", "libqrvhistory7 (= 7"),
    "qrvsettings-window": ("libqrvsettings7 (= 7", "libqt6widgets6"),  # left out where there is no Qt 6
    "qrvsettings-doc": (),
    "python3-qrvsettings": ("python3", "libqrvsettings7 (>= 7"),
}
COMPLETIONS = ("bash-completion/completions/qrvsettings", "zsh/vendor-completions/_qrvsettings",
               "fish/vendor_completions.d/qrvsettings.fish")


class Failure(Exception):
    pass


def run(*command):
    words = [str(word) for word in command]
    result = subprocess.run(words, capture_output=True, text=True, check=False)
    if result.returncode != 0:
        raise Failure(f"{' '.join(words)}: status {result.returncode}\n{result.stdout}{result.stderr}")
    return result.stdout


class Steps:
    needs = {"make": "dpkg-shlibdeps", "contents": "dpkg-architecture", "install": "dpkg", "lintian": "lintian"}

    def __init__(self, source, build, folder):
        self.source, self.build, self.folder = source, build, folder
        self.made = {path.name.split("_")[0]: path for path in folder.glob("*.deb")}
        if not (build / "qrvhistory.pc").exists():
            PACKAGES.pop("libqrvhistory7")
            PACKAGES["qrvsettings"] = PACKAGES["libqrvsettings-dev"]
        if not (build / "Tools/qrvsettings-window").is_dir():
            PACKAGES.pop("qrvsettings-window")

    def make(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        run("cpack", "-G", "DEB", "--config", self.build / "CPackConfig.cmake", "-B", self.folder)
        self.made = {path.name.split("_")[0]: path for path in self.folder.glob("*.deb")}
        if set(self.made) != set(PACKAGES):
            raise Failure(f"packages made: {sorted(self.made)}")

    def field(self, package, name):
        return run("dpkg-deb", "-f", self.made[package], name).strip()

    def files(self, package):
        """The paths in a package, other than folders."""
        lines = run("dpkg-deb", "-c", self.made[package]).splitlines()
        return {line.split()[5].removeprefix(".") for line in lines if not line.startswith("d")}

    def expect_files(self, package, *paths):
        missing = {str(path) for path in paths} - self.files(package)
        if missing:
            raise Failure(f"{package} does not have {sorted(missing)}, but {sorted(self.files(package))}")

    def contents(self):
        for package, needed in PACKAGES.items():
            documents = f"/usr/share/doc/{package}"
            self.expect_files(package, f"{documents}/copyright", f"{documents}/changelog.Debian.gz")
            depends = self.field(package, "Depends")
            if any(name not in depends for name in needed):
                raise Failure(f"{package} depends on {depends}, not on {needed}")
        libraries = Path("/usr/lib", run("dpkg-architecture", "-qDEB_HOST_MULTIARCH").strip())
        self.expect_files("libqrvsettings7", libraries / "libQRVSettings.so.7")
        self.expect_files("libqrvsettings-dev", libraries / "libQRVSettings.so", libraries / "libQRVSettings.a",
                          libraries / "pkgconfig/qrvsettings.pc", libraries / "cmake/QRVSettings/QRVSettingsConfig.cmake",
                          "/usr/include/qrvsettings/QRVSettings/QRVSettings.h")
        if "libqrvhistory7" in PACKAGES:
            self.expect_files("libqrvhistory7", libraries / "libQRVHistory.so.7")
            self.expect_files("libqrvsettings-dev", libraries / "libQRVHistory.so", libraries / "pkgconfig/qrvhistory.pc",
                              libraries / "cmake/QRVSettings/QRVHistoryTargets.cmake",
                              "/usr/include/qrvsettings/QRVHistory/QRVHistory.h")
        self.expect_files("qrvsettings", "/usr/bin/qrvsettings", *(f"/usr/share/{path}" for path in COMPLETIONS))
        if "qrvsettings-window" in PACKAGES:
            self.expect_files("qrvsettings-window", "/usr/bin/qrvsettings-window",
                              "/usr/share/applications/qrvsettings-window.desktop",
                              "/usr/share/icons/hicolor/scalable/apps/qrvsettings-window.svg")
        self.expect_files("qrvsettings-doc", "/usr/share/doc/qrvsettings-doc/Documentation/Tour.md",
                          "/usr/share/doc/qrvsettings-doc/examples/first-setting/main.cpp")
        self.expect_files("python3-qrvsettings", "/usr/lib/python3/dist-packages/qrvsettings/__init__.py",
                          "/usr/lib/python3/dist-packages/qrvsettings/py.typed")
        self.expect_pages()
        self.expect_library()

    def expect_pages(self):
        pages = {page.name for page in (self.source / "Documentation/man").glob("*.[1-9]")}
        for page in pages:
            package = self.package_of_page(page)
            if package not in PACKAGES:
                continue
            self.expect_files(package, f"/usr/share/man/man{page[-1]}/{page}.gz")
        if not pages:
            raise Failure("there are no manual pages")
        self.expect_files("libqrvsettings-dev", "/usr/share/man/man3/qrv_settings_object.3.gz")

    @staticmethod
    def package_of_page(page):
        if page.startswith("qrvsettings-window"):
            return "qrvsettings-window"
        return "libqrvsettings-dev" if page.endswith(".3") else "qrvsettings"

    def expect_library(self):
        """What makes the linker of programs, and packages that use the library, know it."""
        library = self.made["libqrvsettings7"]
        if run("dpkg-deb", "-I", library, "shlibs").split()[:4] != ["libQRVSettings", "7", "libqrvsettings7", "(>="]:
            raise Failure("no other package would find out that it needs libqrvsettings7")
        if "activate-noawait ldconfig" not in run("dpkg-deb", "-I", library, "triggers"):
            raise Failure("the library would not be in the cache of the dynamic linker")
        recommends, depends = self.field("libqrvsettings7", "Recommends"), self.field("libqrvsettings7", "Depends")
        if "libicu" in depends or not recommends.startswith("libicu"):
            raise Failure(f"libqrvsettings7 recommends {recommends} and depends on {depends}")

    def install(self):
        """In a root where nothing else is installed, so that dependencies are not looked for."""
        root = self.folder / "root"
        shutil.rmtree(root, ignore_errors=True)
        for name in ("info", "updates", "triggers"):
            (root / "var/lib/dpkg" / name).mkdir(parents=True)
        (root / "var/lib/dpkg/status").touch()
        dpkg = ("env", f"PATH={self.programs()}:{PATH}", "dpkg", f"--root={root}", "--force-not-root", "--force-depends",
                "--force-script-chrootless")
        run(*dpkg, "--install", *self.made.values())
        tool = run(root / "usr/bin/qrvsettings", "--version")
        if not tool.startswith("qrvsettings 7"):
            raise Failure(f"the packaged tool says that it is {tool}")
        self.use_python(root)
        run(*dpkg, "--purge", *self.made)
        left = list((root / "usr").rglob("*"))
        if left:
            raise Failure(f"left after the removal: {left}")

    def programs(self):
        """A folder with an ldconfig that leaves the cache of this machine alone."""
        folder = self.folder / "programs"
        folder.mkdir(exist_ok=True)
        (folder / "ldconfig").write_text("#!/bin/sh\n")
        (folder / "ldconfig").chmod(0o755)
        return folder

    def use_python(self, root):
        libraries = next(root.rglob("libQRVSettings.so.7")).parent
        program = "import qrvsettings; print(qrvsettings.open().get('CPU.Menubar.Mode.HistoryGraph.Width'))"
        width = run("env", f"PYTHONPATH={root}/usr/lib/python3/dist-packages", f"LD_LIBRARY_PATH={libraries}",
                    f"XDG_CONFIG_HOME={self.folder}/config", f"XDG_CONFIG_DIRS={self.folder}/site",
                    "python3", "-B", "-c", program)
        if width != "40\n":
            raise Failure(f"the packaged Python reads {width}")

    def lintian(self):
        run("lintian", "--fail-on", "error", "--tag-display-limit", "0", *self.made.values())


def main():
    step, *folders = sys.argv[1:]
    if shutil.which(Steps.needs[step], path=PATH) is None:
        print(f"{Steps.needs[step]} is not installed")
        return SKIPPED
    try:
        getattr(Steps(*(Path(folder) for folder in folders)), step)()
    except Failure as failure:
        print(failure)
        return 1
    return 0


sys.exit(main())
