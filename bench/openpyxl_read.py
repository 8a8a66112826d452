#!/usr/bin/python3
"""The yardstick for .xlsx: makes workbooks, and reads all cells of one.

    openpyxl_read.py make FILE ROWS COLUMNS
    openpyxl_read.py convert FOLDER TARGET    the .xls workbooks of a campaign as .xlsx, their texts shared
    openpyxl_read.py read FILE                prints how many cells are not empty
"""
import glob
import os
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


def convert(folder, target):
    import xlrd

    for name in sorted(glob.glob(folder + "/*/*.xls")):
        book = openpyxl.Workbook()
        book.remove(book.active)
        for sheet in xlrd.open_workbook(name).sheets():
            rows = book.create_sheet(sheet.name)
            for row in range(sheet.nrows):
                rows.append([None if value == "" else value for value in sheet.row_values(row)])
        packed = os.path.join(target, os.path.relpath(name, folder)) + "x"
        os.makedirs(os.path.dirname(packed), exist_ok=True)
        book.save(packed)


def read(name):
    book = openpyxl.load_workbook(name, read_only=True)
    print(sum(value is not None for sheet in book
              for row in sheet.iter_rows(values_only=True) for value in row))


if __name__ == "__main__":
    if sys.argv[1] == "make":
        make(sys.argv[2], int(sys.argv[3]), int(sys.argv[4]))
    elif sys.argv[1] == "convert":
        convert(sys.argv[2], sys.argv[3])
    else:
        read(sys.argv[2])
