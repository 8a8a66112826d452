"""Writes .xls workbooks through four programs that know nothing of each other.

A workbook is (path, sheets), a sheet (name, rows), a row a list of cells, a cell
(kind, value) with the kinds

    empty    None
    number   the number
    date     days since 1899-12-30
    boolean  True or False
    error    0 #NULL!, 7 #DIV/0!, 15 #VALUE!, 23 #REF!, 29 #NAME?, 36 #NUM!, 42 #N/A
    text     the text
    formula  (formula in A1 notation without "=", its number)
    nothing  a formula that gives an empty text, where the program can write it; else empty
    blank    an empty cell with a format, where the program can write it; else empty
"""

import datetime
import json
import os
import re
import shutil
import subprocess
import tempfile
import zipfile
from xml.sax.saxutils import escape

ERRORS = {0: "#NULL!", 7: "#DIV/0!", 15: "#VALUE!", 23: "#REF!", 29: "#NAME?", 36: "#NUM!", 42: "#N/A"}
# Errors that come out the same from every program.
COMMON_ERRORS = [0, 7, 15, 23, 42]
# Formulas that give an error, for programs that hold errors as results alone.
ERROR_FORMULAS = {0: "#NULL!", 7: "1/0", 15: '1+"x"', 23: "#REF!", 29: "nosuchname", 36: "10^1000", 42: "NA()"}
EPOCH = datetime.datetime(1899, 12, 30)


def installed():
    """The writers that this machine has."""
    found = []
    if shutil.which("soffice"):
        found.append("libreoffice")
    if shutil.which("ssconvert"):
        found.append("gnumeric")
    try:
        import xlwt  # noqa: F401
        found.append("xlwt")
    except ImportError:
        pass
    if subprocess.run(["perl", "-MSpreadsheet::WriteExcel", "-e1"], stderr=subprocess.DEVNULL).returncode == 0:
        found.append("writeexcel")
    return found


def write(program, workbooks):
    """Writes all workbooks in one go, which spares the slow start of some programs."""
    if workbooks:
        {"libreoffice": with_libreoffice, "gnumeric": with_gnumeric, "gnumeric-95": with_gnumeric_95,
         "xlwt": with_xlwt, "xlwt-1904": with_xlwt_1904, "writeexcel": with_writeexcel}[program](workbooks)


def with_xlwt_1904(workbooks):
    with_xlwt(workbooks, days_off=1462)


def with_xlwt(workbooks, days_off=0):
    import xlwt
    date_style = xlwt.easyxf(num_format_str="M/D/YYYY h:mm:ss")
    for path, sheets in workbooks:
        book = xlwt.Workbook(encoding="utf-8")
        book.dates_1904 = bool(days_off)
        for name, rows in sheets:
            sheet = book.add_sheet(name)
            for row, cells in enumerate(rows):
                for column, (kind, value) in enumerate(cells):
                    if kind == "error":
                        sheet.row(row).set_cell_error(column, value)
                    elif kind == "date":
                        sheet.row(row).write(column, value - days_off, date_style)
                    elif kind == "formula":
                        sheet.row(row).write(column, value[1])
                    elif kind == "blank":
                        sheet.row(row).set_cell_blank(column, date_style)
                    elif kind not in ("empty", "nothing"):
                        sheet.row(row).write(column, value)
        book.save(path)


def with_writeexcel(workbooks):
    script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "write_workbooks.pl")
    subprocess.run(["perl", script], input=json.dumps(workbooks).encode(), check=True)


def with_libreoffice(workbooks):
    with tempfile.TemporaryDirectory() as folder:
        sources = []
        for number, (_, sheets) in enumerate(workbooks):
            sources.append("%s/%d.ods" % (folder, number))
            write_open_document(sources[-1], sheets)
        subprocess.run(["soffice", "-env:UserInstallation=file://%s/profile" % folder, "--headless", "--convert-to",
                        "xls:MS Excel 97", "--outdir", folder] + sources,
                       check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for number, (path, _) in enumerate(workbooks):
            shutil.move("%s/%d.xls" % (folder, number), path)


def with_gnumeric_95(workbooks):
    with_gnumeric(workbooks, "excel_biff7")


def with_gnumeric(workbooks, version="excel_biff8"):
    with tempfile.TemporaryDirectory() as folder:
        for path, sheets in workbooks:
            source = folder + "/book.ods"
            write_open_document(source, sheets)
            subprocess.run(["ssconvert", "--recalc", "--export-type=Gnumeric_Excel:" + version, source, path],
                           check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


DOCUMENT = """<?xml version="1.0" encoding="UTF-8"?>
<office:document-content xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
 xmlns:style="urn:oasis:names:tc:opendocument:xmlns:style:1.0"
 xmlns:number="urn:oasis:names:tc:opendocument:xmlns:datastyle:1.0"
 xmlns:table="urn:oasis:names:tc:opendocument:xmlns:table:1.0"
 xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0"
 xmlns:of="urn:oasis:names:tc:opendocument:xmlns:of:1.2"
 office:version="1.2">
<office:automatic-styles>
<number:date-style style:name="when"><number:month/><number:text>/</number:text><number:day/>
<number:text>/</number:text><number:year number:style="long"/><number:text> </number:text><number:hours/>
<number:text>:</number:text><number:minutes number:style="long"/></number:date-style>
<number:boolean-style style:name="truth"><number:boolean/></number:boolean-style>
<style:style style:name="date" style:family="table-cell" style:data-style-name="when"/>
<style:style style:name="boolean" style:family="table-cell" style:data-style-name="truth"/>
</office:automatic-styles>
<office:body><office:spreadsheet>
%s
</office:spreadsheet></office:body></office:document-content>
"""


OPEN_DOCUMENT = "application/vnd.oasis.opendocument.spreadsheet"
MANIFEST = """<?xml version="1.0" encoding="UTF-8"?>
<manifest:manifest xmlns:manifest="urn:oasis:names:tc:opendocument:xmlns:manifest:1.0" manifest:version="1.2">
<manifest:file-entry manifest:full-path="/" manifest:media-type="%s"/>
<manifest:file-entry manifest:full-path="content.xml" manifest:media-type="text/xml"/>
</manifest:manifest>
""" % OPEN_DOCUMENT


def write_open_document(path, sheets):
    tables = []
    for name, rows in sheets:
        lines = ["<table:table-row>%s</table:table-row>" % ("".join(map(open_cell, cells)) or "<table:table-cell/>")
                 for cells in rows]
        tables.append('<table:table table:name="%s">\n%s\n</table:table>' % (
            escape(name, {'"': "&quot;"}), "\n".join(lines)))
    with zipfile.ZipFile(path, "w") as package:
        package.writestr("mimetype", OPEN_DOCUMENT)
        package.writestr("META-INF/manifest.xml", MANIFEST)
        package.writestr("content.xml", DOCUMENT % "\n".join(tables), zipfile.ZIP_DEFLATED)


def open_cell(cell):
    kind, value = cell
    attributes, content = "", ""
    if kind == "number":
        attributes = 'office:value-type="float" office:value="%r"' % value
    elif kind == "date":
        when = EPOCH + datetime.timedelta(seconds=round(value * 86400))
        attributes = 'table:style-name="date" office:value-type="date" office:date-value="%s"' % when.isoformat()
    elif kind == "boolean":
        attributes = 'table:style-name="boolean" office:value-type="boolean" office:boolean-value="%s"' % str(bool(value)).lower()
    elif kind == "error":
        attributes = 'table:formula="of:=%s" office:value-type="string" office:string-value=""' % escape(
            ERROR_FORMULAS[value], {'"': "&quot;"})
        content = "<text:p>%s</text:p>" % ERRORS[value]
    elif kind == "formula":
        references = re.sub(r"([A-Z]+\d+)", r"[.\1]", value[0])
        attributes = 'table:formula="of:=%s" office:value-type="float" office:value="%r"' % (references, value[1])
    elif kind == "nothing":
        attributes = 'table:formula="of:=&quot;&quot;" office:value-type="string" office:string-value=""'
    elif kind == "text":
        attributes = 'office:value-type="string"'
        # Blanks at the ends and in a row would be lost.
        spaced = re.sub(r"^ | $|(?<= ) ", "<text:s/>", escape(value))
        content = "".join("<text:p>%s</text:p>" % line for line in spaced.split("\n"))
    return "<table:table-cell %s>%s</table:table-cell>" % (attributes, content)
