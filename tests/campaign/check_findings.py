#!/usr/bin/python3
"""Asks korvex-convert about campaigns of which it is known what is wrong with them.

    tests/campaign/check_findings.py BIN_DIR [--campaigns N] [--seed S] [--keep]

A campaign with one flaw has exactly that finding, on standard error and in the JSON
report, and every problem of a check has its file. Random campaigns without a flaw
have none, give the same output cells whatever else is asked for, and every reading
once in the long form.

A check for developers: it needs python3-xlwt, python3-xlrd, python3-openpyxl and
python3-xlsxwriter.
"""

import argparse
import csv
import datetime
import glob
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile

import openpyxl
import xlrd
import xlsxwriter
import xlwt

PLATE, WELL, CHEM, OD = "cell plate #", "cell plate wells ##", "compound ID", "Delta OD"
HEADERS = ["#", PLATE, WELL, CHEM, "conc uM", OD]
FORMATS = {96: (8, 12), 384: (16, 24), 1536: (32, 48)}
SAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../samples")
FINISHED = "Process finished!\n[OK]\n"
OVERWRITTEN = "The same key, with the same replication number was found in different files"


def write(path, rows, sheet="data", first=()):
    """`rows` lie below the time of the reading; a cell is None, number, text, truth, date, or (code,) of an error."""
    os.makedirs(os.path.dirname(path), exist_ok=True)
    rows = [["12/03/2002 10:15"]] + rows
    names = list(first) + [sheet]
    if path.endswith(".xls"):
        book = xlwt.Workbook(encoding="utf-8")
        sheets = [book.add_sheet(name) for name in names]
        style = xlwt.easyxf(num_format_str="YYYY-MM-DD")
        for row, cells in enumerate(rows):
            for column, value in enumerate(cells):
                if isinstance(value, tuple):
                    sheets[-1].row(row).set_cell_error(column, value[0])
                elif value is not None:
                    sheets[-1].row(row).write(column, value, *[style] * isinstance(value, datetime.date))
        book.save(path)
    else:
        book = xlsxwriter.Workbook(path, {"default_date_format": "yyyy-mm-dd", "strings_to_formulas": False})
        sheets = [book.add_worksheet(name) for name in names]
        for row, cells in enumerate(rows):
            sheets[-1].write_row(row, 0, cells)
        book.close()


def well_name(row, column, pad="%02d"):
    return ("A" if row > 25 else "") + chr(65 + row % 26) + pad % (column + 1)


def plate_rows(plate, wells=None, value=0.5, headers=HEADERS):
    """The header row and a row for each well."""
    wells = wells or [well_name(i // 12, i % 12) for i in range(96)]
    cells = [dict(zip(HEADERS, [i + 1, plate, well, "CMP-%s-%d" % (plate, i), 2.5, value + i / 1000]))
             for i, well in enumerate(wells)]
    return [list(headers)] + [[row.get(name) for name in headers] for row in cells]


def clean_files():
    return {"%s/P%d-1-%d.xls" % (folder, plate, replication): plate_rows(plate)
            for folder, plate in (("a", 1), ("b", 2)) for replication in (1, 2)}


class Converter:
    def __init__(self, bin_dir, root):
        self.root, self.failed, self.runs = root, [], 0
        self.program = os.path.join(root, "program/bin/korvex-convert")
        os.makedirs(os.path.dirname(self.program))
        shutil.copy(os.path.join(bin_dir, "korvex-convert"), self.program)
        self.settings = os.path.join(root, "settings.ini")
        with open(self.settings, "w") as file:
            file.write("[Main Section]\nSend Email on Error=0\nLaunch Output File=0\n")

    def run(self, inputs, *options, keys=(PLATE, WELL), columns=(PLATE, WELL, CHEM, "conc uM"), quiet=("-q",)):
        """Exit status, lines on standard error, and the report, which is written anew by each run."""
        self.runs += 1
        shutil.rmtree(os.path.join(self.root, "program/AppErr"), ignore_errors=True)
        report = os.path.join(self.root, "report.json")
        if os.path.exists(report):
            os.remove(report)
        command = [self.program, *quiet, "--settings", self.settings, "--spreadsheet", "embedded", "-d", OD]
        command += [word for key in keys for word in ("-k", key)] + [word for name in columns for word in ("-c", name)]
        command += list(options) + (["--files", *inputs] if isinstance(inputs, list) else [inputs])
        done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, cwd=self.root, timeout=300,
                              env=dict(os.environ, HOME=self.root, XDG_STATE_HOME=self.root, LC_ALL="C.UTF-8"))
        told = done.stderr.decode()
        if os.path.exists(report):
            with open(report, encoding="utf-8") as file:
                return done.returncode, told, json.load(file)
        return done.returncode, told, None

    def logged(self):
        with open(os.path.join(self.root, "program/AppErr/KORVEX.LOG"), encoding="cp1252") as file:
            return file.read()

    def expect(self, what, found, expected):
        if found != expected:
            self.failed.append("%s: %r instead of %r" % (what, found, expected))

    def campaign(self, name, files):
        folder = os.path.join(self.root, name)
        for path, rows in files.items():
            write(os.path.join(folder, path), rows)
        return folder


def kinds(report):
    return [(finding["kind"], finding["count"]) for finding in report["findings"]]


def content(path):
    with open(path, "rb") as file:
        return file.read()


def flaws():
    """(what, files that are changed: rows, or None for gone, the finding, options of the run)."""
    def cell(row, column, value):
        rows = plate_rows(1)
        rows[row][HEADERS.index(column)] = value
        return rows

    def lacking(name):
        return plate_rows(1, headers=[header for header in HEADERS if header != name])

    def wells_with(well):
        return plate_rows(1, [well_name(i // 12, i % 12) for i in range(96)] + [well])

    second = "a/P1-1-2.xls"
    gap = [[None, None, "X01", "below"], [98, 1, "X02", "below", 1, 0.5]]
    yield "a gap in the first sub-folder", {second: None, "a/P1-1-3.xls": plate_rows(1), "b/P2-1-3.xls": plate_rows(2)}, \
        ("misplaced-replication", 2), {}
    yield "a gap of seven", {second: None, "a/P1-1-9.xls": plate_rows(1), "b/P2-1-1.xls": None, "b/P2-1-2.xls": None}, \
        ("overwritten-header", 1), {}
    yield "a blank row", {second: plate_rows(1) + gap}, ("unread-rows", 2), {}
    yield "a header row below", {second: None, "a/P1-1-1.xls": plate_rows(1) + [HEADERS]}, ("repeated-header", 1), {}
    yield "no key column", {second: None, "b/P2-1-2.xls": None, "b/P2-1-1.xls": lacking("batch"),
                            "a/P1-1-1.xls": plate_rows(1, headers=HEADERS + ["batch"])}, \
        ("missing-key-column", 1), {"keys": [PLATE, WELL, "batch"], "columns": [CHEM]}
    yield "no output column", {second: lacking("conc uM")}, ("missing-output-column", 1), {}
    for well in ("A1", "H12 ", " H12", "h12\xa0"):
        yield "well %r" % well, {"a/P1-1-1.xls": wells_with(well), second: wells_with(well)}, ("near-equal-keys", 1), {}
    yield "another compound", {second: cell(5, CHEM, "CMP-1-x")}, ("conflicting-output", 1), {}
    yield "a compound forgotten", {second: cell(5, CHEM, None)}, ("conflicting-output", 1), {}
    for value in (None, "", "  "):
        yield "reading %r" % value, {second: cell(5, OD, value)}, ("incomplete-replication", 1), {}
    yield "a row forgotten", {second: plate_rows(1)[:-3]}, ("incomplete-replication", 3), {}
    for value in ("OVRFLW", (42,), (7,), True, datetime.date(2002, 3, 12), "1.2.3", "-", "1,2,3 x", "<0.1"):
        yield "reading %r" % (value,), {second: cell(5, OD, value)}, ("not-a-number", 1), {}
    yield "many texts", {second: [HEADERS] + [row[:5] + ["OVRFLW"] for row in plate_rows(1)[1:]]}, ("not-a-number", 96), {}
    for value in ("0,110", "0.110", "1 000", "1\xa0000,5", " 17", "1E-3"):
        yield "reading %r" % value, {second: cell(5, OD, value)}, ("number-as-text", 1), {}
    yield "a folder below", {"a/old/P1-1-7.xls": plate_rows(1)}, ("skipped-folder", 1), {}
    for name in ("1.6", "1,6", "&H2"):
        yield name, {second: None, "a/P1-1-%s.xls" % name: plate_rows(1)}, \
            ("rounded-number", 1), {}
    yield "day 2.6", {second: None, "a/P1-2.6-2.xls": plate_rows(1)}, ("rounded-number", 1), {"columns": ["day_num", CHEM]}
    yield "a well outside", {path: wells_with("I13") for path in ("a/P1-1-1.xls", second)}, ("key-outside-plate", 1), {}


def check_flaws(converter):
    for number, (what, changed, finding, options) in enumerate(flaws()):
        files = {path: rows for path, rows in {**clean_files(), **changed}.items() if rows is not None}
        folder = converter.campaign("flaw %d" % number, files)
        output, alone = os.path.join(folder, "out.xls"), os.path.join(folder, "alone.xls")
        status, told, report = converter.run(folder, "-o", output, "--report", "report.json", **options)
        notes = [line for line in told.splitlines() if line.startswith("Note: ")]
        converter.expect(what, (status, kinds(report), len(notes)), (0, [finding], 1))
        shown = sum(notes[0].count(path) for path in list(files) + ["a/old"]) if notes else 0
        if shown > 10 or finding[1] > 10 and "; and %d more" % (finding[1] - 10) not in told:
            converter.failed.append("%s: %s" % (what, told))
        converter.expect(what + ", alone", converter.run(folder, "-o", alone, **options)[:2], (0, told))
        converter.expect(what + ", cells", content(alone), content(output))
        long_form = os.path.join(folder, "strict.csv")
        os.remove(output)
        status, told, report = converter.run(folder, "-o", output, "--long", long_form, "--report", "report.json",
                                             "--strict", **options)
        converter.expect(what + ", strict", (status, kinds(report), report["outcome"], report["output"],
                                             os.path.exists(output), os.path.exists(long_form)),
                         (1, [finding], "failed", None, False, False))
        settings = content(converter.settings)
        status, told, report = converter.run(folder, "-o", output, "--long", long_form, "--report", "report.json",
                                             "--check", **options)
        found = [] if finding[0] in ("misplaced-replication", "overwritten-header") and not kinds(report) else [finding]
        converter.expect(what + ", check", (status, kinds(report), report["problems"], os.path.exists(output),
                                            os.path.exists(long_form), content(converter.settings)),
                         (1, found, [], False, False, settings))



def random_campaign(folder, chance):
    """Writes a campaign without a flaw. What to convert, keys, columns, and the rows of its long form."""
    wells_of, extra = chance.choice(["%02d", "%d", "number"]), chance.sample(["Filename", "Date", "day_num"], chance.randrange(3))
    replications = chance.choice([1, 2, 3, 4])
    keys, others = [PLATE, WELL], [CHEM, "conc uM", "made on", "big"]
    keys += [name for name in extra if chance.random() < 0.5 and (name != "Filename" or replications == 1)]
    columns = chance.sample(keys + others, chance.randrange(2, len(keys + others))) + [name for name in extra if name not in keys]
    columns = list(dict.fromkeys(columns))
    chance.shuffle(keys)
    prefix, size = chance.choice(["", "Plate ", "LIB 7/", "7E0"]), chance.choice(list(FORMATS))
    folders = chance.sample(["Set 1", "set 2", "b.c", "Z"], chance.choice([1, 1, 2, 3, 4]))
    paths, table, plate = [], [], 0
    for sub_folder in sorted(folders, key=str.upper):
        files = {}
        for _ in range(1 if size == 1536 else chance.choice([1, 1, 2, 3])):
            plate += 1
            height, width = FORMATS[size]
            wells = [(row, column) for row in range(height) for column in range(width)]
            if chance.random() < 0.5:
                wells = sorted(chance.sample(wells, chance.randrange(size // 2, size)))
            name = "%s%d" % (prefix, plate) if prefix else plate
            wells = [(row * width + column + 1) if wells_of == "number" else well_name(row, column, wells_of)
                     for row, column in wells]
            shared = [["CMP %d" % i, chance.choice([2.5, 10, 1 / 3, None]), datetime.date(2002, 3, 1 + i % 28),
                       chance.choice([1e15, 123456789012, -5e-7, "text", True])] for i in range(len(wells))]
            for replication in range(1, replications + 1):
                headers = [["#", PLATE, WELL] + others + ["remark", OD], [0, 1, 2, 3, 4, 5, 6, 7, 8]]
                order = [0] + chance.sample(headers[1][1:], 8)
                rows = [[i + 1, name, well] + cells + [chance.choice([None, "OVRFLW", replication])] +
                        [chance.choice([round(chance.gauss(0.7, 0.2), 4), round(chance.gauss(0, 1e-9), 14), -3, 1e12])]
                        for i, (well, cells) in enumerate(zip(wells, shared))]
                file = "P%d-%d-%d%s" % (plate, chance.choice([1, 3]) if "day_num" not in extra else 2, replication,
                                        chance.choice([".xls", ".xlsx"]))
                notes = [["written by", "nobody"]] * chance.randrange(3)
                write(os.path.join(folder, sub_folder, file), notes + [[row[i] for i in order] for row in [headers[0]] + rows],
                      first=["protocol"] * chance.randrange(2))
                files[file] = (name, rows, len(notes) + 3, replication)
        for file in sorted(files, key=str.upper):
            name, rows, start, replication = files[file]
            paths.append(os.path.join(folder, sub_folder, file))
            own = {"Filename": paths[-1], "Date": "12/03/2002", "day_num": int(file.split("-")[1])}
            for number, row in enumerate(rows):
                cells = dict(zip(["#", PLATE, WELL] + others, row), **own)
                table.append([cells[column] for column in list(dict.fromkeys(keys + columns))] +
                             [int(file.split("-")[1]), replication, row[-1], sub_folder + "/" + file, start + number])
    selected = chance.random() < 0.25 and len({row[-2].split("/")[1] for row in table}) == len(paths)
    if selected:  # paths begin at the folder of the first file
        table = [row[:-2] + [os.path.relpath(os.path.join(folder, row[-2]), os.path.dirname(paths[0])), row[-1]] for row in table]
    return paths if selected else folder, keys, columns, table


def plain(value):
    """A value as .csv, .tsv and .xlsx have it in common."""
    if value is None or isinstance(value, bool):
        return {None: "", True: "True", False: "False"}[value]
    if isinstance(value, (datetime.date, datetime.datetime)):
        return "%d/%d/%d" % (value.month, value.day, value.year)
    try:
        return float("%.15g" % float(value))
    except ValueError:
        return value


def read_long(path):
    if path.endswith(".xlsx"):
        return [[plain(value) for value in row] for row in openpyxl.load_workbook(path).active.values]
    with open(path, encoding="utf-8-sig", newline="") as file:
        return [[plain(value) for value in row] for row in csv.reader(file, delimiter="\t" if path.endswith(".tsv") else ",")]


def check_clean(converter, campaigns, chance):
    for number in range(campaigns):
        folder = os.path.join(converter.root, "clean %d" % number)
        inputs, keys, columns, table = random_campaign(folder, chance)
        what = "%s %r %r" % (folder, keys, columns)
        outputs = []
        for options in ((), ("--report", "report.json"), ("--report", "report.html", "--strict"),
                        ("--long", "long.csv"), ("--strict", "--long", "long.tsv", "--report", "report.json"),
                        ("--decimal-comma", "--long", "long.xlsx")):
            outputs.append(os.path.join(folder, "out %d.xls" % len(outputs)))
            status, told, report = converter.run(inputs, "-o", outputs[-1], *options, keys=keys, columns=columns)
            converter.expect("%s %r" % (what, options), (status, told, report and kinds(report)),
                             (0, FINISHED, [] if report else None))
            if status == 0 and content(outputs[-1]) != content(outputs[0]):
                converter.failed.append("%s: %r changes the output" % (what, options))
        settings = content(converter.settings)
        converter.expect(what + " --check", converter.run(inputs, "--check", keys=keys, columns=columns), (0, "", None))
        converter.expect(what + " settings", content(converter.settings), settings)
        expected = [[plain(value) for value in row] for row in table]
        for ending in ("csv", "tsv", "xlsx"):
            form = read_long(os.path.join(converter.root, "long." + ending))[1:]
            wrong = [pair for pair in zip(form, expected) if pair[0] != pair[1]]
            if wrong or len(form) != len(expected):
                converter.failed.append("%s: long.%s has %d rows instead of %d: %r" % (what, ending, len(form), len(expected), wrong[:1]))
        shutil.rmtree(folder)


def check_problems(converter):
    """Everything that is wrong with a campaign is told at once, each with its file."""
    other = [header for header in HEADERS if header != OD]
    folder = converter.campaign("broken", {
        "a/A1-1-1.xls": plate_rows(1), "a/A1-1-2.xls": plate_rows(1), "a/B2-1-1.xls": plate_rows(2) + plate_rows(2)[5:6],
        "a/noreplication.xls": plate_rows(3), "a/C4-1-x.xls": plate_rows(4), "a/D5-1-1.xls": plate_rows(5, headers=other),
        "a/E6-1-1.xls": plate_rows(6, headers=HEADERS + [OD]), "b/F1-1-2.xls": plate_rows(1)[:2], "b/G7-1-200.xls": plate_rows(7)})
    write(os.path.join(folder, "b/H8-1-1.xls"), plate_rows(8), sheet="date")
    os.makedirs(os.path.join(folder, "c"))
    for name, text in (("a/I9-1-1.txt", b"no workbook"), ("a/J9-1-1.xls", content(os.path.join(folder, "a/A1-1-1.xls"))[:9000])):
        with open(os.path.join(folder, name), "wb") as file:
            file.write(text)
    dateless = os.path.join(folder, "b/K10-1-1.xls")
    book = xlwt.Workbook()
    for row, cells in enumerate([["12/03/2002"]] + plate_rows(10)):
        for column, value in enumerate(cells):
            (book.get_sheet(0) if row + column else book.add_sheet("data")).write(row, column, value)
    book.save(dateless)
    expected = {"a/B2-1-1.xls": "Duplicate key in file", "a/noreplication.xls": "Could not extract replication number",
                "a/C4-1-x.xls": "Could not extract replication number", "a/D5-1-1.xls": "no data column",
                "a/E6-1-1.xls": "column name \"Delta OD\" twice", "b/F1-1-2.xls": OVERWRITTEN, "b/G7-1-200.xls": "has no letter",
                "b/H8-1-1.xls": "No \"data\" sheet", "c": "is empty", "a/I9-1-1.txt": "plain text", "a/J9-1-1.xls": "ends after",
                "b/K10-1-1.xls": "extract the date"}
    before, settings = sorted(glob.glob(folder + "/**", recursive=True)), content(converter.settings)
    status, told, report = converter.run(folder, "--check", "-o", folder + "/o.xls", "--long", folder + "/o.csv", "--report",
                                         "report.json", keys=[PLATE, WELL, "Date"])
    lines = [line for line in told.splitlines() if line.startswith("Problem: ")]
    for problem, line in zip(report["problems"], lines):
        file = problem["place"]["file"]
        if expected.pop(file, "nothing") not in problem["text"].replace("\n", "") + str(problem["cause"]) or "Problem: " + file not in line:
            converter.failed.append("check: %r, %s" % (problem, line))
    converter.expect("check", (status, report["outcome"], len(lines) - len(report["problems"]), expected), (1, "checked", 0, {}))
    converter.expect("check writes", (sorted(glob.glob(folder + "/**", recursive=True)), content(converter.settings)),
                     (before, settings))


def check_refusals(converter):
    """The file that had a key first is named; what wide outputs alone refuse does not stop a long form."""
    for what, files, message, first, row in (
            ("duplicate", {"b/P2-1-2.xls": plate_rows(2) + plate_rows(2)[9:10]}, "Duplicate key in file", "b/P2-1-2.xls", 11),
            ("overwriting", {"b/P3-1-2.xls": plate_rows(1)[:1] + plate_rows(1)[4:5]}, OVERWRITTEN, "a/P1-1-2.xls", 6)):
        folder = converter.campaign(what, {**clean_files(), **files})
        for options in (("-o", "refused.xls"), ("--long", "refused.csv"), ("-o", "refused.xls", "--long", "refused.csv")):
            status, told, report = converter.run(folder, *options, "--report", "report.json")
            cause = "row %d of /.../%s/%s held first." % (row, what, first)
            problem = report["problems"][0]
            converter.expect("%s %r" % (what, options), [
                status, message in told.replace("\r", "").replace("\n", ""), cause in told, cause in converter.logged(),
                len(report["problems"]), cause in problem["cause"], problem["place"]["file"], report["outcome"],
                glob.glob(os.path.join(converter.root, "refused*"))],
                [1, True, True, True, 1, True, list(files)[0], "failed", []])
    gaps = {"a/P1-1-1.xls": plate_rows(1), "a/P1-1-3.xls": plate_rows(1), "b/P2-1-1.xls": plate_rows(2),
            "b/P2-1-2.xls": plate_rows(2), "b/P2-1-9.xls": plate_rows(2), "c/P3-1-2.xls": plate_rows(3),
            "c/P3-1-200.xls": plate_rows(3), "c/P3-1-32000.xls": plate_rows(3)}
    folder = converter.campaign("gaps", gaps)
    converter.expect("gaps, wide", converter.run(folder, "-o", "gaps.xls")[0], 1)
    converter.expect("gaps, long", converter.run(folder, "--long", "gaps.csv")[:2], (0, FINISHED))
    converter.expect("gaps, check of the long form", converter.run(folder, "--check", "--long", "gaps.csv")[:2], (0, ""))
    rows = [[row[-2], row[-4]] for row in read_long(os.path.join(converter.root, "gaps.csv"))[1:]]
    converter.expect("gaps", rows, [[path, float(path[:-4].split("-")[2])] for path in sorted(gaps, key=lambda path: (
        path[0], str.upper(path))) for _ in range(96)])


def check_names(converter):
    """What cannot be written is refused before the run, and what is there is kept."""
    folder = converter.campaign("names", clean_files())
    kept = os.path.join(converter.root, "kept")
    source = os.path.join(folder, "a/P1-1-1.xls")
    data = content(source)
    for ending in (".xls", ".csv", ".json", ".html"):
        with open(kept + ending, "w") as file:
            file.write("of another run")
    csv_input = os.path.join(folder, "a/P1-1-3.csv")
    shutil.copy(source, csv_input)
    for what, options, status in (
            ("existing output", ("-o", "kept.xls", "--long", "new.csv", "--no-replace"), 1),
            ("existing long form", ("-o", "new.xls", "--long", "kept.csv", "--no-replace"), 1),
            ("existing report", ("-o", "new.xls", "--report", "kept.json", "--no-replace"), 1),
            ("no folder for the long form", ("-o", "new.xls", "--long", "nowhere/new.csv"), 1),
            ("no folder for the report", ("-o", "new.xls", "--report", "nowhere/new.json"), 1),
            ("a folder as the long form", ("-o", "new.xls", "--long", folder), 1),
            ("long .xls", ("-o", "new.xls", "--long", "new2.xls"), 1),
            ("one file twice", ("-o", "new.csv", "--long", "./new.csv"), 2),
            ("one report twice", ("-o", "new.xls", "--report", "new.json", "--report", converter.root + "/new.json"), 2),
            ("report as output", ("-o", "new.xls", "--report", "new.xls"), 2),
            ("an input as the long form", ("-o", "new.xls", "--long", csv_input), 1),
            ("an input as the output", ("-o", source), 1)):
        found, told, _ = converter.run(folder, *options, quiet=())
        converter.expect(what, [found, "Folder 1 of" in told, "Process finished" in told], [status, False, False])
        converter.expect(what + " leaves", sorted(os.path.basename(path) for path in glob.glob(converter.root + "/new*")), [])
    converter.expect("kept", [content(kept + ending) for ending in (".xls", ".csv", ".json", ".html")], [b"of another run"] * 4)
    converter.expect("inputs kept", [content(source), content(csv_input)], [data, data])


def check_samples(converter):
    """The findings of the samples are those that xlrd sees."""
    keys, columns = [CHEM, PLATE, WELL], [PLATE, WELL, CHEM, "compound #", "Date", "day_num"]
    texts, blanks = 0, 0
    for path in glob.glob(SAMPLES + "/campaign/*/*.xls"):
        sheet = xlrd.open_workbook(path).sheet_by_name("data")
        header = max(row for row in range(sheet.nrows) if sheet.cell_type(row, 0) == xlrd.XL_CELL_TEXT)
        column = [str(value).lower() for value in sheet.row_values(header)].index(OD.lower())
        for row in range(header + 1, sheet.nrows):
            if sheet.cell_type(row, 0) in (xlrd.XL_CELL_EMPTY, xlrd.XL_CELL_BLANK):
                break
            blank = not str(sheet.cell_value(row, column)).strip()
            blanks += blank
            texts += not blank and sheet.cell_type(row, column) != xlrd.XL_CELL_NUMBER
    converter.run(SAMPLES + "/campaign", "--check", "--report", "report.json", keys=keys, columns=columns)
    _, _, report = converter.run(SAMPLES + "/campaign", "-o", "s.xls", "--report", "report.json", keys=keys, columns=columns)
    converter.expect("samples", kinds(report), [("incomplete-replication", blanks), ("not-a-number", texts)])
    _, _, report = converter.run(SAMPLES + "/flawed", "-o", "s.xls", "--report", "report.json", keys=keys, columns=columns)
    converter.expect("flawed samples", kinds(report), [("misplaced-replication", 2)])


def main():
    parser = argparse.ArgumentParser(description="Asks korvex-convert what it finds in campaigns with known flaws.")
    parser.add_argument("bin_dir")
    parser.add_argument("--campaigns", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--keep", action="store_true", help="keep the files")
    choices = parser.parse_args()
    root = tempfile.mkdtemp(prefix="korvex-findings-")
    converter = Converter(choices.bin_dir, root)
    for check in (check_flaws, check_problems, check_refusals, check_names, check_samples):
        check(converter)
    check_clean(converter, choices.campaigns, random.Random(choices.seed))
    for failure in converter.failed:
        print(failure[:1000])
    print("%d runs, %d problems" % (converter.runs, len(converter.failed)))
    if choices.keep:
        print(root)
    else:
        shutil.rmtree(root)
    return 1 if converter.failed else 0


if __name__ == "__main__":
    sys.exit(main())
