#!/usr/bin/python3
"""The conversion as a laboratory would script it: xlrd reads, xlwt writes.

Takes the choices of korvex-convert and makes the same output workbook, cell by
cell, refusing the same campaigns with the same texts on standard error:

    xlrd_convert.py -k KEY... -c COLUMN... -d DATA -o OUTPUT FOLDER
    xlrd_convert.py -k KEY... -c COLUMN... -d DATA -o OUTPUT --files FILE...

It shares no code with the programs, so that it serves both as the yardstick of
the speed measurements and as the model that the campaign checks compare with.
"""

import argparse
import collections
import datetime
import decimal
import math
import os
import re
import sys

import xlrd
import xlwt

LAST_HEADER_COLUMN = 387  # how far the header row is walked
EMPTY_RUN = 6             # so many empty headers in a row end the walk
SHEET_ROWS, SHEET_COLUMNS = 65536, 256
LAST_REPLICATION = 191    # whose letter has the last code

RENAMED_HEADERS = {
    "CELL PLATE #": "plate_96",
    "CELL PLATE WELLS ##": "well_96",
    "COMPOUND ID": "chem_id",
    "COMPOUND #": "chem_num",
}
EXTRA_HEADERS = ["screen_num", "row_num", "vic_num", "plate_384", "well_384", "plate_id"]
PSEUDO_COLUMNS = ["Filename", "Date", "day_num"]

LOGGED = "The Error has been written to a log file."

# kind: empty, number, date (a serial since 1899-12-30), boolean, error (a code), text
Cell = collections.namedtuple("Cell", "kind value")
EMPTY = Cell("empty", None)


class Failure(Exception):
    """An error with its number; 17 says that the user has been told already."""

    def __init__(self, number, description=""):
        super().__init__(description)
        self.number = number


class Refused(Exception):
    """The run ended: what the user was told, and which errors went to the log."""

    def __init__(self, messages, logged):
        super().__init__("\n".join(messages))
        self.messages = messages
        self.logged = logged  # (number, location)


# Texts

def upper(text):
    """Upper case letter by letter: a letter without a single capital stays."""
    return "".join(c.upper() if len(c.upper()) == 1 else c for c in text)


def number_text(number):
    """At most 15 significant digits; an exponent where fixed notation is too long."""
    if number == 0:
        return "0"
    mantissa, exponent = ("%.14E" % abs(number)).split("E")
    digits, exponent = mantissa.replace(".", "").rstrip("0"), int(exponent)
    sign = "-" if number < 0 else ""
    decimals = len(digits) - 1 - exponent
    if exponent > 14 or decimals > 15:
        fraction = "." + digits[1:] if len(digits) > 1 else ""
        return "%s%s%sE%+03d" % (sign, digits[0], fraction, exponent)
    if exponent < 0:
        return sign + "0." + digits.rjust(decimals, "0")
    digits = digits.ljust(exponent + 1, "0")
    whole, fraction = digits[:exponent + 1], digits[exponent + 1:]
    return sign + whole + ("." + fraction if fraction else "")


def date_text(serial):
    days = int(serial)
    seconds = math.floor(abs(serial - days) * 86400 + 0.5)
    if seconds == 86400:
        days, seconds = days + (1 if serial >= 0 else -1), 0
    parts = []
    if days != 0:
        date = datetime.date(1899, 12, 30) + datetime.timedelta(days=days)
        parts.append("%d/%d/%d" % (date.month, date.day, date.year))
    if seconds or not parts:
        hour, minute, second = seconds // 3600, seconds // 60 % 60, seconds % 60
        parts.append("%d:%02d:%02d %s" % (hour % 12 or 12, minute, second, "AM" if hour < 12 else "PM"))
    return " ".join(parts)


def cell_text(cell):
    if cell.kind == "number":
        return number_text(cell.value)
    if cell.kind == "date":
        return date_text(cell.value)
    if cell.kind == "boolean":
        return "True" if cell.value else "False"
    if cell.kind == "error":
        return "Error %d" % (2000 + cell.value)
    return cell.value or ""


def is_blank(cell):
    return not cell_text(cell).strip(" ")


NUMBER = re.compile(r"([+-]?)\$?((?:\d[\d,]*(?:\.\d*)?|\.\d+)(?:[eEdD][+-]?\d+)?)([+-]?)")


def parse_number(text):
    """The number that a text reads as, or None."""
    text = text.strip(" ")
    if re.fullmatch("&[hH][0-9a-fA-F]+", text):
        return float(int(text[2:], 16))
    negative = text.startswith("(") and text.endswith(")")
    match = NUMBER.fullmatch(text[1:-1].strip(" ") if negative else text)
    if not match or (match[1] and match[3]) or (negative and (match[1] or match[3])):
        return None
    number = float(match[2].replace(",", "").lower().replace("d", "e"))
    if math.isinf(number):
        return None
    return -number if negative or "-" in (match[1], match[3]) else number


def to_int16(text):
    number = parse_number(text)
    if number is None:
        raise Failure(13, "Type mismatch")
    number = int(decimal.Decimal(number).to_integral_value(decimal.ROUND_HALF_EVEN))
    if not -32768 <= number <= 32767:
        raise Failure(6, "Overflow")
    return number


def is_numeric(cell):
    if cell.kind == "text":
        return parse_number(cell.value) is not None
    return cell.kind in ("number", "boolean", "empty")


def cell_from_text(text):
    """What a cell becomes when a text is written into it."""
    if re.fullmatch(r"-?\d+(\.\d+)?", text, re.ASCII) and number_text(float(text)) == text:
        return Cell("number", float(text))
    return Cell("text", text) if text else EMPTY


# Paths

def shorten_path(folder):
    parent, name = os.path.split(folder)
    if folder != "/" and parent != "/":
        folder = "/.../%s/%s" % (os.path.basename(parent), name)
    return folder if folder.endswith("/") else folder + "/"


def display_path(full_name):
    folder, name = os.path.split(full_name)
    return shorten_path(folder) + name


def base_name(full_name):
    name, dot, _ = os.path.basename(full_name).rpartition(".")
    return name if dot else os.path.basename(full_name)


def replication_of(full_name):
    try:
        return to_int16(base_name(full_name).split("-")[-1])
    except Failure:
        return None


def replication_letter(replication):
    if not 0 <= 64 + replication <= 255:
        raise Failure(5, "Replication %d has no letter, which the header of its column would be. Number the replications "
                         "from 1 to 191, or take the long form, which has a row for every reading." % replication)
    return bytes([64 + replication]).decode("cp1252", "replace")


def listing(folder, wanted):
    """Full names of the files or sub-folders of a folder, in their fixed order."""
    names = sorted(os.listdir(folder), key=lambda name: upper(name).encode())
    return [path for path in (os.path.join(folder, name) for name in names) if wanted(path)]


# Reading

class DataSheet:
    """The worksheet "data" of one workbook; rows and columns count from 1."""

    def __init__(self, full_name):
        self.full_name = full_name
        try:
            book = xlrd.open_workbook(full_name, logfile=open(os.devnull, "w"))
        except Exception as error:  # xlrd raises whatever comes up in a damaged file
            raise Failure(1004, str(error))
        self.days_off = 1462 if book.datemode else 0
        names = [upper(name) for name in book.sheet_names()]
        if "DATA" not in names:
            raise Failure(9, "Subscript out of range")
        self.index, self.sheet_count = names.index("DATA") + 1, book.nsheets
        self.sheet = book.sheet_by_index(self.index - 1)

    def cell(self, row, column):
        if row < 1 or column < 1 or row > SHEET_ROWS or column > SHEET_COLUMNS:
            raise Failure(1004, "No such cell")
        if row > self.sheet.nrows or column > self.sheet.ncols:
            return EMPTY
        cell = self.sheet.cell(row - 1, column - 1)
        if cell.ctype == xlrd.XL_CELL_TEXT:
            return Cell("text", cell.value)
        if cell.ctype == xlrd.XL_CELL_NUMBER:
            return Cell("number", cell.value)
        if cell.ctype == xlrd.XL_CELL_DATE:
            return Cell("date", cell.value + self.days_off)
        if cell.ctype == xlrd.XL_CELL_BOOLEAN:
            return Cell("boolean", cell.value)
        if cell.ctype == xlrd.XL_CELL_ERROR:
            return Cell("error", cell.value)
        return EMPTY

    def text(self, row, column):
        return cell_text(self.cell(row, column))

    def header_row(self):
        """The lowest row whose first cell is not numeric; 0 when there is none."""
        row = self.sheet.nrows
        while row >= 1 and is_numeric(self.cell(row, 1)):
            row -= 1
        return row


class Structure:
    """Which columns a workbook offers, and which of the chosen ones are there."""

    def __init__(self, keys, columns, data):
        self.chosen_keys, self.chosen_columns, self.data = keys, columns, data
        self.available = {}
        self.discrepancy = False
        self.keys, self.columns = [], []  # columns: (name, position)

    def refresh(self, sheet):
        self.available, self.keys, self.columns = {}, [], []
        header_row = sheet.header_row()
        for name in PSEUDO_COLUMNS:
            self.available[upper(name)] = -1
        column = 1
        while True:
            name = sheet.text(header_row, column)
            if not name.strip(" "):
                break
            if upper(name) in self.available:
                raise Failure(457, "This key is already associated with an element")
            self.available[upper(name)] = column
            column += 1
        self.match()

    def match(self):
        names = [name for name in self.chosen_columns if upper(name) != upper(self.data)]
        self.columns = self.of_available([(name, i + 1) for i, name in enumerate(names)])
        self.keys = [name for name, _ in self.of_available([(name, 0) for name in self.chosen_keys])]
        self.of_available([(self.data, 0)])

    def of_available(self, names):
        found, seen = [], set()
        for name, position in names:
            if upper(name) not in self.available:
                self.discrepancy = True
                continue
            if upper(name) in seen:
                raise Failure(457, "This key is already associated with an element")
            seen.add(upper(name))
            found.append((name, position))
        return found

    def position(self, name):
        return self.available.get(upper(name), 0)


# Writing

class OutputTable:
    """The output sheet; rows and columns count from 1."""

    def __init__(self):
        self.rows = [[]]

    def cell(self, row, column):
        if column < 1 or column > SHEET_COLUMNS:
            raise Failure(1004, "No such column")
        if row > len(self.rows) or column > len(self.rows[row - 1]):
            return EMPTY
        return self.rows[row - 1][column - 1]

    def set(self, row, column, cell):
        if column < 1 or column > SHEET_COLUMNS or row > SHEET_ROWS:
            raise Failure(1004, "No such cell")
        while row > len(self.rows):
            self.rows.append([])
        cells = self.rows[row - 1]
        cells.extend([EMPTY] * (column - len(cells)))
        cells[column - 1] = cell

    def width(self):
        return max(map(len, self.rows))

    def header_is_empty(self, column):
        return is_blank(self.cell(1, column))

    def remove_empty_columns(self):
        column, removed = 1, 0
        while column <= LAST_HEADER_COLUMN and removed < EMPTY_RUN:
            if self.header_is_empty(column):
                for cells in self.rows:
                    del cells[column - 1:column]
                removed += 1
            else:
                column, removed = column + 1, 0

    def add_extra_headers(self):
        column = 1
        while column <= LAST_HEADER_COLUMN and not self.header_is_empty(column):
            column += 1
        for offset, name in enumerate(EXTRA_HEADERS):
            self.set(1, column + offset, Cell("text", name))

    def save(self, full_name, sheet_name):
        book = xlwt.Workbook(encoding="utf-8")
        sheet = book.add_sheet(re.sub(r"[\\/?*\[\]:]", "_", sheet_name)[:31])
        date_style = xlwt.easyxf(num_format_str="M/D/YYYY h:mm:ss")
        for row, cells in enumerate(self.rows):
            for column, (kind, value) in enumerate(cells):
                if kind == "error":
                    sheet.row(row).set_cell_error(column, value)
                elif kind == "date":
                    sheet.row(row).write(column, value, date_style)
                elif kind == "boolean":
                    sheet.row(row).write(column, bool(value))
                elif kind != "empty":
                    sheet.row(row).write(column, value)
        book.save(full_name)


# The run

class Conversion:
    def __init__(self, keys, columns, data, progress=None):
        self.structure = Structure(keys, columns, data)
        self.progress = progress or (lambda line: None)
        self.output = OutputTable()
        self.key_rows = {}             # upper-cased key: output row
        self.replication_columns = {}  # upper-cased letter: output column
        self.output_columns = 0        # of the sample
        self.written = 0               # cells that are not blank
        self.next_row = 2
        self.messages, self.logged = [], []

    def convert_folder(self, folder):
        """The cells of the output sheet for every file of every sub-folder."""
        folders = listing(folder, os.path.isdir)
        if not folders:
            self.tell("The folder you chose to process has no sub folders.")
            raise Refused(self.messages, self.logged)
        batches = [(path, listing(path, lambda name: not os.path.isdir(name))) for path in folders]
        return self.convert(batches, next(iter(batches[0][1]), None))

    def convert_files(self, files):
        return self.convert([(None, files)], files[0])

    def convert(self, batches, sample):
        try:
            self.check_structure(sample)
            self.output_columns = len(self.structure.columns)
            for position, (name, _) in enumerate(self.structure.columns):
                self.output.set(1, position + 1, cell_from_text(RENAMED_HEADERS.get(upper(name), name)))
            of_folders = batches[0][0] is not None
            if of_folders:
                columns = self.output_columns + len(self.replications(batches[0][1]))
                self.check_columns_ahead(columns, len(batches), len(batches))
            self.check_replications_ahead([name for _, files in batches for name in files])
            for number, (folder, files) in enumerate(batches):
                if not files:
                    self.refuse('The sub-folder "%s" is empty. Please make sure all sub-folders of chosen '
                                "processing folder have files in them." % os.path.basename(folder))
                self.process_files(files, "Folder %d of %d" % (number + 1, len(batches)))
                if of_folders:
                    self.check_columns_ahead(self.output.width(), len(batches) - number - 1, len(batches))
            self.output.remove_empty_columns()
            assert self.written == sum(not is_blank(cell) for row in self.output.rows[1:] for cell in row), "lost cells"
        except Failure as failure:
            if failure.number != 17:
                self.report(failure, "frmMain.ProcessFolders")
            raise Refused(self.messages, self.logged)
        return self.output

    def check_columns_ahead(self, columns, to_come, folders):
        headers = len(EXTRA_HEADERS)
        last = min(columns + to_come * headers, LAST_HEADER_COLUMN + headers - 1)
        self.check_room(max(1, columns, last), "Every sub-folder adds %d columns to the output, and there are %d "
                        "sub-folders." % (headers, folders))

    def check_replications_ahead(self, files):
        replications = self.replications(files)
        if replications:
            self.check_room(self.output_columns + max(replications), "There are %d output columns and replications "
                            "up to %d." % (self.output_columns, max(replications)))

    @staticmethod
    def replications(files):
        """Those that will be given a column, the first of each letter."""
        columns = {}
        for full_name in files:
            replication = replication_of(full_name)
            if replication is not None and 1 <= replication <= LAST_REPLICATION:
                columns.setdefault(upper(replication_letter(replication)), replication)
        return columns.values()

    def check_room(self, column, reason):
        if column > SHEET_COLUMNS:
            self.refuse("%s The .xls format holds at most %d columns a sheet; column %d does not fit. Give the output "
                        "a name that ends with .xlsx." % (reason, SHEET_COLUMNS, column))

    def tell(self, message):
        self.messages.append(message)

    def refuse(self, message):
        self.tell(message)
        raise Failure(17)

    def report(self, failure, location, message=None):
        self.logged.append((failure.number, location))
        self.tell(message or 'An error occurred in procedure "%s".\n\n%s' % (location, LOGGED))

    def check_structure(self, sample):
        if sample is None:
            self.tell("No file could be used in order to determine structure of file. Please make sure "
                      "you have files in all sub-folders of chosen processing folder.")
            return
        try:
            self.structure.refresh(DataSheet(sample))
        except Failure as failure:
            self.report(failure, "clsStructure.Constructor")
            self.tell("Problems occurred when opening a file to use as a sample for format settings. "
                      "Please double click the folder or parent-folder you want to process, and make "
                      "sure it has the files with a correct format in them.")
            self.structure.match()
            return
        if self.structure.discrepancy:
            self.refuse("Please check structure settings before start.\n\n"
                        "File used for format check:\n\n" + display_path(sample))

    def process_files(self, files, progress):
        for number, full_name in enumerate(files):
            try:
                self.process_file(full_name, "%s, Filename %s (%d of %d)" % (
                    progress, base_name(full_name), number + 1, len(files)))
            except Failure as failure:
                if failure.number != 17:
                    self.report(failure, "frmMain.ProcessFile",
                                "An error occurred while processing the file " + display_path(full_name))
                raise Failure(17)
        self.output.remove_empty_columns()
        self.output.add_extra_headers()

    def process_file(self, full_name, progress):
        try:
            sheet = DataSheet(full_name)
        except Failure as failure:
            if failure.number != 9:
                raise
            self.refuse('No "data" sheet found in file ' + display_path(full_name))
        self.structure.refresh(sheet)
        self.progress("%s, Sheet %d of %d" % (progress, sheet.index, sheet.sheet_count))
        row = sheet.header_row() + 1
        replication = self.replication_number(full_name)
        if self.structure.position(self.structure.data) < 1:
            raise Failure(1004, "No data column")
        keys_of_sheet = set()
        while sheet.text(row, 1).strip(" "):
            self.process_row(sheet, row, replication, keys_of_sheet)
            row += 1

    def process_row(self, sheet, row, replication, keys_of_sheet):
        key = "".join("%s=%s;" % (name, self.column_value(sheet, row, name)) for name in self.structure.keys)
        known = upper(key)
        if known in keys_of_sheet:
            self.refuse("Duplicate key in file \n'%s'\n\nKey name:   %s" % (display_path(sheet.full_name), key))
        keys_of_sheet.add(known)
        is_new = known not in self.key_rows
        output_row = self.key_rows.setdefault(known, self.next_row)
        self.write_data(sheet, row, replication, key, output_row)
        if is_new:
            for name, position in self.structure.columns:
                self.write(output_row, position, self.output_value(sheet, row, name))
            self.next_row += 1

    def write_data(self, sheet, row, replication, key, output_row):
        letter = replication_letter(replication)
        if upper(letter) not in self.replication_columns:
            column = self.output_columns + replication
            self.replication_columns[upper(letter)] = column
            self.output.set(1, column, cell_from_text(letter))
        column = self.replication_columns[upper(letter)]
        if self.output.header_is_empty(column):
            self.refuse("The data of replication %d would be lost: its column moved when the empty columns of an "
                        "earlier sub-folder were removed. Number the replications without gaps, or take the "
                        "long form, which has a row for every reading.\n\nCurrent file: %s" % (replication, display_path(sheet.full_name)))
        if not is_blank(self.output.cell(output_row, column)):
            self.refuse("The same key, with the same replication number was found in different files, and "
                        "data would be overwritten. Please check that all key fields are truely unique."
                        "\n\nCurrent file: %s\n\nKey name:   %s" % (display_path(sheet.full_name), key))
        self.write(output_row, column, sheet.cell(row, self.structure.position(self.structure.data)))

    def write(self, row, column, cell):
        self.output.set(row, column, cell)
        self.written += not is_blank(cell)

    def column_value(self, sheet, row, name):
        position = self.structure.position(name)
        if position > 0:
            return sheet.text(row, position)
        if upper(name) == "DATE":
            return self.date(sheet)
        if upper(name) == "FILENAME":
            return sheet.full_name
        if upper(name) == "DAY_NUM":
            return str(self.day_number(sheet.full_name))
        return ""

    def output_value(self, sheet, row, name):
        """What is written of a column: its text, but a number stays one, of 15 digits."""
        text = self.column_value(sheet, row, name)
        position = self.structure.position(name)
        if position > 0 and sheet.cell(row, position).kind == "number":
            return Cell("number", float(text))
        return cell_from_text(text)

    def date(self, sheet):
        date, blank, _ = sheet.text(1, 1).partition(" ")
        if not blank:
            self.refuse('Problem occurred while trying to extract the date from Column "A1".Please make sure '
                        "date format is as required.\n\nFilename: " + display_path(sheet.full_name))
        return date

    def day_number(self, full_name):
        fields = base_name(full_name).split("-")
        if len(fields) < 2:
            raise Failure(9, "Subscript out of range")
        return to_int16(fields[-2])

    def replication_number(self, full_name):
        replication = replication_of(full_name)
        if replication is None:
            self.refuse("Could not extract replication number from file. Please make sure filenames are in "
                        'format "<XXX>-<X>-<REPLICATION-NUM>.xls".\n\nFilename: ' + display_path(full_name))
        return replication


def main():
    parser = argparse.ArgumentParser(description="Converts a screening campaign with xlrd and xlwt.")
    parser.add_argument("-k", "--key", action="append", default=[], help="key column; repeat, in order")
    parser.add_argument("-c", "--column", action="append", default=[], help="output column; repeat, in order")
    parser.add_argument("-d", "--data", default="Delta OD", help="data column")
    parser.add_argument("-o", "--output", required=True, help="output workbook")
    parser.add_argument("-q", "--quiet", action="store_true", help="no progress")
    parser.add_argument("--files", nargs="+", help="just these workbooks")
    parser.add_argument("folder", nargs="?", help="every file of every sub-folder")
    choices = parser.parse_args()
    if bool(choices.folder) == bool(choices.files):
        parser.error("give either a folder or --files")

    progress = None if choices.quiet else lambda line: print(line, file=sys.stderr)
    conversion = Conversion(choices.key, choices.column, choices.data, progress)
    output = os.path.abspath(choices.output)
    try:
        if choices.files:
            files = [os.path.abspath(name) for name in choices.files]
            folder = os.path.dirname(files[0])
            table = conversion.convert_files(files)
        else:
            folder = os.path.abspath(choices.folder)
            table = conversion.convert_folder(folder)
        table.save(output, os.path.basename(folder))
    except Refused as refusal:
        sys.exit("\n".join(refusal.messages))
    print(output)


if __name__ == "__main__":
    main()
