"""Reads workbooks through other programs.

`read(reader, paths)` gives for each path its sheets as (name, {(row, column): cell}),
or an Unread that says why there are none. Rows and columns count from 1; cells are
(kind, value) like those of tests/campaign/xlrd_convert.py, dates days since 1899-12-30.
Empty cells and empty texts are left out; numbers that no date of the years 1900 to
9999 has are numbers, whatever their format.
"""

import contextlib
import datetime
import json
import os
import re
import shutil
import signal
import subprocess
import tempfile
import warnings

ERRORS = {"#NULL!": 0, "#DIV/0!": 7, "#VALUE!": 15, "#REF!": 23, "#NAME?": 29, "#NUM!": 36, "#N/A": 42}
FROM_1904 = 1462  # days between the two date systems
SECONDS = 60  # that a reader may take for a file; Python's readers, of the processor
BATCH = 20  # files that one LibreOffice converts


class Unread(str):
    """Why a reader gives no cells."""


def installed():
    found = [module for module in ("xlrd", "openpyxl") if has_module(module)]
    if shutil.which("soffice") and "openpyxl" in found:
        found.append("libreoffice")
    if shutil.which("ssconvert") and "openpyxl" in found:
        found.append("gnumeric")
    if subprocess.run(["perl", "-MSpreadsheet::ParseExcel", "-e1"], stderr=subprocess.DEVNULL).returncode == 0:
        found.append("parseexcel")
    return found


def has_module(name):
    try:
        __import__(name)
        return True
    except ImportError:
        return False


def read(reader, paths):
    return {"xlrd": with_xlrd, "openpyxl": with_openpyxl, "libreoffice": with_libreoffice,
            "gnumeric": with_gnumeric, "parseexcel": with_parseexcel}[reader](paths)


@contextlib.contextmanager
def time_limit():
    def stop(*_):
        raise TimeoutError("takes more than %d seconds" % SECONDS)

    signal.signal(signal.SIGPROF, stop)
    signal.setitimer(signal.ITIMER_PROF, SECONDS)
    try:
        yield
    finally:
        signal.setitimer(signal.ITIMER_PROF, 0)


def one_by_one(read_book, paths):
    books = []
    for path in paths:
        try:
            with time_limit(), warnings.catch_warnings():
                warnings.simplefilter("ignore")
                books.append(read_book(path))
        except Exception as error:
            books.append(Unread("%s: %s" % (type(error).__name__, error)))
    return books


def with_xlrd(paths):
    return one_by_one(xlrd_book, paths)


def xlrd_book(path):
    import xlrd
    kinds = {1: "text", 2: "number", 3: "date", 4: "boolean", 5: "error"}
    book = xlrd.open_workbook(path, logfile=open(os.devnull, "w"))

    def typed(cell):
        if cell.ctype == 3:
            return date_cell(cell.value, FROM_1904 * book.datemode)
        return (kinds[cell.ctype], bool(cell.value) if cell.ctype == 4 else cell.value)

    return [(sheet.name, {(row + 1, column + 1): typed(cell)
                          for row in range(sheet.nrows) for column, cell in enumerate(sheet.row(row))
                          if cell.ctype in kinds and cell.value != ""})
            for sheet in book.sheets()]


def date_cell(number, shift):
    return ("date", number + shift) if 0 <= number + shift < 2958466 else ("number", number)


def with_openpyxl(paths):
    return one_by_one(openpyxl_book, paths)


def openpyxl_book(path, writer=None):
    """Cells as the file holds them, dates unconverted: openpyxl's own dates lose digits.

    A formula without a result is #N/A, as in ours. `writer` is what a workbook was converted by.
    """
    import openpyxl
    from openpyxl.styles import stylesheet
    stylesheet.is_date_format = shows_date
    sheets = []
    with open(path, "rb") as file:
        book = openpyxl.load_workbook(file, read_only=True, data_only=True)
        shift = FROM_1904 if book.epoch.year == 1904 else 0
        for sheet in book.worksheets:
            cells, without_value = {}, set()
            for place, cell in parsed_cells(sheet, writer):
                value = openpyxl_cell(cell, book._date_formats, shift)
                if value is not None:
                    cells[place] = value
                elif cell["data_type"] == "n" and not writer:
                    without_value.add(place)
            for place, cell in parsed_cells(sheet, writer, formulas=True) if without_value else ():
                if place in without_value and cell["data_type"] == "f":
                    cells[place] = ("error", ERRORS["#N/A"])
            sheets.append((sheet.title, cells))
    if not sheets:
        raise ValueError("no sheets")
    return sheets


def shows_date(format):
    """openpyxl's own rule overlooks formats of one letter and takes "0_h" for one."""
    format = re.sub(r'"[^"]*"|\\.|_.|\*.|\[(?!h+\]|m+\]|s+\])[^]]*\]', "", format or "", flags=re.IGNORECASE)
    return format.lower() != "general" and re.search("[dmyhs]", format, re.IGNORECASE) is not None


def parsed_cells(sheet, writer, formulas=False):
    """Places and cells, these with their results or their formulas."""
    from openpyxl.worksheet import _reader
    with sheet._get_source() as source:
        parser = _reader.WorkSheetParser(source, sheet._shared_strings, data_only=not formulas)
        for _, row in parser.parse():
            for cell in row:
                # Gnumeric leaves out the format that the whole column has.
                if writer == "gnumeric" and cell["style_id"] == 0 and cell["value"] is not None:
                    cell["style_id"] = column_format(parser.column_dimensions.values(), cell["column"])
                yield (cell["row"], cell["column"]), cell


def column_format(columns, number):
    return next((int(column.get("style", 0)) for column in columns
                 if int(column["min"]) <= number <= int(column["max"])), 0)


def openpyxl_cell(cell, date_formats, shift):
    value, kind = cell["value"], cell["data_type"]
    if value is None or value == "":
        return None
    if kind == "n":
        return date_cell(float(value), shift) if cell["style_id"] in date_formats else ("number", float(value))
    if kind == "b":
        return ("boolean", value)
    if kind == "e":
        return ("error", ERRORS.get(value, 15))
    if kind == "d":
        from openpyxl.utils.datetime import to_excel
        return ("date", float(to_excel(value)))
    return ("text", unescaped(value))


def unescaped(text):
    text = re.sub("_x([0-9A-Fa-f]{4})_", lambda code: chr(int(code[1], 16)), text)
    return text.encode("utf-16", "surrogatepass").decode("utf-16", "replace")


def with_libreoffice(paths):
    with tempfile.TemporaryDirectory() as folder:
        copies = []
        for number, path in enumerate(paths):
            copies.append("%s/%d%s" % (folder, number, os.path.splitext(path)[1]))
            shutil.copy(path, copies[-1])
        for start in range(0, len(copies), BATCH):
            convert_batch(folder, copies[start:start + BATCH])
        return converted_books("libreoffice", ["%s/out/%d.xlsx" % (folder, number) for number in range(len(paths))])


def convert_batch(folder, sources):
    """A file that takes too long, or LibreOffice with it, is left out; those after it are not."""
    command = ["soffice", "-env:UserInstallation=file://%s/profile" % folder, "--headless", "--convert-to",
               "xlsx:Calc MS Excel 2007 XML", "--outdir", folder + "/out"]
    while sources:
        try:
            done = subprocess.run(command + sources, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                  timeout=SECONDS + 5 * len(sources)).returncode == 0
        except subprocess.TimeoutExpired:
            done = False
        outputs = [os.path.exists("%s/out/%s.xlsx" % (folder, os.path.basename(source).split(".")[0]))
                   for source in sources]
        if done or not any(outputs) and len(sources) == 1:
            return
        last = max((number for number, there in enumerate(outputs) if there), default=-1)
        sources = sources[last + 2:]


def converted_books(writer, targets):
    return [one_by_one(lambda path: openpyxl_book(path, writer), [target])[0] if os.path.exists(target)
            else Unread("does not load it") for target in targets]


def with_gnumeric(paths):
    with tempfile.TemporaryDirectory() as folder:
        targets = []
        for number, path in enumerate(paths):
            targets.append("%s/%d.xlsx" % (folder, number))
            with contextlib.suppress(subprocess.TimeoutExpired):
                subprocess.run(["ssconvert", "--export-type=Gnumeric_Excel:xlsx2", path, targets[-1]],
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=SECONDS)
        return converted_books("gnumeric", targets)


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
