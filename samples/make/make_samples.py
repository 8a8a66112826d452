#!/usr/bin/python3
"""Makes samples/campaign: a growth-inhibition screen in 96- and 384-well plates, and
samples/flawed, whose first sub-folder lacks the second reading.

    samples/make/make_samples.py [campaign|flawed]...

Every library plate is read three times, and each reading comes from another
program, as instruments and colleagues have it. The content follows from the
seed; the bytes also carry each program's time stamps.
"""

import datetime
import os
import random
import shutil
import string
import sys

import writers

HERE = os.path.dirname(os.path.abspath(__file__))
SEED = 20021203

HEADERS = ["cell plate #", "cell plate wells ##", "compound ID", "compound #", "conc (\u00b5M)",
           "OD 0 h", "OD 24 h", "Delta OD", "remarks"]

# sub-folder, library plate, cell plate number, day, wells, first reading (serial), writer of each replication
PLATES = [
    ("Set 1 kinase inhibitors", "KIN01", 1041, 1, 96, 37593.427083333336, ("libreoffice", "gnumeric", "xlwt")),
    ("Set 1 kinase inhibitors", "KIN02", 1042, 1, 96, 37593.458333333336, ("writeexcel", "libreoffice", "gnumeric")),
    ("Set 2 natural products", "NAT07", 1057, 2, 96, 37594.395833333336, ("xlwt", "writeexcel", "libreoffice")),
    ("Set 2 natural products", "NAT08", 1058, 2, 96, 37594.479166666664, ("gnumeric", "xlwt", "writeexcel")),
    ("Set 3 fragments", "FRG384", 1101, 3, 384, 37595.604166666664, ("writeexcel", "gnumeric", "libreoffice")),
]

# The same; None for a reading that is not there.
FLAWED = [
    ("Set 1 antibiotics", "ABX01", 1201, 1, 96, 37600.40625, ("xlwt", None, "writeexcel")),
    ("Set 2 antifungals", "AFG01", 1202, 2, 96, 37601.385416666664, ("writeexcel", "xlwt", "writeexcel")),
]

# name: plates, and the chance of a data cell that holds no number
CAMPAIGNS = {"campaign": (PLATES, 0.014), "flawed": (FLAWED, 0)}

REMARKS = ["edge well", "precipitate", "bubble", "re-pipetted", "\u03b2-form, see batch sheet", "colour interferes"]


def wells(count):
    rows, columns = (8, 12) if count == 96 else (16, 24)
    return ["%s%02d" % (row, column) for row in string.ascii_uppercase[:rows] for column in range(1, columns + 1)]


def compound_id(library, well, number):
    if library.startswith("NAT"):
        return "%d%s" % (int(library[3:]), well)  # box and position: "7E05" is no number
    return "%s-%06d" % (library[:3], number)


def plate_content(plate, chance):
    """What lies in each well, the same in every replication."""
    _, library, cell_plate, _, count, _, _ = plate
    content = []
    for position, well in enumerate(wells(count)):
        number = cell_plate * 10 + position
        if well[1:] == "01":
            identity, strength = "DMSO", 0.0
        elif well[1:] == "02" and count == 96:
            identity, strength = "tetracycline", 0.95
        else:
            identity = compound_id(library, well, number)
            strength = max(0.0, min(1.0, chance.gauss(0.04, 0.05))) if chance.random() > 0.06 else chance.uniform(0.4, 1)
        content.append((well, identity, number, strength))
    return content


def data_rows(plate, content, no_number, chance):
    _, _, cell_plate, _, count, _, _ = plate
    drift = chance.uniform(0.94, 1.06)
    rows = []
    for well, identity, number, strength in content:
        start = round(chance.gauss(0.082, 0.004), 3)
        growth = chance.gauss(0.74, 0.03) * drift * (1 - strength) + abs(chance.gauss(0, 0.006))
        end = round(start + growth, 3)
        line = len(rows) + 3
        delta = ("formula", ("G%d-F%d" % (line, line), end - start))
        event = chance.random()
        if event >= no_number:
            pass
        elif event < 0.004:
            delta = ("error", chance.choice([7, 42]))
        elif event < 0.008:
            delta = ("text", "OVRFLW")
        else:
            delta = ("empty", None)
        rows.append([
            ("number", cell_plate), ("text", well), ("text", identity),
            ("empty", None) if identity == "DMSO" else ("number", number),
            ("empty", None) if identity == "DMSO" else ("number", 2.5 if count == 384 else 10),
            ("number", start), ("number", end), delta,
            ("text", chance.choice(REMARKS)) if chance.random() < 0.03 else ("empty", None)])
    return rows


def workbook(plate, replication, content, no_number, chance):
    _, library, cell_plate, day, count, read_at, programs = plate
    read_at += (replication - 1) * 7 / 1440 + chance.randrange(60) / 86400
    if programs[replication - 1] in ("libreoffice", "gnumeric"):
        stamp = ("date", read_at)
    else:
        stamp = ("text", (writers.EPOCH + datetime.timedelta(days=read_at)).strftime("%m/%d/%Y %H:%M"))
    protocol = [[("text", "Growth inhibition, 24 h, 30 \u00b0C")],
                [("text", "library plate"), ("text", library)],
                [("text", "cell plate"), ("number", cell_plate)],
                [("text", "format"), ("text", "%d wells" % count)],
                [("text", "read at"), ("date", read_at)],
                [("text", "shaken"), ("boolean", True)],
                [("text", "operator"), ("text", chance.choice(["M. S\u00f8rby", "J. Okafor", "\u00c9. Lambert"]))]]
    note = [stamp, ("empty", None), ("text", "plate reader export, 600 nm; replication %d of 3" % replication)]
    data = [note, [("text", name) for name in HEADERS]] + data_rows(
        plate, content, no_number, chance)
    return [("protocol", protocol), ("data", data)]


def make(name):
    plates, no_number = CAMPAIGNS[name]
    root = os.path.join(HERE, "..", name)
    shutil.rmtree(root, ignore_errors=True)
    chance = random.Random(SEED)
    jobs = {}
    for plate in plates:
        folder = os.path.join(root, plate[0])
        os.makedirs(folder, exist_ok=True)
        content = plate_content(plate, chance)
        for replication in (1, 2, 3):
            program = plate[6][replication - 1]
            if program is None:
                continue
            path = os.path.join(folder, "%s-%d-%d.xls" % (plate[1], plate[3], replication))
            jobs.setdefault(program, []).append((path, workbook(plate, replication, content, no_number, chance)))
    for program, workbooks in jobs.items():
        writers.write(program, workbooks)


def main():
    missing = {"libreoffice", "gnumeric", "xlwt", "writeexcel"} - set(writers.installed())
    if missing:
        raise SystemExit("These writers are not installed: " + ", ".join(sorted(missing)))
    for name in sys.argv[1:] or CAMPAIGNS:
        make(name)


if __name__ == "__main__":
    main()
