"""The options of the program as its --help lists them."""
import re
import subprocess

COMMANDS = ("suggest", "crop", "report", "maps", "contact-sheet")


class Option:
    def __init__(self, title, name, form, description, required):
        self.title = title        # of its group: "Ranking"
        self.name = name          # "--top"
        self.form = form          # "N"; empty for options that take no value
        self.required = required
        found = re.search(r" \(default: (.*)\)$", description)
        self.default = found.group(1) if found else None


def options_of(program, command):
    text = subprocess.run([program, command, "--help"], stdout=subprocess.PIPE, check=True,
                          universal_newlines=True).stdout
    text = re.sub(r"\n {20,}", "   ", text)  # descriptions on a line of their own
    found = []
    title = ""
    for heading, names, forms, description in re.findall(
            r"^(?:([A-Z].*):|  ((?:-.,)?--[a-z-]+)((?: [^ \n]+)*) {2,}(.*))$", text, re.M):
        title = heading or title
        if not names:
            continue
        words = re.sub(r"(Needs|Excludes):.*", "", forms).split()
        required = "REQUIRED" in words
        form = " ".join(word for word in words if word not in ("REQUIRED", "..."))
        found.append(Option(title, names.split(",")[-1], form, description, required))
    assert len(found) >= 9, (command, text)
    return found
