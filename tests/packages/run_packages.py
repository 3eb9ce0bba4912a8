"""Unpacks the Debian packages and looks at what is in them: what libtarnkit.so shows is held against
the installed headers and against the list beside this file, which TARNKIT_REGENERATE=1 writes anew,
the host passes those tests that depend on how it was linked, the Python module its own.
run_installed.py installs them."""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
TREE = HERE.parents[1]
NAMES = HERE / "shown-names.txt"
sys.path.insert(0, str(HERE.parent / "consumer"))

from run_consumer import run  # noqa: E402

# Tests of the host that depend on how it was linked: plug-ins find the library's symbols in it.
PROCESS_TESTS = ("test_plugins.py", "test_files.py", "test_text.py", "test_math.py")


def expect_sound(packages):
    """The distribution's checker has no error."""
    told = subprocess.run(["lintian", "--allow-root", "--fail-on", "error", *packages],
                          stdout=subprocess.PIPE, text=True, check=False)
    if told.returncode != 0:
        sys.exit(f"lintian finds errors:\n{told.stdout}")


def unpacked(packages, root):
    for package in packages:
        run("dpkg-deb", "--extract", package, root)
    for path in root.rglob("*"):
        if path.is_file() and not path.is_symlink() and str(TREE).encode() in path.read_bytes():
            sys.exit(f"/{path.relative_to(root)} has a path of the build in it")
    return root / "usr"


INLINE = " (inline)"


def names_shown(library):
    """The classes and functions whose symbols the library shows, and of which it shows no more than
    inline functions: whether those are there is the compiler's choice."""
    kinds = {}
    for line in run("nm", "-D", "--defined-only", "-C", library).splitlines():
        _, kind, symbol = line.split(" ", 2)
        symbol = re.sub(r"\(.*", "", symbol)
        found = re.search(r"\btarnkit::((?:detail::)?\w+)", symbol)
        if not found:
            sys.exit(f"{library.name} shows {symbol}, which is none of the library's own")
        kinds.setdefault(found.group(1), set()).add(kind)
    return set(kinds), {name for name, of in kinds.items() if of == {"W"}}


def expect_names(library):
    shown, inline = names_shown(library)
    if os.environ.get("TARNKIT_REGENERATE"):
        NAMES.write_text("".join(f"{name}{INLINE if name in inline else ''}\n"
                                 for name in sorted(shown)), encoding="utf-8")
    lines = NAMES.read_text(encoding="utf-8").splitlines()
    more = sorted(shown - {line.removesuffix(INLINE) for line in lines})
    less = sorted({line for line in lines if not line.endswith(INLINE)} - shown)
    if more or less:
        sys.exit(f"{library.name} shows {more} too many and does not show {less}; is "
                 f"cmake/libtarnkit.map right, or {NAMES.name} out of date?")


def expect_headers_find_all(arguments, prefix, library, scratch):
    """Whatever an inline function of a public header calls is in the library."""
    source = scratch / "headers.cpp"
    include = prefix / "include"
    source.write_text("".join(f'#include "{header.relative_to(include)}"\n'
                              for header in sorted(include.rglob("*.h"))), encoding="utf-8")
    compiled = scratch / "headers.o"
    run(arguments.compiler, "-std=c++20", "-fkeep-inline-functions", f"-I{include}", "-c", source,
        "-o", compiled)

    def names(*command):
        return {line.split()[-1] for line in run("nm", *command).splitlines() if "7tarnkit" in line}
    missing = names("-u", compiled) - names("-D", "--defined-only", library)
    if missing:
        sys.exit(f"headers call what {library.name} does not show: {sorted(missing)}")


def unpacked_environment(arguments, prefix, library, scratch):
    """Where the tests find what was unpacked, and plug-ins that are built against it."""
    manual = prefix / "share/doc/libtarnkit-doc"
    plugins = {"TARNKIT_PLUGIN": sorted((manual / "examples/plugin").glob("*.cpp")),
               "TARNKIT_HOSTILE_PLUGIN": [TREE / "tests/plugins/HostileNode.cpp"],
               "TARNKIT_FAULTY_PLUGIN": [TREE / "tests/plugins/FaultyNodes.cpp"]}
    environment = {"HOME": str(scratch), "LANG": "C.UTF-8", "LD_LIBRARY_PATH": str(library.parent),
                   "PATH": os.pathsep.join([str(prefix / "bin"), "/usr/bin", "/bin"]),
                   "PYTHONPATH": str(prefix / "lib/python3/dist-packages"),
                   "TARNKIT": str(prefix / "bin/tarnkit"), "TARNKIT_SOURCE_DIR": str(TREE)}
    for name, sources in plugins.items():
        environment[name] = str(scratch / f"{name.lower()}.so")
        run(arguments.compiler, "-std=c++20", "-O1", "-shared", "-fPIC", f"-I{prefix / 'include'}",
            f"-I{manual}", *sources, "-o", environment[name])
    return environment


def expect_programs_work(environment, scratch):
    printed = run("tarnkit", "eval", "6*7", env=environment, cwd=scratch)
    if printed != "42\n":
        sys.exit(f"tarnkit eval '6*7' printed {printed!r}")
    for test in PROCESS_TESTS:
        run(sys.executable, "-B", TREE / "tests/process" / test, env=environment, cwd=TREE)
    run("/usr/bin/python3", "-B", "-m", "pytest", "-q", "-p", "no:cacheprovider",
        TREE / "bindings/python/tests", f"--ignore={TREE / 'bindings/python/tests/test_typing.py'}",
        env=environment, cwd=scratch)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--compiler", default="c++")
    arguments = parser.parse_args()
    packages = sorted((arguments.build / "debs").resolve().glob("*.deb"))
    if len(packages) != 5:
        sys.exit(f"there are {len(packages)} packages instead of five")
    expect_sound(packages)
    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)
        prefix = unpacked(packages, folder / "root")
        library = next(prefix.rglob("libtarnkit.so.*.*.*"))
        expect_names(library)
        expect_headers_find_all(arguments, prefix, library, folder)
        environment = unpacked_environment(arguments, prefix, library, folder)
        expect_programs_work(environment, folder)
    print(f"{len(packages)} packages, unpacked: ok")


if __name__ == "__main__":
    main()
