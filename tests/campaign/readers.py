"""Reads .xls workbooks back through programs that did not write them.

`read(reader, paths)` gives for each path its sheets as (name, {(row, column): cell}),
rows and columns from 1, cells as (kind, value) like those of bench/xlrd_convert.py.
Empty cells and empty texts are left out.
"""

import datetime
import gzip
import json
import math
import os
import shutil
import subprocess
import tempfile
import xml.etree.ElementTree as ET

ERRORS = {"#NULL!": 0, "#DIV/0!": 7, "#VALUE!": 15, "#REF!": 23, "#NAME?": 29, "#NUM!": 36, "#N/A": 42}
EPOCH = datetime.datetime(1899, 12, 30)


def installed():
    found = ["xlrd"]
    if shutil.which("soffice"):
        found.append("libreoffice")
    if shutil.which("ssconvert"):
        found.append("gnumeric")
    if subprocess.run(["perl", "-MSpreadsheet::ParseExcel", "-e1"], stderr=subprocess.DEVNULL).returncode == 0:
        found.append("parseexcel")
    return found


def blurred(reader, cell):
    """A cell without what a reader does not tell."""
    kind, value = cell
    if reader == "libreoffice" and kind == "boolean":
        return ("number", value)
    if reader == "parseexcel":
        if kind == "date":
            return ("number", value)
        if kind == "error":
            return ("text", next(name for name, code in ERRORS.items() if code == value))
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


def read(reader, paths):
    if not paths:
        return []
    return {"xlrd": with_xlrd, "libreoffice": with_libreoffice, "gnumeric": with_gnumeric,
            "parseexcel": with_parseexcel}[reader](paths)


def with_xlrd(paths):
    import xlrd
    kinds = {1: "text", 2: "number", 3: "date", 4: "boolean", 5: "error"}
    books = []
    for path in paths:
        book = xlrd.open_workbook(path)
        books.append([(sheet.name, {(row + 1, column + 1): (kinds[cell.ctype], cell.value)
                                    for row in range(sheet.nrows) for column, cell in enumerate(sheet.row(row))
                                    if cell.ctype in kinds and cell.value != ""})
                      for sheet in book.sheets()])
    return books


def with_parseexcel(paths):
    script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "read_workbooks.pl")
    result = subprocess.run(["perl", script] + paths, check=True, stdout=subprocess.PIPE)
    books = []
    for sheets in json.loads(result.stdout):
        books.append([(name, {(row, column): parsed_cell(kind, value) for row, column, kind, value in cells})
                      for name, cells in sheets])
    return books


def parsed_cell(kind, value):
    if kind == "Text":
        value = value.encode("utf-16", "surrogatepass").decode("utf-16")
        return ("text", "#N/A" if value == "#N/A!" else value)  # its own spelling of the error
    return ("date" if kind == "Date" else "number", float(value))


def with_libreoffice(paths):
    with tempfile.TemporaryDirectory() as folder:
        sources = []
        for number, path in enumerate(paths):
            sources.append("%s/%d.xls" % (folder, number))
            shutil.copy(path, sources[-1])
        subprocess.run(["soffice", "-env:UserInstallation=file://%s/profile" % folder, "--headless", "--convert-to",
                        "fods", "--outdir", folder] + sources,
                       check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return [flat_document("%s/%d.fods" % (folder, number)) for number in range(len(paths))]


OFFICE = "{urn:oasis:names:tc:opendocument:xmlns:office:1.0}"
TABLE = "{urn:oasis:names:tc:opendocument:xmlns:table:1.0}"
TEXT = "{urn:oasis:names:tc:opendocument:xmlns:text:1.0}"


def flat_document(path):
    sheets = []
    for table in ET.parse(path).iter(TABLE + "table"):
        cells, row = {}, 1
        for line in table.iter(TABLE + "table-row"):
            column = 1
            for cell in line:
                value = flat_cell(cell)
                repeat = int(cell.get(TABLE + "number-columns-repeated", 1))
                if value is not None:
                    cells.update({(row, column + i): value for i in range(repeat)})
                column += repeat
            repeat = int(line.get(TABLE + "number-rows-repeated", 1))
            for above in range(1, min(repeat, 1000)):
                cells.update({(row + above, at[1]): value for at, value in list(cells.items()) if at[0] == row})
            row += repeat
        sheets.append((table.get(TABLE + "name"), cells))
    return sheets


def flat_cell(cell):
    kind = cell.get(OFFICE + "value-type")
    text = "\n".join(flat_text(line) for line in cell.findall(TEXT + "p"))
    if text in ERRORS and cell.get(TABLE + "formula"):
        return ("error", ERRORS[text])
    if kind == "float":
        return ("number", float(cell.get(OFFICE + "value")))
    if kind == "boolean":
        return ("boolean", cell.get(OFFICE + "boolean-value") == "true")
    if kind == "date":
        when = datetime.datetime.fromisoformat(cell.get(OFFICE + "date-value")[:26])
        return ("date", (when - EPOCH) / datetime.timedelta(days=1))
    return ("text", text) if text else None


def flat_text(element):
    parts = [element.text or ""]
    for child in element:
        if child.tag == TEXT + "s":
            parts.append(" " * int(child.get(TEXT + "c", 1)))
        elif child.tag == TEXT + "tab":
            parts.append("\t")
        elif child.tag == TEXT + "line-break":
            parts.append("\n")
        else:
            parts.append(flat_text(child))
        parts.append(child.tail or "")
    return "".join(parts)


GNUMERIC = "{http://www.gnumeric.org/v10.dtd}"


def with_gnumeric(paths):
    books = []
    with tempfile.TemporaryDirectory() as folder:
        target = folder + "/book.gnumeric"
        for path in paths:
            subprocess.run(["ssconvert", "--export-type=Gnumeric_XmlIO:sax", path, target],
                           check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            with gzip.open(target) as file:
                root = ET.parse(file).getroot()
            books.append([(sheet.findtext(GNUMERIC + "Name"), gnumeric_cells(sheet))
                          for sheet in root.iter(GNUMERIC + "Sheet")])
    return books


def gnumeric_cells(sheet):
    date_cells = set()
    for region in sheet.iter(GNUMERIC + "StyleRegion"):
        if "yy" in region.find(GNUMERIC + "Style").get("Format", "").lower():
            rows = range(int(region.get("startRow")), min(int(region.get("endRow")) + 1, 65536))
            columns = range(int(region.get("startCol")), int(region.get("endCol")) + 1)
            date_cells.update((row, column) for row in rows for column in columns)
    cells = {}
    for cell in sheet.iter(GNUMERIC + "Cell"):
        at = (int(cell.get("Row")), int(cell.get("Col")))
        kind, text = cell.get("ValueType"), cell.text or ""
        if kind == "20":
            value = ("boolean", text == "TRUE")
        elif kind in ("30", "40"):
            value = ("date" if at in date_cells else "number", float(text))
        elif kind == "50":
            value = ("error", ERRORS[text])
        else:
            value = ("text", text)
        if value[1] != "":
            cells[at[0] + 1, at[1] + 1] = value
    return cells
