"""Installs the built tree into a scratch folder and uses it from outside, once through CMake's
find_package and once through pkg-config."""

import argparse
import concurrent.futures
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


# What the best-known toolkit for desktop programs defines before anybody else's headers.
KEYWORDS = """
#define slots
#define signals public
#define emit
#define foreach(variable, container) for (variable : container)
#define forever for (;;)
"""


def expect_headers_compile(arguments, prefix):
    """Each installed header compiles as the only one, after those definitions, and all together."""
    headers = sorted(prefix.rglob("*.h"))
    if len(headers) < 50:
        sys.exit(f"only {len(headers)} headers are installed")
    flags = run(arguments.pkg_config, "--cflags", "fmt", "icu-uc").split()

    def compile_these(included):
        source = KEYWORDS + "".join(f'#include "{header}"\n' for header in included)
        return subprocess.run([arguments.compiler, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra",
                               "-Werror", *flags, f"-I{prefix / 'include'}", "-x", "c++", "-"],
                              input=source, capture_output=True, text=True)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        together = pool.submit(compile_these, headers)
        for header, outcome in zip(headers, pool.map(lambda one: compile_these([one]), headers)):
            if outcome.returncode != 0:
                sys.exit(f"{header} does not compile alone:\n{outcome.stderr}")
        if together.result().returncode != 0:
            sys.exit(f"the headers do not compile together:\n{together.result().stderr}")


def expect_private_headers_stay(prefix):
    for name in ("HXArchiveWalk.h", "KeyedArchiveRecords.h", "TIFFCodec.h", "TokenScanner.h"):
        if list(prefix.rglob(name)):
            sys.exit(f"{name} is private and was installed")


def expect_program_is_told_of(prefix):
    """The system's manual has the program's pages, and the shells know how to complete it."""
    for name in ("man/man1/tarnkit.1.gz", "man/man1/tarnkit-run.1.gz",
                 "bash-completion/completions/tarnkit", "zsh/site-functions/_tarnkit",
                 "fish/vendor_completions.d/tarnkit.fish"):
        if not (prefix / "share" / name).is_file():
            sys.exit(f"share/{name} is not installed")


def configure(arguments, prefix, scratch, project, *options):
    run(arguments.cmake, "-S", project, "-B", scratch, "-G", arguments.generator,
        f"-DCMAKE_PREFIX_PATH={prefix}", f"-DCMAKE_CXX_COMPILER={arguments.compiler}",
        f"-DCMAKE_CXX_FLAGS={arguments.flags}", "-DCMAKE_BUILD_TYPE=Debug", *options)
    run(arguments.cmake, "--build", scratch)


def through_cmake(arguments, prefix, scratch, project=HERE):
    configure(arguments, prefix, scratch, project)
    expect_runs(scratch / "model")
    expect_runs(scratch / "math")
    expect_no_images(scratch / "math")
    expect_prints("editor: ok\n", scratch / "editor", scratch / "plugin.so")
    expect_prints("refused: it has a copy of the library of its own: a plug-in is linked against "
                  "nothing\n", scratch / "closed_editor", scratch / "copying_plugin.so")
    # The engine alone, where there are no image libraries to be found.
    alone = scratch.with_name("math-alone")
    configure(arguments, prefix, alone, project, "-DCOMPONENTS=math",
              *(f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in ("PNG", "TIFF", "JPEG")))
    expect_runs(alone / "math")


def through_pkg_config(arguments, prefix, scratch, project=HERE):
    scratch.mkdir()
    found = [path.parent for path in prefix.rglob("tarnkit.pc")]
    environment = {**os.environ, "PKG_CONFIG_PATH": os.pathsep.join(map(str, found))}
    for name, package in (("model", "tarnkit"), ("math", "tarnkit-math")):
        flags = run(arguments.pkg_config, "--cflags", "--libs", package, env=environment).split()
        run(arguments.compiler, "-std=c++20", *arguments.flags.split(), project / f"{name}.cpp", "-o",
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
        expect_private_headers_stay(prefix)
        expect_program_is_told_of(prefix)
        if not arguments.flags:
            expect_headers_compile(arguments, prefix)
        through_cmake(arguments, prefix, folder / "cmake")
        through_pkg_config(arguments, prefix, folder / "pkg-config")


if __name__ == "__main__":
    main()
