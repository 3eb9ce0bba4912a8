"""Installs the built tree into a scratch folder and uses it from outside, once through CMake's
find_package and once through pkg-config."""

import argparse
import os
import pathlib
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent


def run(*command, **options):
    """The output of a command that must succeed; what it printed is shown when it does not."""
    outcome = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, text=True, **options)
    if outcome.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}\nended with {outcome.returncode}:\n{outcome.stdout}")
    return outcome.stdout


def expect_prints(expected, *command):
    printed = run(*command)
    if printed != expected:
        sys.exit(f"{command[0]} printed {printed!r}, not {expected!r}")


def expect_runs(program):
    expect_prints(f"{pathlib.Path(program).name}: ok\n", program)


def expect_no_images(program):
    """The expression engine is usable alone: no image library comes with it."""
    needed = run("ldd", program)
    for library in ("libpng", "libtiff", "libjpeg"):
        if library in needed:
            sys.exit(f"{program} needs {library}:\n{needed}")


def through_cmake(arguments, prefix, scratch):
    run(arguments.cmake, "-S", HERE, "-B", scratch, "-G", arguments.generator,
        f"-DCMAKE_PREFIX_PATH={prefix}", f"-DCMAKE_CXX_COMPILER={arguments.compiler}",
        f"-DCMAKE_CXX_FLAGS={arguments.flags}", "-DCMAKE_BUILD_TYPE=Debug")
    run(arguments.cmake, "--build", scratch)
    expect_runs(scratch / "model")
    expect_runs(scratch / "math")
    expect_no_images(scratch / "math")
    expect_prints("editor: ok\n", scratch / "editor", scratch / "plugin.so")
    expect_prints("refused: it has a copy of the library of its own: a plug-in is linked against "
                  "nothing\n", scratch / "closed_editor", scratch / "copying_plugin.so")


def through_pkg_config(arguments, prefix, scratch):
    scratch.mkdir()
    found = [path.parent for path in prefix.rglob("tarnkit.pc")]
    environment = {**os.environ, "PKG_CONFIG_PATH": os.pathsep.join(map(str, found))}
    for name, package in (("model", "tarnkit"), ("math", "tarnkit-math")):
        flags = run(arguments.pkg_config, "--cflags", "--libs", package, env=environment).split()
        run(arguments.compiler, "-std=c++20", *arguments.flags.split(), HERE / f"{name}.cpp", "-o",
            scratch / name, *flags)
        expect_runs(scratch / name)


def main():
    parser = argparse.ArgumentParser()
    for option in ("--cmake", "--build", "--generator", "--compiler", "--pkg-config"):
        parser.add_argument(option, required=True)
    parser.add_argument("--flags", default="")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)
        run(arguments.cmake, "--install", arguments.build, "--prefix", folder / "installed")
        # Moved, to show that no path of the build is left in the package.
        prefix = (folder / "installed").rename(folder / "moved")
        through_cmake(arguments, prefix, folder / "cmake")
        through_pkg_config(arguments, prefix, folder / "pkg-config")


if __name__ == "__main__":
    main()
