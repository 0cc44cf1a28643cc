"""Programs to be shown: sources with profiles, written as the tests need them."""

import os
import random
import subprocess

STATEMENTS = (
    "    if (r->count > {n} && r->next != NULL) {{",
    "        return report(\"item {n} of %d\\n\", i) < 0 ? -1 : sum;",
    "    }}",
    "    for (i = {n}; i < r->count && r->items[i] != 0; i++)",
    "        sum += r->items[i] * weight[i & 7]; /* step {n} */",
    "    value = lookup(r->table, key, {n}) ? r->first : r->last;",
    "",
    "    // What {n} stands for is told by the one who calls.",
    "\ttext += step(text, limit - {n});",
)


class Program:
    """Collects sources and routines, then writes them."""

    def __init__(self, folder):
        self.folder = folder
        self.static = []
        self.records = []

    def add(self, name, text, routines):
        """`routines`: (name, line, [(line, column, count), ...]) each; None for one that was never called."""
        path = os.path.join(os.fsencode(self.folder), os.fsencode(name))
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(text)
        for routine, line, blocks in routines:
            self.static.append(f"{name} - {routine} {line} {len(blocks) if blocks else 3} C\n")
            if blocks is not None:
                listed = " ".join(f"{at}:{column}={count}" for at, column, count in blocks)
                self.records.append((os.fsencode(name), os.fsencode(routine), listed))

    def add_random(self, name, lines, seed, prefix=b""):
        """A source of about so many lines, of functions of twenty lines."""
        dice = random.Random(seed)
        text, routines = [prefix.decode()] if prefix else [], []
        while len(text) + 20 <= lines:
            first = len(text) + 1
            text.append(f"static int handle_request_{first}(const struct record *r, int n)")
            text.append("{")
            blocks, ran = [(first + 1, 1, dice.choice((1, 7, 1234, 5600000)))], dice.random()
            for _ in range(16):
                line = dice.choice(STATEMENTS).format(n=dice.randrange(100))
                text.append(line)
                if line.strip() and "//" not in line and dice.random() < 0.5:
                    column = len(line) - len(line.lstrip()) + 1
                    count = 0 if dice.random() < 0.2 else dice.randrange(1, 3000)
                    blocks.append((len(text), column, count))
                    if dice.random() < 0.1:
                        blocks.append((len(text), column, dice.randrange(2)))
            text += ["}", ""]
            routines.append((f"handle_request_{first}", first, None if ran < 0.1 else blocks))
        self.add(name, ("\n".join(text) + "\n").encode(), routines)

    def write(self, compiler):
        """Writes both profiles; `compiler` makes binary ones of text."""
        with open(os.path.join(self.folder, "pgopti.spi"), "w", encoding="utf-8", errors="surrogateescape") as file:
            file.writelines(self.static)
        text = os.path.join(self.folder, "pgopti.dpitext")
        with open(text, "w", encoding="utf-8", errors="surrogateescape") as file:
            file.write("header runs 1\n")
            for name, routine, listed in sorted(self.records): # as they are looked up
                file.write(f"record 64\n  file {os.fsdecode(name)}\n  function {os.fsdecode(routine)}\n  blocks {listed}\n")
        subprocess.run([compiler, text, os.path.join(self.folder, "pgopti.dpi")], check=True)
