#!/usr/bin/python3
"""Makes the .xls workbooks of a campaign anew as .xlsx, their texts shared.

    pack_campaign.py FOLDER TARGET
"""
import glob
import os
import sys

import openpyxl
import xlrd


def pack(folder, target):
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


if __name__ == "__main__":
    pack(sys.argv[1], sys.argv[2])
