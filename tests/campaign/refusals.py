"""One small campaign for every way in which a conversion is refused, and for some that only look so."""

import os

HEADERS = ["cell plate #", "cell plate wells ##", "compound ID", "Delta OD"]
STAMP = ("text", "12/03/2002 10:15")


def sheet(identities=("C1", "C2"), headers=HEADERS, stamp=STAMP, name="data"):
    rows = [[stamp], [("text", header) for header in headers]]
    for number, identity in enumerate(identities):
        rows.append([("number", 3), ("text", "A%02d" % number), ("text", identity), ("number", 0.5 + number)])
    return (name, rows)


def write_bytes(name, content):
    def prepare(folder):
        with open(os.path.join(folder, name), "wb") as file:
            file.write(content)
    return prepare


def add_folder(name):
    return lambda folder: os.makedirs(os.path.join(folder, name))


GOOD = {"S1/P1-3-1.xls": sheet()}

# condition: files, and what is different from the plain call
CONDITIONS = {
    # Folders
    "empty first sub-folder": (GOOD, {"prepare": add_folder("A")}),
    "empty second sub-folder": (GOOD, {"prepare": add_folder("T")}),
    "no sub-folders": ({}, {"prepare": add_folder("")}),
    "a sub-folder that holds folders only": (GOOD, {"prepare": add_folder("T/U")}),
    # File names
    "no replication number": ({"S1/P1-3-x.xls": sheet()}, {}),
    "nothing after the last hyphen": ({"S1/P1-3-.xls": sheet()}, {}),
    "replication number beyond 16 bits": ({"S1/P1-3-32768.xls": sheet()}, {}),
    "second file without replication number": (dict(GOOD, **{"S1/P2.xls": sheet()}), {}),
    "day number is a word": ({"S1/P1-2.xls": sheet()}, {"columns": ["day_num"]}),
    "day number is a word, not asked for": ({"S1/P1-2.xls": sheet()}, {"refused": False}),
    "one field only, day number asked for": ({"S1/2.xls": sheet()}, {"keys": ["compound ID", "DAY_NUM"]}),
    "day number beyond 16 bits": ({"S1/P-40000-2.xls": sheet()}, {"columns": ["day_num"]}),
    "replication numbers written unusually": (
        {"S1/P-3-02.xls": sheet(), "S1/Q-3-1e0.xls": sheet(), "S1/R-3-3.5.xls": sheet()},
        {"columns": ["compound ID"], "refused": False}),
    "replication without a letter": ({"S1/P-3-200.xls": sheet()}, {}),
    "replication beyond the columns": ({"S1/P-3-190.xls": sheet()}, {"columns": ["compound ID"], "refused": False}),
    "replications that share a letter in other case": (
        {"S1/P-3-1.xls": sheet(("C1",)), "S1/P-3-33.xls": sheet(("C2",))}, {"refused": False}),
    "replications that share a letter and a key": (
        {"S1/P-3-1.xls": sheet(("C1",)), "S1/P-3-33.xls": sheet(("C1",))}, {}),
    # Date
    "date without a time": ({"S1/P1-3-1.xls": sheet(stamp=("text", "12/03/2002"))}, {"columns": ["Date"]}),
    "date cell at midnight": ({"S1/P1-3-1.xls": sheet(stamp=("date", 37593))}, {"keys": ["compound ID", "date"]}),
    "no date": ({"S1/P1-3-1.xls": sheet(stamp=("empty", None))}, {"columns": ["DATE"]}),
    "no date, not asked for": ({"S1/P1-3-1.xls": sheet(stamp=("empty", None))}, {"refused": False}),
    "date that starts with a blank": (
        {"S1/P1-3-1.xls": sheet(stamp=("text", " 12/03/2002"))}, {"columns": ["Date"], "refused": False}),
    "error in the place of the date": (
        {"S1/P1-3-1.xls": sheet(stamp=("error", 42))}, {"columns": ["Date"], "refused": False}),
    # Keys
    "key twice in a sheet": ({"S1/P1-3-1.xls": sheet(("C1", "C2", "C1"))}, {}),
    "key twice in a sheet in other case": ({"S1/P1-3-1.xls": sheet(("Жβé", "жΒÉ"))}, {}),
    "key twice in a sheet of a later file": (
        dict(GOOD, **{"S2/P1-3-2.xls": sheet(("C1", "C1"))}), {}),
    "key and replication twice": (dict(GOOD, **{"S1/P2-3-1.xls": sheet(("C9", "c2"))}), {}),
    "key and replication twice in another sub-folder": (dict(GOOD, **{"S2/P1-3-1.xls": sheet(("C2",))}), {}),
    "no key columns": (GOOD, {"keys": []}),
    "no key columns and one row": ({"S1/P1-3-1.xls": sheet(("C1",))}, {"keys": [], "refused": False}),
    # Structure
    "key column missing": (GOOD, {"keys": ["compound ID", "Plate"]}),
    "output column missing": (GOOD, {"columns": ["compound ID", "Plate"]}),
    "data column missing": (GOOD, {"data": "OD"}),
    "key column missing in a later file": (
        dict(GOOD, **{"S1/P2-3-2.xls": sheet(("C9",), headers=["cell plate #", "well", "compound ID", "Delta OD"])}),
        {"keys": ["compound ID", "cell plate wells ##"], "refused": False}),
    "output column missing in a later file": (
        dict(GOOD, **{"S1/P2-3-2.xls": sheet(("C9",), headers=["cell plate #", "well", "compound ID", "Delta OD"])}),
        {"columns": ["cell plate wells ##", "compound ID", "cell plate #"], "refused": False}),
    "data column missing in a later file": (
        dict(GOOD, **{"S1/P2-3-2.xls": sheet(("C9",), headers=["cell plate #", "well", "compound ID", "OD"])}), {}),
    "column twice": ({"S1/P1-3-1.xls": sheet(headers=["cell plate #", "Well", "compound ID", "WELL"])}, {}),
    "column named like the file name": (
        {"S1/P1-3-1.xls": sheet(headers=["filename", "Well", "compound ID", "Delta OD"])}, {}),
    "column twice in a later file": (
        dict(GOOD, **{"S1/P2-3-2.xls": sheet(headers=["cell plate #", "DATE", "compound ID", "Delta OD"])}), {}),
    "header behind a gap": (
        {"S1/P1-3-1.xls": sheet(headers=["cell plate #", " ", "compound ID", "Delta OD"])}, {}),
    "no header row": ({"S1/P1-3-1.xls": ("data", [[("number", 1)], [("number", 2)]])}, {}),
    "no header row in a later file": (
        dict(GOOD, **{"S1/P2-3-2.xls": ("data", [[("number", 1)], [("number", 2)]])}), {}),
    "empty data sheet": ({"S1/P1-3-1.xls": ("data", [])}, {}),
    "text below the table": (dict(GOOD, **{"S1/P2-3-2.xls": (
        "data", sheet(("C9",))[1] + [[("text", "mean")]])}), {}),
    # Workbooks
    "no data sheet": ({"S1/P1-3-1.xls": sheet(name="Sheet1")}, {}),
    "no data sheet in a later file": (dict(GOOD, **{"S1/P1-3-2.xls": sheet(name="dat a")}), {}),
    "not a workbook": (GOOD, {"prepare": write_bytes("S1/A.xls", bytes(range(256)) * 8)}),
    "not a workbook later": (GOOD, {"prepare": write_bytes("S1/Z-1-2.xls", b"\x00\x01 no workbook \x02" * 40)}),
    "empty file": (GOOD, {"prepare": write_bytes("S1/Z-1-2.xls", b"")}),
    "damaged workbook": (GOOD, {"prepare": write_bytes(
        "S1/Z-1-2.xls", b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1" + b"\x00" * 504)}),
    # Columns
    "gap of six replications": (
        {"S1/P1-3-1.xls": sheet(), "S1/P1-3-9.xls": sheet()}, {"columns": ["compound ID"], "refused": False}),
    "replication of a later batch on a moved column": (
        {"S1/P1-3-1.xls": sheet(), "S1/P1-3-3.xls": sheet(), "S2/P1-3-2.xls": sheet()}, {"columns": ["compound ID"]}),
    "replication of a later batch on an extra column": (
        {"S1/P1-3-1.xls": sheet(), "S2/P1-3-2.xls": sheet(), "S3/P1-3-4.xls": sheet()},
        {"columns": ["compound ID"], "refused": False}),
    "more sub-folders than extra headers fit": (
        {"S%02d/P1-3-1.xls" % number: sheet(("C%d" % number,)) for number in range(43)}, {}),
    "as many sub-folders as extra headers fit": (
        {"S%02d/P1-3-1.xls" % number: sheet(("C%d" % number,)) for number in range(40)}, {"refused": False}),
}


def campaigns(root, campaign_class):
    made = []
    for number, (condition, (files, changes)) in enumerate(CONDITIONS.items()):
        campaign = campaign_class(os.path.join(root, "%02d" % number, "Run"))
        campaign.condition = condition
        campaign.refused = changes.get("refused", True)
        campaign.keys = changes.get("keys", ["compound ID"])
        campaign.columns = changes.get("columns", ["compound ID", "cell plate #"])
        campaign.data = changes.get("data", "Delta OD")
        campaign.files = [(os.path.join(campaign.folder, path), "xlwt", [content]) for path, content in files.items()]
        if "prepare" in changes:
            campaign.prepare = changes["prepare"]
        made.append(campaign)
        if files and "prepare" not in changes:
            made.append(listed(campaign, campaign_class))
    return made


def listed(campaign, campaign_class):
    """The same files, given one by one."""
    twin = campaign_class(campaign.folder + " files")
    twin.condition = campaign.condition + ", files given"
    twin.keys, twin.columns, twin.data = campaign.keys, campaign.columns, campaign.data
    twin.files = [(path.replace(campaign.folder, twin.folder), *rest) for path, *rest in campaign.files]
    twin.listed = [path for path, _, _ in twin.files]
    return twin
