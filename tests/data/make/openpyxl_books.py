#!/usr/bin/python3
"""Makes the fixtures that python3-openpyxl writes. Run it in tests/data."""
import datetime

import openpyxl


def fill(sheet):
    sheet["A1"] = "3/12/2002 10:15:00 AM"
    sheet.append(["plate", "compound ID", "Delta OD"])
    sheet.append([1, "CMP\u03b1-7/\u00b5M", 0.123456789012345])
    sheet.append([datetime.datetime(2002, 12, 3, 12), datetime.time(6, 30), -1.5])
    sheet["C4"].number_format = '[Red]0.0" d"'
    sheet["A5"] = True
    sheet["B5"] = "=1/0"
    sheet["D6"].number_format = "M/D/YY"


def book(name, iso_dates=False):
    workbook = openpyxl.Workbook()
    workbook.iso_dates = iso_dates
    fill(workbook.active)
    workbook.active.title = "data"
    workbook.create_sheet("notes").sheet_state = "veryHidden"
    workbook.create_chartsheet("Chart")
    workbook.save(name)


book("openpyxl-plate.xlsx")
book("openpyxl-iso-dates.xlsx", iso_dates=True)
