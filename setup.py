"""Builds the wheel: CMake builds the extension, setuptools packs it with the package.

    pip wheel . --no-build-isolation --no-deps

VISTATRIM_CMAKE_BUILD names a build directory to use, such as build/release, instead of one of the
wheel's own.
"""
import os
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = Path(__file__).resolve().parent
PACKAGES = ["vistatrim", "vistatrim.archive"]


def version():
    """The version from version.h, which defines it for everything else."""
    for line in (ROOT / "include/vistaTrim/version.h").read_text().splitlines():
        if line.startswith("#define VISTATRIM_VERSION_STRING"):
            return line.split('"')[1]
    raise RuntimeError("include/vistaTrim/version.h holds no version")


class CMakeBuild(build_ext):
    def build_extension(self, ext):
        given = os.environ.get("VISTATRIM_CMAKE_BUILD")
        build = (ROOT / given) if given else (ROOT / self.build_temp / "cmake")
        if not given:
            subprocess.run(
                ["cmake", "-S", ROOT, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                 "-DVISTATRIM_BUILD_PYTHON=ON", f"-DPython_EXECUTABLE={sys.executable}",
                 *(f"-DVISTATRIM_BUILD_{part}=OFF"
                   for part in ("TESTS", "BENCHMARKS", "TOOLS"))], check=True)
        subprocess.run(["cmake", "--build", build, "--target", "vistaTrimPython"], check=True)
        [built] = (build / "python" / "vistatrim").glob("_vistatrim.*.so")
        target = Path(self.get_ext_fullpath(ext.name))
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(built, target)


setup(
    name="vistatrim",
    version=version(),
    description="Good crops of photographs",
    license="Apache-2.0",
    python_requires=">=3.9",
    install_requires=["numpy"],
    extras_require={"archive": ["distributed", "fsspec"], "plot": ["matplotlib"]},
    package_dir={"": "python"},
    packages=PACKAGES,
    package_data={"vistatrim": ["py.typed", "*.pyi"]},
    ext_modules=[Extension("vistatrim._vistatrim", [])],
    cmdclass={"build_ext": CMakeBuild},
    zip_safe=False,
)
