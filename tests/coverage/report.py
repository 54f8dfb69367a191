#!/usr/bin/env python3
"""Tells how much of each folder the tests reach, and compares what they do not with a kept list.

    report.py COVERAGE.json LIST [--update]

COVERAGE.json is gcovr's. LIST names what no test reaches, with the reason; the check fails when
something is not reached that it does not name. --update writes the list anew: what is new in it
has the reason "?", which the check refuses, until somebody gives it another.
"""

import collections
import json
import os
import re
import sys

ENTRY = re.compile(r"  (\S+) +(\d+)(\+line)? +(.*)$")
FOLDERS = [
    "framework", "platform", "registry", "registry/base", "registry/format", "registry/store",
    "registry/keytree", "registry/filetree", "registry/memtree", "yax", "tools/yaxreg",
]

Missed = collections.namedtuple("Missed", "branches lines")


class Count:
    def __init__(self):
        self.lines = self.branches = self.lines_reached = self.branches_reached = 0

    def add(self, line):
        self.lines += 1
        self.lines_reached += line["count"] > 0
        self.branches += len(line["branches"])
        self.branches_reached += sum(branch["count"] > 0 for branch in line["branches"])

    def text(self):
        return "".join(f" {reached:6} of {all_:6} {100 * reached / max(all_, 1):7.2f} %"
                       for reached, all_ in ((self.lines_reached, self.lines),
                                             (self.branches_reached, self.branches)))


def folder_of(path):
    return max((each for each in FOLDERS if path.startswith(each + "/")), key=len)


def read_coverage(path):
    """The counts of each folder, and what is not reached: {file: {text of the line: Missed}}."""
    counts = collections.defaultdict(Count)
    missed = {}
    with open(path) as coverage:
        files = json.load(coverage)["files"]
    for file in files:
        name = file["file"]
        with open(name) as source:
            texts = [" ".join(line.split()) for line in source]
        # The tool is counted, and not listed.
        of_file = {} if name.startswith("tools/") else missed.setdefault(name, {})
        for line in file["lines"]:
            if line.get("gcovr/noncode"):
                continue
            for of in (folder_of(name), "the tool" if name.startswith("tools/") else "the library"):
                counts[of].add(line)
            branches = sum(branch["count"] == 0 for branch in line["branches"])
            lines = int(line["count"] == 0)
            if branches + lines > 0:
                text = texts[line["line_number"] - 1]
                before = of_file.get(text, Missed(0, 0))
                of_file[text] = Missed(before.branches + branches, before.lines + lines)
    return counts, missed


def read_list(path):
    """The head of the list, and what it names: {file: {text: (reason, Missed)}}."""
    head = []
    listed = {}
    of_file = None
    with open(path) as kept:
        for line in kept:
            line = line.rstrip("\n")
            entry = ENTRY.match(line)
            if entry:
                reason, branches, lines, text = entry.groups()
                of_file[text] = (reason, Missed(int(branches), 1000 if lines else 0))
            elif line.startswith("#") or not line:
                head += [line] if of_file is None else []
            else:
                of_file = listed.setdefault(line, {})
    return head, listed


def write_list(path, head, listed, missed):
    with open(path, "w") as kept:
        kept.write("\n".join(head) + "\n")
        for name in sorted(missed):
            entries = {text: (listed.get(name, {}).get(text, ("?",))[0], found)
                       for text, found in missed[name].items()}
            # What is reached only sometimes stays, as long as the line is there.
            with open(name) as source:
                texts = {" ".join(line.split()) for line in source}
            for text, (reason, most) in listed.get(name, {}).items():
                if reason == "sometimes" and text in texts:
                    now = entries.get(text, (reason, Missed(0, 0)))[1]
                    entries[text] = (reason, Missed(max(most.branches, now.branches),
                                                    max(most.lines, now.lines)))
            if entries:
                kept.write(f"{name}\n")
            for text, (reason, found) in entries.items():
                count = f"{found.branches}{'+line' if found.lines else ''}"
                kept.write(f"  {reason:10} {count:7} {text}\n")


def unexpected(listed, missed, reasons):
    for name in sorted(missed):
        for text, found in missed[name].items():
            reason, most = listed.get(name, {}).get(text, ("?", Missed(0, 0)))
            if found.branches > most.branches or found.lines > most.lines:
                yield f"{name}: {found.branches} branches of: {text}"
    for name, entries in listed.items():
        for text, (reason, _) in entries.items():
            if reason not in reasons:
                yield f"{name}: no reason of the list's head: {reason}: {text}"


def main():
    coverage, kept = sys.argv[1:3]
    counts, missed = read_coverage(coverage)
    print(f"{'':22} {'lines reached':>26} {'branches reached':>26}")
    for folder in FOLDERS[:-1] + ["the library"] + FOLDERS[-1:]:
        if folder in counts:
            print(f"{folder:22}{counts[folder].text()}")
    if not os.path.exists(kept):
        sys.exit(f"There is no {kept}")
    head, listed = read_list(kept)
    if "--update" in sys.argv:
        write_list(kept, head, listed, missed)
        return
    reasons = {line.split()[1] for line in head if line.startswith("#   ")}
    findings = list(unexpected(listed, missed, reasons))
    if findings:
        print("\n".join(findings))
        sys.exit(f"{len(findings)} places are not reached and not in {kept}. Test them, or tell "
                 "there why they cannot be reached.")


if __name__ == "__main__":
    main()
