"""The installed package works on its own, in an empty folder: from `cmake --install` and from a
wheel. VISTATRIM_BUILD names the build directory."""
import os
import subprocess
import sys
import zipfile
from pathlib import Path

import pytest

import vistatrim
from conftest import SOURCES

BUILD = os.environ.get("VISTATRIM_BUILD")
pytestmark = pytest.mark.skipif(not BUILD, reason="VISTATRIM_BUILD is not set")

SCRIPT = """
import sys
import vistatrim, vistatrim.archive
assert vistatrim.__file__.startswith(sys.argv[1]), vistatrim.__file__
best = vistatrim.suggest(sys.argv[2], aspect="1:1", top=1)[0]
vistatrim.Photo(sys.argv[2]).save(best, "best.png")
print(best.box)
"""


def run(*arguments, cwd=SOURCES, **environment):
    done = subprocess.run(arguments, cwd=cwd, env={**os.environ, **environment}, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    assert done.returncode == 0, done.stdout
    return done.stdout


def check_script(packages, photo_path, folder):
    """Runs a script that finds the package only in `packages`."""
    folder.mkdir()
    found = run(sys.executable, "-c", SCRIPT, packages, photo_path, cwd=folder,
                PYTHONPATH=str(packages))
    best = vistatrim.suggest(photo_path, aspect="1:1", top=1)[0]
    assert found.strip() == str(best.box)
    assert vistatrim.Photo(folder / "best.png").size == (best.width, best.height)


def files_of(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*")
                  if path.is_file() and "__pycache__" not in path.parts)


def sources_of_the_package():
    folder = SOURCES / "python" / "vistatrim"
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*")
                  if path.suffix in (".py", ".pyi", ".typed"))


def test_cmake_installs_the_whole_package(tmp_path, photo_path):
    run("cmake", "--install", BUILD, "--prefix", tmp_path / "prefix", "--component", "python")
    packages = tmp_path / "prefix" / "lib" / "python3" / "dist-packages"
    installed = files_of(packages / "vistatrim")
    [module] = [name for name in installed if name.endswith(".so")]
    assert [name for name in installed if name != module] == sources_of_the_package()
    check_script(packages, photo_path, tmp_path / "empty")


def test_the_wheel_holds_the_whole_package(tmp_path, photo_path):
    """A wheel of the existing build. Without VISTATRIM_CMAKE_BUILD it would make its own build,
    which takes minutes."""
    run(sys.executable, "-m", "pip", "wheel", ".", "--no-build-isolation", "--no-deps",
        "--no-index", "-w", tmp_path / "wheels", VISTATRIM_CMAKE_BUILD=BUILD)
    [wheel] = (tmp_path / "wheels").iterdir()
    assert wheel.name.startswith(f"vistatrim-{vistatrim.__version__}-cp3")
    packages = tmp_path / "target"
    run(sys.executable, "-m", "pip", "install", "--no-deps", "--no-index", "--target", packages,
        wheel)
    installed = files_of(packages / "vistatrim")
    [module] = [name for name in installed if name.endswith(".so")]
    assert [name for name in installed if name != module] == sources_of_the_package()
    [metadata] = [name for name in zipfile.ZipFile(wheel).namelist() if name.endswith("METADATA")]
    assert b"Name: vistatrim" in zipfile.ZipFile(wheel).read(metadata)
    check_script(packages, photo_path, tmp_path / "empty")


def test_cmake_lists_every_file_of_the_package():
    listed = (SOURCES / "python" / "CMakeLists.txt").read_text()
    for name in sources_of_the_package():
        assert f"    {name}" in listed, name
    assert Path(vistatrim.__file__).parent == Path(BUILD).resolve() / "python" / "vistatrim"
