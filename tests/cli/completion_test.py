"""Completions for zsh and fish, tested in a real shell: they offer the commands, every option that
--help lists and no other, and the values that options take.

usage: completion_test.py VISTATRIM SOURCE_FOLDER
"""
import os
import pty
import shutil
import subprocess
import sys
import tempfile
import time

from help_options import COMMANDS, options_of

# Records what the completions offer.
ZSH_START = """
PROMPT='ready> '
fpath=({folder} $fpath)
autoload -Uz compinit; compinit -u -D
compadd() {{
    local -a hits; builtin compadd -O hits "$@"; print -rl -- $hits >>{offers}
    builtin compadd "$@"
}}
note-completions() {{
    : >{offers}
    zle complete-word
    print done >>{offers}
}}
zle -N note-completions
bindkey '^I' note-completions
"""


class Zsh:
    def __init__(self, completion, folder):
        shutil.copy(completion, folder)
        self.offers = os.path.join(folder, "offers")
        start = os.path.join(folder, ".zshrc")
        with open(start, "w", encoding="utf-8") as file:
            file.write(ZSH_START.format(folder=folder, offers=self.offers))
        self.folder = folder

    def offered(self, line):
        if os.path.exists(self.offers):
            os.remove(self.offers)
        child, terminal = pty.fork()
        if child == 0:
            os.environ.update({"ZDOTDIR": self.folder, "TERM": "vt100"})
            os.chdir(self.folder)
            os.execvp("zsh", ["zsh", "-i"])
        shown = b""
        while b"ready> " not in shown:
            shown += os.read(terminal, 4096)
        os.write(terminal, line.encode() + b"\t")
        offers = ""
        for _ in range(1000):
            if os.path.exists(self.offers):
                with open(self.offers, encoding="utf-8") as file:
                    offers = file.read()
            if offers.endswith("done\n"):
                break
            time.sleep(0.01)
        os.kill(child, 9)
        os.waitpid(child, 0)
        os.close(terminal)
        assert offers.endswith("done\n"), (line, shown)
        return {word for word in offers.split("\n")[:-2] if word}


class Fish:
    def __init__(self, completion, folder):
        self.completion = completion
        self.folder = folder

    def offered(self, line):
        offers = subprocess.run(
            ["fish", "--no-config", "-c", f"source {self.completion}; complete -C '{line}'"],
            stdout=subprocess.PIPE, check=True, universal_newlines=True, cwd=self.folder,
            env={**os.environ, "HOME": self.folder}).stdout
        return {row.split("\t")[0] for row in offers.split("\n") if row}


def check(shell, name, program, source):
    faults = []

    def expect(line, wanted, exactly=True):
        offered = shell.offered(line)
        if exactly and offered != wanted:
            faults.append(f"{name}: '{line}' lacks {sorted(wanted - offered)} and also offers "
                          f"{sorted(offered - wanted)}")
        elif not wanted <= offered:
            faults.append(f"{name}: '{line}' lacks {sorted(wanted - offered)}")

    expect("vistatrim ", set(COMMANDS), exactly=False)
    with open(os.path.join(source, "photo/values/presets.tsv"), encoding="utf-8") as file:
        presets = {row.split("\t")[0] for row in file if row.strip() and row[0] != "#"}
    for command in COMMANDS:
        options = options_of(program, command)
        expect(f"vistatrim {command} --", {option.name for option in options})
        for option in options:
            if "|" in option.form:
                expect(f"vistatrim {command} {option.name} ", set(option.form.split("|")))
    expect("vistatrim crop --preset ", presets)
    expect("vistatrim suggest --aspect ", presets | {"16:9"}, exactly=False)
    expect("vistatrim suggest --regions r", {"regions.json"}, exactly=False)
    return faults


def main():
    program, source = sys.argv[1:]
    source = os.path.abspath(source)
    faults = []
    tested = []
    for name, shell, file in (("zsh", Zsh, "_vistatrim"), ("fish", Fish, "vistatrim.fish")):
        if shutil.which(name) is None:
            continue
        tested.append(name)
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, "regions.json"), "w", encoding="utf-8"):
                pass
            completion = os.path.join(source, "cli/completion", file)
            faults += check(shell(completion, folder), name, os.path.abspath(program), source)
    print("\n".join(faults) or "completions for " + " and ".join(tested) + " know every option")
    if not tested:
        return 77
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
