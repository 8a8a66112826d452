#!/usr/bin/python3
"""Makes the fixtures that python3-xlwt writes. Run it in tests/data."""
import datetime

import xlwt

DAY = xlwt.easyxf(num_format_str="M/D/YY")
TIME = xlwt.easyxf(num_format_str="[h]:mm")
RED = xlwt.easyxf(num_format_str='[Red]0.0" d"')


def fill(sheet):
    sheet.write(0, 0, "3/12/2002 10:15:00 AM")
    sheet.write(1, 0, "plate")
    sheet.write(1, 1, "compound ID")
    sheet.write(1, 2, "Delta OD")
    sheet.write(2, 0, 1)
    sheet.write_rich_text(2, 1, ["CMP", ("\u03b1-7", xlwt.easyfont("bold on")), "/\u00b5M"])
    sheet.write(2, 2, 0.123456789012345)
    sheet.write(3, 0, datetime.datetime(2002, 12, 3, 12), DAY)
    sheet.write(3, 1, datetime.time(6, 30), TIME)
    sheet.write(3, 2, -1.5, RED)
    sheet.write(4, 0, True)
    sheet.write(4, 1, xlwt.Formula("1/0"))
    sheet.write(5, 3, "", DAY)


def book(name, dates_1904=False):
    workbook = xlwt.Workbook()
    workbook.dates_1904 = dates_1904
    fill(workbook.add_sheet("data"))
    workbook.save(name)


def texts_over_continue(name):
    """Texts of all widths, of lengths that make records end inside them."""
    workbook = xlwt.Workbook()
    sheet = workbook.add_sheet("data")
    for row in range(40):
        letter = "\u03b1" if row % 3 == 0 else "x"
        sheet.write(row, 0, f"{row}:" + letter * (331 + 7 * row))
    workbook.save(name)


book("xlwt-plate.xls")
book("xlwt-1904.xls", dates_1904=True)
texts_over_continue("xlwt-texts-over-continue.xls")
