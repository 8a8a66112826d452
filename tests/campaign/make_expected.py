#!/usr/bin/python3
"""Writes expected/samples.tsv: the cells that the campaign in samples/ must give, by the independent model.

One cell a line, as workbook-dump prints them: sheet, row and column from 1, kind,
value.
"""

import configparser
import decimal
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
SAMPLES = os.path.join(HERE, "../../samples")

import xlrd_convert as model  # noqa: E402


def shown(cell):
    if cell.kind in ("number", "date"):
        return shortest(cell.value)
    if cell.kind == "text":
        return cell.value.replace("\\", "\\\\").replace("\t", "\\t").replace("\n", "\\n").replace("\r", "\\r")
    return model.cell_text(cell)


def shortest(number):
    """The fewest characters that give the number back; fixed notation where both are as short."""
    exact = decimal.Decimal(repr(number)).normalize()
    sign, digits, _ = exact.as_tuple()
    text, exponent = "".join(map(str, digits)), exact.adjusted()
    scientific = "%s%s%se%+03d" % ("-" * sign, text[0], "." * (len(text) > 1) + text[1:], exponent)
    return min(format(exact, "f"), scientific, key=len)


def main():
    settings = configparser.ConfigParser(delimiters="=", interpolation=None)
    settings.read(os.path.join(SAMPLES, "korvex.ini"))
    structure = settings["File Structure"]
    conversion = model.Conversion(structure["Keys Columns"].split("<-- -->"),
                                  structure["Output Columns"].split("<-- -->"), structure["Data Column"])
    table = conversion.convert_folder(os.path.abspath(os.path.join(SAMPLES, "campaign")))
    with open(os.path.join(HERE, "expected", "samples.tsv"), "w", encoding="utf-8") as file:
        for row, cells in enumerate(table.rows):
            for column, cell in enumerate(cells):
                if cell.kind != "empty":
                    print("campaign", row + 1, column + 1, cell.kind, shown(cell), sep="\t", file=file)


if __name__ == "__main__":
    main()
