"""Makes the wheel of one system from modules and a database that are built already.

    python build_wheel.py FOLDER --modules DIR --database DIR

The modules say which system it is for: py3-none-win_amd64, or py3-none-manylinux_X_Y_x86_64, where X.Y is the highest
version of the C library that they import a symbol of. The version is that of the CMake project.
"""
from __future__ import annotations

import argparse
import base64
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import zipfile

import generate

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent
LINUX = ("libqsplatform.so", "libqscontainers.so", "libqshostkit.so")
WINDOWS = ("qscontainers.dll", "qshostkit.dll")
# What every system has that the tag admits.
SYSTEM_LIBRARIES = {"libc.so.6", "libm.so.6", "libpthread.so.0", "libdl.so.2", "ld-linux-x86-64.so.2"}
# Debian's copyright files of what is linked into the modules under licences that ask for them.
LINKED = ("libexpat1-dev", "libeigen3-dev", "nlohmann-json3-dev")


def output_of(*command: str | os.PathLike[str]) -> str:
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def project_version() -> str:
    return re.search(r"project\(qscontainers VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text())[1]


def soname(module: pathlib.Path) -> str:
    """The name by which a Linux module is found, which has the number of its major version."""
    return re.search(r"SONAME\s+(\S+)", output_of("objdump", "-p", module))[1]


def glibc_version(modules: list[pathlib.Path]) -> tuple[int, ...]:
    """The highest version of the C library that they import; fails for a library that a system may not have."""
    versions = set()
    for module in modules:
        headers = output_of("objdump", "-p", module)
        needed = set(re.findall(r"NEEDED\s+(\S+)", headers)) - SYSTEM_LIBRARIES
        if foreign := needed - set(map(soname, modules)):
            raise SystemExit(f"{module.name} needs {', '.join(sorted(foreign))}; build it by the preset wheel")
        if needed and not re.search(r"RUNPATH\s+\$ORIGIN(:|\s)", headers):
            raise SystemExit(f"{module.name} does not find the modules beside it")
        versions.update(re.findall(r"\bGLIBC_(\d+)\.(\d+)", output_of("objdump", "-T", module)))
    return max(tuple(map(int, version)) for version in versions)


def stage(folder: pathlib.Path, modules: list[pathlib.Path], database: pathlib.Path, version: str, tag: str) -> None:
    """Lays out what the wheel holds."""
    package, info = folder / "qscontainers", folder / f"qscontainers-{version}.dist-info"
    shutil.copytree(HERE / "src/qscontainers", package, ignore=shutil.ignore_patterns("__pycache__"))
    generate.main(package)
    (package / "_version.py").write_text(f'version = "{version}"\n')
    (package / "py.typed").touch()
    (package / "native").mkdir()
    for module in modules:
        windows = module.suffix == ".dll"
        copy = package / "native" / (module.name if windows else soname(module))
        shutil.copy(module, copy)
        subprocess.run(["x86_64-w64-mingw32-strip" if windows else "strip", "--strip-unneeded", copy], check=True)
    shutil.copytree(database, package / "database", ignore=shutil.ignore_patterns("*.lock"))
    licences = info / "licenses"
    licences.mkdir(parents=True)
    for name in ("Artistic-2.0.txt", "SOURCES.md"):
        shutil.copy(ROOT / "data" / name, licences)
    for linked in LINKED:
        copyright_file = pathlib.Path("/usr/share/doc", linked, "copyright")
        if copyright_file.exists():
            shutil.copy(copyright_file, licences / f"{linked}.txt")
    (info / "WHEEL").write_text(f"Wheel-Version: 1.0\nGenerator: build_wheel.py\nRoot-Is-Purelib: false\nTag: {tag}\n")
    (info / "METADATA").write_text(
        f"Metadata-Version: 2.1\nName: qscontainers\nVersion: {version}\n"
        "Summary: Data of pure compounds for thermodynamic calculations\nRequires-Python: >=3.9\n"
        "Provides-Extra: dask\nRequires-Dist: distributed; extra == \"dask\"\nRequires-Dist: numpy; extra == \"dask\"\n"
        "Description-Content-Type: text/markdown\n\n" + (ROOT / "docs/python.md").read_text(encoding="utf-8"),
        encoding="utf-8")


def pack(staged: pathlib.Path, wheel: pathlib.Path) -> None:
    """Files in the order of their names and without times: the same files give the same wheel."""
    files = sorted(path for path in staged.rglob("*") if path.is_file())
    record_name = next(staged.glob("*.dist-info")).name + "/RECORD"
    record = []
    with zipfile.ZipFile(wheel, "w", zipfile.ZIP_DEFLATED) as archive:
        for path in files:
            name, data = path.relative_to(staged).as_posix(), path.read_bytes()
            digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
            record.append(f"{name},sha256={digest},{len(data)}")
            entry = zipfile.ZipInfo(name)
            entry.compress_type, entry.external_attr = zipfile.ZIP_DEFLATED, 0o644 << 16
            archive.writestr(entry, data)
        archive.writestr(zipfile.ZipInfo(record_name), "\n".join([*record, f"{record_name},,", ""]))


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path, help="where the wheel goes")
    parser.add_argument("--modules", type=pathlib.Path, required=True, help="folder of the modules")
    parser.add_argument("--database", type=pathlib.Path, required=True, help="folder of the database")
    given = parser.parse_args()
    windows = (given.modules / WINDOWS[0]).exists()
    modules = [given.modules / name for name in (WINDOWS if windows else LINUX)]
    system = "win_amd64" if windows else "manylinux_{}_{}_x86_64".format(*glibc_version(modules))
    version, tag = project_version(), f"py3-none-{system}"
    given.folder.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as folder:
        stage(pathlib.Path(folder), modules, given.database, version, tag)
        wheel = given.folder / f"qscontainers-{version}-{tag}.whl"
        pack(pathlib.Path(folder), wheel)
    print(wheel)


if __name__ == "__main__":
    main()
