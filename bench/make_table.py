#!/usr/bin/python3
"""Makes a workbook of one sheet, as its name's ending says: .xls, .xlsx or .ods.

    make_table.py FILE ROWS COLUMNS

Two rows of headers, then as many wells as still fit into ROWS; the values follow from a fixed seed.
"""
import random
import sys
import zipfile
from xml.sax.saxutils import escape

TYPE = "application/vnd.oasis.opendocument.spreadsheet"
NAMESPACES = " ".join('xmlns:%s="urn:oasis:names:tc:opendocument:xmlns:%s:1.0"' % (name, name)
                      for name in ("office", "table", "text"))


def table(rows, columns):
    values = random.Random(3)
    yield ["12/3/2002 10:15:00 AM"]
    yield ["plate", "well", "compound ID"] + ["OD %d" % n for n in range(columns - 3)]
    for row in range(rows - 2):
        well = "ABCDEFGH"[row % 8] + "%02d" % (row // 8 % 12 + 1)
        yield [row // 96 + 1, well, "CMP-%06d" % row] + [
            round(values.random() * 3, 6) for _ in range(columns - 3)]


def make_xls(name, rows):
    import xlwt
    book = xlwt.Workbook()
    sheet = book.add_sheet("data")
    for number, row in enumerate(rows):
        for column, value in enumerate(row):
            sheet.write(number, column, value)
    book.save(name)


def make_xlsx(name, rows):
    import openpyxl
    book = openpyxl.Workbook(write_only=True)
    sheet = book.create_sheet("data")
    for row in rows:
        sheet.append(row)
    book.save(name)


def ods_cell(value):
    if isinstance(value, str):
        kind = 'office:value-type="string" calcext:value-type="string"'
    else:
        kind = 'office:value-type="float" office:value="%s" calcext:value-type="float"' % value
    return "<table:table-cell %s><text:p>%s</text:p></table:table-cell>" % (kind, escape(str(value)))


# With the attributes that office programs give to a cell.
def make_ods(name, rows):
    calcext = 'xmlns:calcext="urn:org:documentfoundation:names:experimental:calc:xmlns:calcext:1.0"'
    with zipfile.ZipFile(name, "w", zipfile.ZIP_DEFLATED) as book:
        book.writestr("mimetype", TYPE, zipfile.ZIP_STORED)
        with book.open("content.xml", "w", force_zip64=True) as part:
            part.write(('<?xml version="1.0" encoding="UTF-8"?><office:document-content %s %s '
                        'office:version="1.3"><office:body><office:spreadsheet>'
                        '<table:table table:name="data">' % (NAMESPACES, calcext)).encode())
            for row in rows:
                cells = "".join(ods_cell(value) for value in row)
                part.write(("<table:table-row>%s</table:table-row>" % cells).encode())
            part.write(b"</table:table></office:spreadsheet></office:body></office:document-content>")
        book.writestr("META-INF/manifest.xml",
                      '<manifest:manifest xmlns:manifest="urn:oasis:names:tc:opendocument:xmlns:'
                      'manifest:1.0"><manifest:file-entry manifest:full-path="/" '
                      'manifest:media-type="%s"/></manifest:manifest>' % TYPE)


def main():
    name, rows, columns = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
    makers = {".xls": make_xls, ".xlsx": make_xlsx, ".ods": make_ods}
    makers[name[name.rindex("."):]](name, table(rows, columns))


if __name__ == "__main__":
    main()
