"""The types that the package publishes match its code."""
import ast
import subprocess
import sys

import pytest

import vistatrim
from conftest import SOURCES
from vistatrim import _options, archive

PACKAGE = SOURCES / "python" / "vistatrim"

USES = '''
from typing import Dict, List, Optional
import numpy as np
import vistatrim
from vistatrim import archive

photo = vistatrim.Photo("a.jpg", background=(1, 2, 3))
crops: List[vistatrim.Crop] = photo.suggest(aspect=["4:5", (1, 1), 1.5], top=3,
                                            keep=[(10, 20, 300, 200)], weights={"coverage": 1})
overlap: Optional[float] = crops[0].expected_overlap
maps = photo.maps()["EdgeMap"].mean()
pixels = photo.crop(crops[0], size=(1080, 1350))[0, 0, 0]
summary: archive.Summary = archive.suggest(["a/"], output="out", aspect="1:1")
'''
MISUSES = ['vistatrim.suggest("a.jpg", tpo=3)', 'vistatrim.suggest("a.jpg", top="3")',
           'vistatrim.Photo("a.jpg").suggest(explain=1.5)', 'crops[0].x = 5',
           'photo.crop("box")', 'photo.save(crops[0])']


def mypy(*arguments):
    pytest.importorskip("mypy")
    return subprocess.run([sys.executable, "-m", "mypy", "--config-file",
                           str(SOURCES / "pyproject.toml"), *map(str, arguments)],
                          cwd=SOURCES, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False)


def test_mypy_strict_finds_nothing_in_package_and_stubs(tmp_path):
    """And nothing in a program that uses them right, but every mistake in one that does not."""
    uses, misuses = tmp_path / "uses.py", tmp_path / "misuses.py"
    uses.write_text(USES)
    misuses.write_text(USES + "\n".join(MISUSES) + "\n")
    done = mypy("--cache-dir", tmp_path / "cache", PACKAGE, uses)
    assert done.returncode == 0, done.stdout
    done = mypy("--cache-dir", tmp_path / "cache", misuses)
    first = USES.count("\n") + 1
    wrong = {int(line.split(":")[1]) for line in done.stdout.splitlines() if ": error:" in line}
    assert wrong == set(range(first, first + len(MISUSES))), done.stdout


def options_of(function):
    return [argument.arg for argument in function.args.kwonlyargs if argument.arg != "background"]


def test_stubs_have_every_option_of_the_table():
    tree = ast.parse((PACKAGE / "__init__.pyi").read_text())
    [photo] = [node for node in tree.body
               if isinstance(node, ast.ClassDef) and node.name == "Photo"]
    functions = [node for node in (*tree.body, *photo.body)
                 if isinstance(node, ast.FunctionDef) and node.name == "suggest"]
    assert len(functions) == 2
    for function in functions:
        assert options_of(function) == list(_options.NAMES)


def members_of(stub):
    """(class or None, name) of every function that a stub declares."""
    for node in ast.parse((PACKAGE / stub).read_text()).body:
        if isinstance(node, ast.FunctionDef):
            yield None, node.name
        if isinstance(node, ast.ClassDef):
            yield None, node.name
            yield from ((node.name, member.name) for member in node.body
                        if isinstance(member, ast.FunctionDef))


@pytest.mark.parametrize("stub, module", [("__init__.pyi", vistatrim),
                                          ("_vistatrim.pyi", vistatrim._vistatrim)])
def test_stubs_name_what_exists(stub, module):
    members = list(members_of(stub))
    assert len(members) > 10
    for owner, name in members:
        target = module if owner is None else getattr(module, owner)
        # Fields of a dataclass without a default are not attributes of the class.
        assert hasattr(target, name) or name in target.__dataclass_fields__, name


def test_everything_public_is_documented():
    for module in (vistatrim, archive):
        assert module.__doc__
        for name in module.__all__:
            member = getattr(module, name)
            if not isinstance(member, str):
                assert member.__doc__, name
    for name in ("suggest", "maps", "crop", "save", "encode", "preview", "size"):
        assert getattr(vistatrim.Photo, name).__doc__, name
