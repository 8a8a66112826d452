#!/usr/bin/python3
"""Compares korvex-convert with an independent model, campaign by campaign.

    tests/campaign/check_campaigns.py BIN_DIR [--campaigns N] [--seed S] [--keep]

Random campaigns, written by up to four programs, are converted by korvex-convert
and by xlrd_convert.py. Where the model finishes, the cells of the output
are read back by up to four programs and compared one by one; where it refuses,
the texts, the exit status and the error log are compared, and there must be no
output. A second part does the same for every refusal.

A check for developers: it needs python3-xlrd and python3-xlwt, and uses the other
writers and readers where they are installed (libreoffice-calc, gnumeric,
python3-openpyxl, libspreadsheet-writeexcel-perl, libspreadsheet-parseexcel-perl).
run_samples.sh is the check that needs no package.
"""

import argparse
import math
import os
import random
import re
import shutil
import subprocess
import sys
import tempfile
import traceback

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [HERE] + [os.path.join(HERE, "../..", folder) for folder in ("tests/peers", "samples/make")]

import readers  # noqa: E402
import refusals  # noqa: E402
import writers  # noqa: E402
import xlrd_convert as model  # noqa: E402

HEADERS = ["cell plate #", "cell plate wells ##", "compound ID", "compound #", "OD 600", "Größe", "Масса", "βeta lactam",
           "化合物", " padded ", "date read"]
TEXTS = ["0017", "17", "-0.25", "1E5", "1e5", "12/03/2002", "=A1", "'x", " two  blanks ", "β-lactam", "Ж", "漢字", "😀",
         "a\nb", "True", "#N/A", "5%", "-0", "+5", ".5", "1,234", "<b>&", "x" * 300, "NaN"]
NUMBERS = [0, 1, -1, 0.25, 1 / 3, 1 / 12, 1e15, 999999999999999, 1.234e16, 1e-12, 0.1 + 0.2, -17.5, 65536, 1e300, 5e-324]


class Campaign:
    """One call of the converter and the files it is made of: (path, writer, sheets)."""

    def __init__(self, folder):
        self.folder, self.files, self.listed = folder, [], None
        self.keys, self.columns, self.data = [], [], "Delta OD"


def any_case(name, chance):
    return name if chance.random() < 0.6 else "".join(
        c.swapcase() if chance.random() < 0.5 and len(c.swapcase()) == 1 and c != "µ" else c for c in name)


def any_cell(chance):
    kind = chance.choices(["number", "text", "date", "boolean", "error", "empty", "nothing"], [6, 5, 2, 1, 1, 2, 0.3])[0]
    if kind == "number":
        return (kind, chance.choice(NUMBERS) if chance.random() < 0.5 else round(chance.gauss(0, 100), chance.randrange(6)))
    if kind == "text":
        return (kind, chance.choice(TEXTS))
    if kind == "date":
        return (kind, chance.choice([37593, 37593.5, 40000.25, 36526 + chance.randrange(4320000) / 1440]))
    if kind == "boolean":
        return (kind, chance.random() < 0.5)
    return (kind, chance.choice(writers.COMMON_ERRORS[1:]) if kind == "error" else None)


def data_cell(chance):
    return ("number", round(chance.gauss(0.7, 0.1), 4)) if chance.random() < 0.7 else any_cell(chance)


def stamp(chance):
    return chance.choices([("text", "12/03/2002 10:15"), ("date", 37593.427083333336), ("text", "3. März 2002"),
                           ("date", 37593), ("text", "12/03/2002"), ("empty", None)], [10, 10, 3, 0.3, 0.3, 0.3])[0]


def plate_rows(chance):
    return ["C%d%s" % (number, chance.choice(["", "x", "ß", "Ж"])) for number in range(chance.randrange(25))]


def data_sheet(headers, identities, chance):
    rows = [[stamp(chance), ("text", "note")]]
    rows += [[("text", "written by nobody")]] * chance.randrange(3)
    rows.append([("number", 17) if name == "17" else ("text", name) for name in headers])
    for identity in identities:
        if chance.random() < 0.05:
            continue
        row = [("text", identity) if name.upper() == "COMPOUND ID" else
               data_cell(chance) if name.upper() == "DELTA OD" else any_cell(chance) for name in headers]
        row[0] = chance.choice([("number", 3), ("number", 3.5), ("text", "12"), ("text", " 7 "), ("boolean", True)])
        if chance.random() < 0.002:
            row[0] = chance.choice([("text", "mean"), ("date", 37593), ("error", 42)])
        if chance.random() < 0.003:
            row[0] = chance.choice([("empty", None), ("nothing", None)])
        rows.append(row)
    if chance.random() < 0.1:
        rows.append([("empty", None), ("text", "written below the table")])
    if chance.random() < 0.1:
        rows += [[], [("blank", None)] * 3]
    return rows


def random_campaign(root, number, programs, chance):
    name = chance.choice(["campaign", "run [1]", "a" * 40, "Größe", "what?", "x*y:z"])
    campaign = Campaign(os.path.join(root, str(number), name))
    headers = chance.sample(HEADERS[:2] + HEADERS[3:], chance.randrange(1, 6)) + ["compound ID", "Delta OD"]
    if chance.random() < 0.1:
        headers.append("17")
    headers[1:] = chance.sample(headers[1:], len(headers) - 1)
    choosable = [name for name in headers if name != "Delta OD"] + model.PSEUDO_COLUMNS
    others = [name for name in choosable if name != "compound ID"]
    campaign.keys = ["compound ID"] + chance.sample(others, min(len(others), chance.choice([0, 0, 1, 2])))
    chance.shuffle(campaign.keys)
    if chance.random() < 0.7:
        campaign.keys = [key for key in campaign.keys if key != "Filename"]
    campaign.columns = chance.sample(choosable, chance.randrange(len(choosable) + 1))
    if chance.random() < 0.15:
        campaign.columns.insert(0, "delta od")
    if chance.random() < 0.03:
        (campaign.columns if chance.random() < 0.5 else campaign.keys).append("nowhere")
    campaign.keys = [any_case(name, chance) for name in campaign.keys]
    campaign.columns = [any_case(name, chance) for name in campaign.columns]
    campaign.data = any_case("Delta OD", chance)

    for folder in chance.sample(["Set 1", "set 2", "Ümlaut", "αβ", "b.c", "Z"], chance.choice([1, 1, 2, 3])):
        add_plates(campaign, folder, headers, programs, chance)
    if chance.random() < 0.3:
        campaign.listed = [path for path, _, _ in campaign.files]
        chance.shuffle(campaign.listed)
    return campaign


def add_plates(campaign, folder, headers, programs, chance):
    for plate in range(chance.choice([1, 1, 2])):
        identities = plate_rows(chance)
        if chance.random() < 0.7:
            identities = ["%s.%d.%s" % (folder, plate, identity) for identity in identities]
        for replication in chance.sample([1, 2, 3, 4, 5, 9, 12], chance.choice([1, 2, 3])):
            file = "P%d-%d-%d%s" % (plate, chance.choice([1, 2, 17]), replication, chance.choice([".xls", ".XLS", ".dat"]))
            names = [any_case(name, chance) for name in headers] if chance.random() < 0.5 else headers
            if chance.random() < 0.05:
                names = chance.sample(names[:1] + names[2:], len(names) - 1)
            sheets = [("data" if chance.random() < 0.8 else "Data", data_sheet(names, identities, chance))]
            if chance.random() < 0.5:
                sheets.insert(chance.randrange(2), ("notes", [[("text", "nothing")]]))
            program = chance.choices(programs, [1 if name[:4] in ("libr", "gnum") else 4 for name in programs])[0]
            campaign.files.append((os.path.join(campaign.folder, folder, file), program, sheets))


def write_files(campaigns):
    jobs = {}
    for campaign in campaigns:
        for path, program, sheets in campaign.files:
            os.makedirs(os.path.dirname(path), exist_ok=True)
            jobs.setdefault(program, []).append((path, sheets))
    for program, workbooks in jobs.items():
        writers.write(program, workbooks)


class Converter:
    """korvex-convert in a place of its own, with its error log and settings."""

    def __init__(self, bin_dir, root):
        self.root = root
        self.program = os.path.join(root, "program", "bin", "korvex-convert")
        os.makedirs(os.path.dirname(self.program))
        shutil.copy(os.path.join(bin_dir, "korvex-convert"), self.program)
        self.log = os.path.join(root, "program", "AppErr", "KORVEX.LOG")
        self.settings = os.path.join(root, "settings.ini")
        with open(self.settings, "w") as file:
            file.write("[Main Section]\nSend Email on Error=0\nLaunch Output File=0\n")

    def run(self, campaign, output, extra=()):
        shutil.rmtree(os.path.dirname(self.log), ignore_errors=True)
        command = [self.program, "--settings", self.settings, "-o", output, *extra]
        for option, names in (("-k", campaign.keys), ("-c", campaign.columns), ("-d", [campaign.data])):
            for name in names:
                command += [option, name]
        command += ["--files", *campaign.listed] if campaign.listed else [campaign.folder]
        environment = dict(os.environ, HOME=self.root, XDG_CONFIG_HOME=self.root, LC_ALL="C.UTF-8")
        return subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              env=environment, cwd=self.root, timeout=120)

    def logged(self):
        if not os.path.exists(self.log):
            return []
        with open(self.log, encoding="cp1252", newline="") as file:
            text = file.read()
        return [(int(number), place) for number, place in
                re.findall(r"Error Number   : (-?\d+)\r\n.*?Caught by      : (.*?)\r\n", text, re.DOTALL)]


def expectation(campaign):
    """The model's cells and no refusal, or no cells and its refusal."""
    conversion = model.Conversion(campaign.keys, campaign.columns, campaign.data)
    try:
        if campaign.listed:
            table = conversion.convert_files(campaign.listed)
        else:
            table = conversion.convert_folder(campaign.folder)
    except model.Refused as refusal:
        return None, refusal
    return {(row + 1, column + 1): tuple(cell) for row, cells in enumerate(table.rows)
            for column, cell in enumerate(cells) if cell.kind != "empty" and cell.value != ""}, None


def check_refusal(refusal, run, converter, output):
    problems = []
    told = run.stderr.decode().replace("\r\n", "\n")
    start = 0
    for message in refusal.messages:
        found = told.find(message, start)
        if found < 0:
            problems.append("not told: %r\n      but: %r" % (message, told))
            break
        start = found + len(message)
    if run.returncode != 1:
        problems.append("exit status %d instead of 1" % run.returncode)
    if run.stdout:
        problems.append("standard output: %r" % run.stdout)
    if os.path.exists(output):
        problems.append("an output workbook was left")
    if converter.logged() != refusal.logged:
        problems.append("log holds %r instead of %r" % (converter.logged(), refusal.logged))
    return problems


def check_campaign(campaign, converter, output):
    """Problems found, and the expected cells when there is an output to read back."""
    cells, refusal = expectation(campaign)
    expected = getattr(campaign, "refused", None)
    if expected is not None and expected != (refusal is not None):
        return ["the model does not %s it" % ("refuse" if expected else "accept")], None
    run = converter.run(campaign, output)
    if refusal:
        return check_refusal(refusal, run, converter, output), None
    problems = []
    if run.returncode != 0:
        return ["exit status %d: %r" % (run.returncode, run.stderr.decode())], None
    if run.stdout.decode() != output + "\n":
        problems.append("standard output: %r" % run.stdout)
    if converter.logged():
        problems.append("log holds %r" % converter.logged())
    return problems, cells


def sheet_name(campaign):
    folder = os.path.dirname(campaign.listed[0]) if campaign.listed else campaign.folder
    return re.sub(r"[\\/?*\[\]:]", "_", os.path.basename(folder))[:31]


def blurred(reader, cell):
    """A cell without what a reader does not tell."""
    kind, value = cell
    if reader == "parseexcel":
        if kind == "date":
            return ("number", value)
        if kind == "error":
            return ("text", next(name for name, code in readers.ERRORS.items() if code == value))
        if kind == "boolean":
            return ("text", "TRUE" if value else "FALSE")
    return cell


def differences(reader, expected, found):
    """Places where the cells that a reader found are not the expected ones."""
    tolerance = 0 if reader == "xlrd" else 1e-13
    places = []
    for place in sorted(expected.keys() | found.keys()):
        a, b = expected.get(place), found.get(place)
        if a and b:
            a, b = blurred(reader, a), blurred(reader, b)
            if a == b or a[0] == b[0] != "text" and math.isclose(a[1], b[1], rel_tol=tolerance):
                continue
        places.append("row %d, column %d: %r instead of %r" % (*place, b, a))
    return places


def read_back(finished):
    """Compares the outputs of all finished campaigns, reader by reader."""
    problems = []
    for reader in readers.installed():
        if reader == "openpyxl":  # the outputs are .xls
            continue
        books = readers.read(reader, [output for _, _, output in finished])
        for (campaign, cells, output), sheets in zip(finished, books):
            if isinstance(sheets, readers.Unread):
                problems.append("%s: %s says: %s" % (output, reader, sheets))
                continue
            if [name for name, _ in sheets] != [sheet_name(campaign)]:
                problems.append("%s: %s sees the sheets %r" % (output, reader, [name for name, _ in sheets]))
            for difference in differences(reader, cells, sheets[0][1])[:5]:
                problems.append("%s: %s reads %s" % (output, reader, difference))
    return problems


def main():
    parser = argparse.ArgumentParser(description="Compares korvex-convert with an independent model.")
    parser.add_argument("bin_dir")
    parser.add_argument("--campaigns", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--keep", action="store_true", help="keep the files")
    choices = parser.parse_args()

    root = tempfile.mkdtemp(prefix="korvex-campaigns-")
    converter = Converter(choices.bin_dir, root)
    chance = random.Random(choices.seed)
    programs = writers.installed()
    programs += [variant for variant in ("gnumeric-95", "xlwt-1904") if variant.split("-")[0] in programs]
    campaigns = [random_campaign(root, number, programs, chance) for number in range(choices.campaigns)]
    campaigns += refusals.campaigns(os.path.join(root, "refusals"), Campaign)
    write_files(campaigns)

    failed, finished, refused = [], [], 0
    for number, campaign in enumerate(campaigns):
        output = os.path.join(root, "out-%d.xls" % number)
        label = getattr(campaign, "condition", "%s (campaign %d)" % (campaign.folder, number))
        try:
            if hasattr(campaign, "prepare"):
                campaign.prepare(campaign.folder)
            problems, cells = check_campaign(campaign, converter, output)
        except Exception:
            problems, cells = [traceback.format_exc()], None
        if cells is not None:
            finished.append((campaign, cells, output))
        else:
            refused += 1
        failed += ["%s: %s" % (label, problem) for problem in problems]
    failed += read_back(finished)

    for failure in failed:
        print(failure)
    print("campaigns: %d finished, %d refused, %d problems (writers %s; readers %s)" % (
        len(finished), refused, len(failed), ", ".join(programs), ", ".join(readers.installed())))
    if choices.keep:
        print(root)
    else:
        shutil.rmtree(root)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
