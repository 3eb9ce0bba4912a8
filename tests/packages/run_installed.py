"""Installs the Debian packages into an empty root, as the distribution's tools make one, and uses
them there: the host, the Python module, and the library from a project of its own. Nothing else of the
tree is in sight.

mmdebstrap makes the root and removes it; in between it calls this script again, with --root."""

import argparse
import os
import pathlib
import platform
import shutil
import subprocess
import sys
import traceback

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "consumer"))

from run_consumer import (expect_no_images, expect_prints, expect_runs, run,  # noqa: E402
                          through_cmake, through_pkg_config)

ENVIRONMENT = {"DEBIAN_FRONTEND": "noninteractive", "HOME": "/root", "LANG": "C.UTF-8",
               "PATH": "/usr/sbin:/usr/bin:/sbin:/bin"}
MANUAL = pathlib.Path("/usr/share/doc/libtarnkit-doc")
MODULE = "python3-tarnkit"
TREE = HERE.parents[1]
WORK = pathlib.Path("/work")

# What the archives of the expression engine stand on, in linking order.
MATH_ALONE = ("-ltarnkit_math", "-ltarnkit_foundation", "-ltarnkit_platform", "-lfmt", "-licui18n",
              "-licuuc", "-lexpat", "-lmd")


def make_root(build):
    """The root has what every system of the distribution has, and no file system of this one."""
    downloads = build.resolve() / "downloads"
    (downloads / "partial").mkdir(parents=True, exist_ok=True)
    archives = "/var/cache/apt/archives"
    outcome = subprocess.run(
        ["mmdebstrap", "--quiet", "--mode=root", "--variant=apt", "--format=null",
         "--skip=chroot/mount,essential/unlink", "--aptopt=Acquire::Languages \"none\"",
         f"--setup-hook=mkdir -p \"$1\"{archives}", f"--setup-hook=sync-in {downloads} {archives}",
         f"--customize-hook={sys.executable} -B {HERE / 'run_installed.py'} --build={build} "
         "--root=\"$1\"",
         f"--customize-hook=sync-out {archives} {downloads}",
         platform.freedesktop_os_release()["VERSION_CODENAME"], "-"],
        stdin=subprocess.DEVNULL, stdout=sys.stderr, check=False)
    if outcome.returncode != 0:
        sys.exit("the packages do not work where they are installed, or no root could be made")


def apt(*arguments):
    run("apt-get", "--yes", "--quiet", "--no-install-recommends", *arguments)


def inside(root, work, *arguments):
    """Does the work in a process that sees the root and nothing above it."""
    child = os.fork()
    if child == 0:
        failed = 1
        try:
            os.chroot(root)
            os.chdir(WORK)
            os.environ.clear()
            os.environ.update(ENVIRONMENT)
            work(*arguments)
            failed = 0
        except SystemExit as end:
            print(end, file=sys.stderr)
        except BaseException:  # whatever it is, this process must not go on as the other
            traceback.print_exc()
        finally:
            os._exit(failed)
    if os.waitpid(child, 0)[1] != 0:
        sys.exit(1)


def use_host():
    for tool in ("c++", "cmake", "python3", "pkg-config"):
        if shutil.which(tool):
            sys.exit(f"the root was to be empty and has {tool}")
    expect_prints("42\n", "tarnkit", "eval", "6*7")
    shutil.copytree(MANUAL / "examples", "examples")
    pathlib.Path("out/photo-viewer").mkdir(parents=True)
    run("tarnkit", "run", "examples/photo-viewer.json")
    document = pathlib.Path("out/photo-viewer/photo-viewer.document")
    run("tarnkit", "save", document, "-o", "again.json")
    expect_prints("", "tarnkit", "diff", document, "again.json")
    run("tarnkit", "images", document, "-o", "pictures")
    if not list(pathlib.Path("pictures").glob("*.png")):
        sys.exit("the images of a document were not written")
    run("tarnkit", "render", document, "-o", "page.html")
    expect_prints("tarnkit\n", "bash", "-c",
                  ". /usr/share/bash-completion/completions/tarnkit && complete -p tarnkit"
                  " | sed 's/.* //'")


def use_module():
    """In an interpreter that looks nowhere but where packages are installed."""
    run("python3", "-I", "try_installed.py", "dist-packages")


def use_module_with_arrays():
    expect_prints("[5.0, 13.0]\n", "python3", "-I", "-c", """
import numpy, tarnkit
x, y = numpy.array([3.0, 5.0]), numpy.array([4.0, 12.0])
print(tarnkit.Expression("sqrt(x**2 + y**2)").evaluate(x=x, y=y).tolist())""")


def use_library():
    """With a compiler and nothing that tells it where things are."""
    for name, libraries in (("model", ["-ltarnkit"]), ("math", MATH_ALONE)):
        run("g++", "-std=c++20", f"consumer/{name}.cpp", "-o", name, *libraries)
        expect_runs(WORK / name)
    expect_no_images(WORK / "math")
    run("g++", "-std=c++20", MANUAL / "examples/readme.cpp", "-o", "readme", "-ltarnkit")
    run(WORK / "readme")
    run("tarnkit", "open", "touch.document")


def use_library_by_name():
    """Through what CMake and pkg-config are told of it."""
    arguments = argparse.Namespace(cmake="cmake", compiler="g++", generator="Unix Makefiles",
                                   pkg_config="pkg-config", flags="")
    through_pkg_config(arguments, pathlib.Path("/usr"), WORK / "by-pkg-config", WORK / "consumer")
    through_cmake(arguments, pathlib.Path("/usr"), WORK / "by-cmake", WORK / "consumer")


def install_and_use(root, packages):
    work = root / WORK.relative_to("/")
    work.mkdir()
    files = {package.name.split("_")[0]: f"./{package.name}" for package in packages}
    for package in packages:
        shutil.copy(package, work)
    development, module = files.pop("libtarnkit-dev"), files.pop(MODULE)
    inside(root, apt, "install", *files.values())
    inside(root, use_host)

    shutil.copy(TREE / "bindings/python/tests/try_installed.py", work)
    inside(root, apt, "install", module)
    inside(root, use_module)
    inside(root, apt, "install", "python3-numpy")
    inside(root, use_module_with_arrays)

    shutil.copytree(HERE.parent / "consumer", work / "consumer")
    inside(root, apt, "install", development, "g++")
    inside(root, use_library)
    inside(root, apt, "install", "cmake", "make", "pkg-config")
    inside(root, use_library_by_name)

    inside(root, apt, "purge", "libtarnkit-dev", MODULE, *files)
    left = list((root / "usr").rglob("*tarnkit*"))
    if left:
        sys.exit(f"the packages leave behind {left}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--root", type=pathlib.Path)
    arguments = parser.parse_args()
    if arguments.root:
        packages = sorted((arguments.build / "debs").resolve().glob("*.deb"))
        install_and_use(arguments.root, packages)
        print(f"{len(packages)} packages, installed: ok")
    elif os.geteuid() == 0:
        make_root(arguments.build)
    else:
        print("installation into an empty root: skipped, since only root may make one")


if __name__ == "__main__":
    main()
