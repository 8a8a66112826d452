#!/usr/bin/python3
"""Reads workbooks with ours and with other programs, and lists the cells that differ.

    tests/peers/compare.py WORKBOOK-DUMP FOLDER [--all]

Every file of the folder is read by workbook-dump, LibreOffice, Gnumeric, xlrd (.xls)
and openpyxl (.xlsx). Listed are the cells that not all read alike and the files that
not all can read, but for what explained.tsv, or one in the folder, accounts for; --all
lists that, too, and the explanations that no file needed.
Exit status 1 when something is listed.
"""

import argparse
import collections
import concurrent.futures
import fnmatch
import math
import os
import re
import subprocess
import sys

EXPLAINED = "explained.tsv"
HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [HERE]

import readers  # noqa: E402

PEERS = ["libreoffice", "gnumeric", "xlrd", "openpyxl"]
ESCAPES = {"n": "\n", "r": "\r", "t": "\t", "\\": "\\"}


def files_below(folder):
    return sorted(os.path.join(place, name) for place, _, names in os.walk(folder) for name in names
                  if name != EXPLAINED)


def is_for(peer, path):
    """Who is made for the format; Gnumeric would show OpenDocument files that are no archives as text."""
    with open(path, "rb") as file:
        start = file.read(128)
    if peer == "gnumeric":
        return b"<office:document" not in start
    if peer == "openpyxl":
        return start[:2] == b"PK" and b"opendocument" not in start
    return peer != "xlrd" or start[:2] == b"\xd0\xcf" or start[:1] == b"\x09"


def with_ours(program, path):
    try:
        run = subprocess.run([program, path], stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=readers.SECONDS)
    except subprocess.TimeoutExpired:
        return readers.Unread("takes more than %d seconds" % readers.SECONDS)
    if run.returncode != 0:
        return readers.Unread(run.stderr.decode().strip().replace(path, "…"))
    cells = {}
    for line in run.stdout.decode().split("\n")[:-1]:
        sheet, row, column, kind, value = line.split("\t")
        if value:
            cells[unescaped(sheet), int(row), int(column)] = our_cell(kind, value)
    return cells


def unescaped(text):
    return re.sub(r"\\(.)", lambda code: ESCAPES[code[1]], text)


def our_cell(kind, text):
    if kind in ("number", "date"):
        return (kind, float(text))
    if kind == "boolean":
        return (kind, text == "True")
    if kind == "error":
        return (kind, int(text.split()[1]) - 2000)
    return (kind, unescaped(text))


def all_cells(book):
    if isinstance(book, readers.Unread):
        return book
    return {(sheet, *place): cell for sheet, cells in book for place, cell in cells.items()}


def as_exported(text):
    """LibreOffice and Gnumeric export any line end as one, and texts that read like an escape as they are."""
    return readers.unescaped(text).replace("\r\n", "\n").replace("\r", "\n")


def is_same(one, other, peer):
    if peer == "libreoffice" and one and other and (one[0], other[0]) == ("boolean", "number"):
        return one[1] == other[1]  # what formulas yield are numbers there
    if one is None or other is None or one[0] != other[0]:
        return one == other
    is_exported = peer in ("libreoffice", "gnumeric")
    if one[0] == "date" or (one[0] == "number" and is_exported):
        return math.isclose(one[1], other[1], rel_tol=1e-14)
    if one[0] == "text" and is_exported:
        return as_exported(one[1]) == as_exported(other[1])
    return one[1] == other[1]


class Explanations:
    """explained.tsv: peer, kind in ours and in the peer, file and place as patterns, reason.

    The kind of a file is "read", or "unread: " and why.
    """

    def __init__(self, folders):
        self.rules = []
        for path in [os.path.join(folder, EXPLAINED) for folder in folders]:
            if os.path.exists(path):
                with open(path, encoding="utf-8") as file:
                    self.rules += [tuple(line.rstrip("\n").split("\t")) for line in file
                                   if line.strip() and line[0] != "#"]
        self.used = collections.Counter()  # by rule

    def explain(self, peer, ours, theirs, file, place):
        for rule in self.rules:
            if all(map(fnmatch.fnmatchcase, (peer, ours, theirs, file, place), rule[:5])):
                self.used[rule] += 1
                return True
        return False


def is_read(book):
    return not isinstance(book, readers.Unread)


def kind_of(book_or_cell):
    if isinstance(book_or_cell, readers.Unread):
        return "unread: " + book_or_cell
    if isinstance(book_or_cell, dict):
        return "read"
    return book_or_cell[0] if book_or_cell else "empty"


class Comparison:
    def __init__(self, explanations, lists_all):
        self.explanations, self.lists_all = explanations, lists_all
        self.counts, self.listed = collections.Counter(), 0

    def compare_file(self, file, ours, peers):
        self.counts["files"] += 1
        self.counts["refused by ours"] += not is_read(ours)
        self.report(file, "file", ours, {peer: book for peer, book in peers.items() if is_read(book) != is_read(ours)},
                    kind_of)
        if not is_read(ours):
            return
        self.counts["cells"] += len(ours)
        peers = {peer: book for peer, book in peers.items() if is_read(book)}
        for peer in peers:
            self.counts["read by " + peer] += 1
        for place in sorted(set(ours).union(*peers.values())):
            cell = ours.get(place)
            others = {peer: book.get(place) for peer, book in peers.items() if not is_same(cell, book.get(place), peer)}
            if others:
                for peer in others:
                    self.counts["cells that differ in " + peer] += 1
                self.report(file, "%s!R%dC%d" % place, cell, others,
                            lambda cell: "%s %r" % cell if cell else "empty")

    def report(self, file, place, ours, others, shown):
        left = [peer for peer, other in others.items()
                if not self.explanations.explain(peer, kind_of(ours), kind_of(other), file, place)]
        if left or (others and self.lists_all):
            self.listed += len(left)
            print("%s %s: ours %s" % (file, place, shown(ours)) +
                  "".join("; %s %s" % (peer, shown(other)) for peer, other in others.items()))


def main():
    parser = argparse.ArgumentParser(description="Lists what other programs read otherwise than ours.")
    parser.add_argument("program")
    parser.add_argument("folder")
    parser.add_argument("--all", action="store_true", help="list what is explained, too")
    choices = parser.parse_args()

    paths = files_below(choices.folder)
    asked = [[path for path in paths if is_for(peer, path)] for peer in PEERS]
    books = {}
    with concurrent.futures.ProcessPoolExecutor(os.cpu_count()) as pool:
        for peer, asked_paths, read in zip(PEERS, asked, pool.map(readers.read, PEERS, asked)):
            for path, book in zip(asked_paths, read):
                books.setdefault(path, {})[peer] = all_cells(book)

    comparison = Comparison(Explanations([HERE, choices.folder]), choices.all)
    for path in paths:
        comparison.compare_file(os.path.relpath(path, choices.folder), with_ours(choices.program, path), books.get(path, {}))
    explanations = comparison.explanations
    for rule in explanations.rules:
        if explanations.used[rule] or choices.all:
            print("%7d explained: %s" % (explanations.used[rule], " ".join(rule)), file=sys.stderr)
    print(", ".join("%s: %d" % count for count in comparison.counts.items()), file=sys.stderr)
    return 1 if comparison.listed else 0


if __name__ == "__main__":
    sys.exit(main())
