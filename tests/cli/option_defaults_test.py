"""Every option that takes a value has its default in --help, in the manual page and in the guide,
and the three agree. A required option is marked as such in all three. --help lists each option
under the title of its group.

usage: option_defaults_test.py VISTATRIM SOURCE_FOLDER
"""
import os
import re
import sys

from help_options import COMMANDS, options_of

# What --help lists before its titled groups; every other option is in one of those.
UNTITLED = {"--help", "--files-from", "--recursive", "--null", "--from"}
NEEDED = "the other commands need it"
SWITCHES = "Options without a value are off unless given."


def manual_defaults(text):
    """By option, from the paragraphs of the manual page."""
    defaults = {}
    body = text.split(".SH OPTIONS\n")[1].split(".SH EXIT STATUS")[0]
    for paragraph in re.split(r"(?m)^(?:\.TP$|\.SS )", body):
        paragraph = paragraph.replace("\\-", "-")
        found = re.search(r"(?m)^Default: (.*)\.$", paragraph)
        for line in paragraph.split("\n"):
            if line.startswith(".B"):
                for name in re.findall(r"--[a-z-]+", line):
                    if found and name not in defaults:
                        defaults[name] = found.group(1)
            elif line and not line.startswith(".TQ"):
                break  # the names come before the text
    return defaults


def guide_defaults(text):
    rows = text.split("\n## Defaults\n")[1].split("\n## ")[0]
    return dict(re.findall(r"(?m)^\| `(--[a-z-]+)` \| (.*) \|$", rows))


def main():
    program, source = sys.argv[1:]
    with open(os.path.join(source, "cli/vistatrim.1"), encoding="utf-8") as file:
        manual_text = file.read()
    with open(os.path.join(source, "docs/command_line.md"), encoding="utf-8") as file:
        guide_text = file.read()
    manual, guide = manual_defaults(manual_text), guide_defaults(guide_text)
    faults = []
    seen = set()
    for command in COMMANDS:
        for option in options_of(program, command):
            where = command + " " + option.name
            if (option.title == "Options") != (option.name in UNTITLED):
                faults.append(f"{where}: --help lists it under {option.title}")
            if not option.form:
                if option.default is not None:
                    faults.append(where + ": takes no value, but --help has a default")
                continue
            seen.add(option.name)
            for place, defaults in (("vistatrim.1", manual), ("command_line.md", guide)):
                stated = defaults.get(option.name, "").replace("`", "")
                if option.required:
                    agrees = stated.endswith(NEEDED)
                elif option.default is None:
                    faults.append(where + ": --help has no default")
                    continue
                else:
                    agrees = stated in (option.default,
                                        option.default + " for " + command + "; " + NEEDED)
                if not agrees:
                    faults.append(f"{where}: {place} says '{stated}', --help '{option.default}'")
    for place, defaults in (("vistatrim.1", manual), ("command_line.md", guide)):
        faults += [f"{place} has a default of {name}, which takes no value"
                   for name in sorted(set(defaults) - seen)]
    for place, text in (("vistatrim.1", manual_text), ("command_line.md", guide_text)):
        if SWITCHES not in text:
            faults.append(f"{place} lacks: {SWITCHES}")
    assert len(seen) >= 25, seen
    print("\n".join(faults) or f"the defaults of {len(seen)} options agree")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
