#!/usr/bin/python3
"""The yardstick for .xlsx: makes workbooks of one sheet, and reads all their cells.

    openpyxl_read.py make FILE ROWS COLUMNS
    openpyxl_read.py read FILE                prints how many cells are not empty
"""
import random
import sys

import openpyxl


def make(name, rows, columns):
    values = random.Random(3)
    book = openpyxl.Workbook(write_only=True)
    sheet = book.create_sheet("data")
    sheet.append(["12/3/2002 10:15:00 AM"])
    sheet.append(["plate", "well", "compound ID"] + ["OD %d" % n for n in range(columns - 3)])
    for row in range(rows):
        well = "ABCDEFGH"[row % 8] + "%02d" % (row // 8 % 12 + 1)
        sheet.append([row // 96 + 1, well, "CMP-%06d" % row] +
                     [round(values.random() * 3, 6) for _ in range(columns - 3)])
    book.save(name)


def read(name):
    book = openpyxl.load_workbook(name, read_only=True)
    print(sum(value is not None for sheet in book
              for row in sheet.iter_rows(values_only=True) for value in row))


if __name__ == "__main__":
    if sys.argv[1] == "make":
        make(sys.argv[2], int(sys.argv[3]), int(sys.argv[4]))
    else:
        read(sys.argv[2])
