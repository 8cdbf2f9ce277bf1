"""The command line: python3 -m vistatrim.archive PHOTO... --output DIR"""
from __future__ import annotations

import argparse
import os
import sys
from contextlib import ExitStack
from typing import Any, Dict, Iterator, List, Optional, Sequence

from .. import _options, _vistatrim
from ._cluster import connected
from ._manifest import ArchiveError
from ._progress import Printer
from . import suggest


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="python3 -m vistatrim.archive",
        description="Writes the best crops of many photographs as files of JSON lines. Run it "
                    "again to complete an unfinished output.")
    parser.add_argument("photographs", nargs="*", metavar="PHOTO",
                        help="a photograph, a folder, a URL that fsspec reads (a folder there ends "
                             "in a slash), or - for a list on standard input")
    parser.add_argument("--output", "-o", required=True, metavar="DIR", help="folder or URL")
    parser.add_argument("--recursive", "-r", action="store_true",
                        help="include subfolders")
    parser.add_argument("--files-from", action="append", default=[], metavar="FILE",
                        help="a list of photographs, one name per line; - is standard input")
    parser.add_argument("--null", "-0", action="store_true",
                        help="names in lists end in a null byte, not in a line feed")
    parser.add_argument("--background", default="white", metavar="COLOUR",
                        help="#rrggbb, #rgb or a name: the colour behind transparent areas (white)")
    running = parser.add_argument_group("running")
    running.add_argument("--scheduler", metavar="ADDRESS",
                         help="such as tcp://10.0.0.1:8786; without it, a local cluster")
    running.add_argument("--timeout", type=float, default=10.0, metavar="SECONDS",
                         help="how long to wait for the scheduler (10)")
    running.add_argument("--jobs", "-j", type=int, metavar="N",
                         help="processes of the local cluster (one per processor)")
    running.add_argument("--memory-limit", default="auto", metavar="SIZE",
                         help="memory per process of the local cluster, such as 2GB (its share)")
    running.add_argument("--partition-size", type=int, metavar="N",
                         help="photographs per partition (up to 500)")
    running.add_argument("--tries", type=int, default=2, metavar="N",
                         help="tries of a photograph whose worker dies or runs out of memory (2)")
    running.add_argument("--quiet", "-q", action="store_true", help="no progress")
    parser.add_argument("--version", "-V", action="version",
                        version=f"vistatrim {_vistatrim.VERSION}")
    request = parser.add_argument_group("the request, as for vistatrim suggest")
    for option in _options.OPTIONS:
        names = [option.flag, option.short] if option.short else [option.flag]
        if not option.form:
            request.add_argument(*names, action="store_true", default=None, help=option.help)
        else:
            request.add_argument(*names, metavar=option.form, help=option.help,
                                 action="append" if option.repeats else "store")
    return parser


def _given_options(arguments: argparse.Namespace) -> Dict[str, Any]:
    """The values of the given options. Raises a ValueError that names the option."""
    given: Dict[str, Any] = {}
    for option in _options.OPTIONS:
        texts = getattr(arguments, option.name)
        if texts is None:
            continue
        if not option.form:
            given[option.name] = texts
            continue
        values: List[Any] = []
        for text in texts if option.repeats else [texts]:
            try:
                values.append(option.from_text(text))
            except ValueError:
                raise ValueError(f"{option.flag}: '{text}' is not {option.form}") from None
        if not option.repeats:
            given[option.name] = values[0]
        elif isinstance(values[0], list):
            given[option.name] = [item for value in values for item in value]
        else:
            given[option.name] = values
    return given


def _listed(name: str, null: bool) -> List[str]:
    """The names in a list, which may begin with a byte-order mark and have CRLF line ends."""
    if name == "-":
        content = sys.stdin.buffer.read()
    else:
        with open(name, "rb") as file:
            content = file.read()
    entries = content[3:] if content.startswith(b"\xef\xbb\xbf") else content
    names = entries.split(b"\0") if null else [line[:-1] if line.endswith(b"\r") else line
                                               for line in entries.split(b"\n")]
    found = [os.fsdecode(entry) for entry in names if entry]
    if not found:
        raise ValueError(f"{name}: the list names no photograph")
    return found


def _names(photographs: Sequence[str], lists: Sequence[str], null: bool) -> Iterator[str]:
    for name in photographs:
        if name != "-":
            yield name
        else:
            yield from _listed(name, null)
    for name in lists:
        yield from _listed(name, null)


def main(argv: Optional[Sequence[str]] = None) -> int:
    parser = _parser()
    arguments = parser.parse_args(argv)
    if not arguments.photographs and not arguments.files_from:
        parser.error("no photograph was given, and no list of them")
    try:
        given = _given_options(arguments)
        _options.checked(given)
        _options.background_colour(arguments.background)
        for name in ("jobs", "partition_size", "tries"):
            if getattr(arguments, name) is not None:
                _options._integer("--" + name.replace("_", "-"), getattr(arguments, name), 1, 10**6)
    except ValueError as error:
        parser.error(str(error))
    printer = None if arguments.quiet else Printer()
    try:
        with ExitStack() as stack:
            client = None
            if arguments.scheduler is not None:
                client = stack.enter_context(connected(arguments.scheduler, arguments.timeout))
            summary = suggest(
                _names(arguments.photographs, arguments.files_from, arguments.null), output=arguments.output,
                client=client, recursive=arguments.recursive, background=arguments.background,
                partition_size=arguments.partition_size, tries=arguments.tries,
                workers=arguments.jobs, memory_limit=arguments.memory_limit, progress=printer, **given)
    except (ArchiveError, OSError, ValueError) as error:
        _close(printer)
        print(f"vistatrim.archive: {error}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        _close(printer)
        print("vistatrim.archive: interrupted; a new run does the rest", file=sys.stderr)
        return 130
    _close(printer)
    print(summary)
    return 0


def _close(printer: Optional[Printer]) -> None:
    if printer is not None:
        printer.close()


if __name__ == "__main__":
    sys.exit(main())
