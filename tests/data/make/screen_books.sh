#!/bin/sh
# Makes the fixtures of one plate of 384 wells that four writers write. Run it in tests/data.
set -e
/usr/bin/python3 - <<'PY'
"""The plate, as rows of tab-delimited text and as xlwt writes it."""
import xlwt

rows = [["3/12/2002 10:15:00 AM"], ["plate", "well", "compound ID", "conc", "Delta OD", "temp", "flag"]]
for n in range(384):
    well = "%s%02d" % (chr(65 + n // 24), n % 24 + 1)
    rows.append([1041 + n // 96, well, "KIN-%06d" % (10411 + n * 7), 10 / (1 + n % 8),
                 round(0.031 + (n * 7919 % 1000) / 1013, 6), 37, "ok" if n % 5 else "edge"])
workbook = xlwt.Workbook()
notes = workbook.add_sheet("notes")
notes.write(0, 0, "measured with filter 620 nm")
sheet = workbook.add_sheet("data")
with open("screen.tsv", "w") as out:
    for y, row in enumerate(rows):
        out.write("\t".join(str(v) for v in row) + "\n")
        for x, value in enumerate(row):
            sheet.write(y, x, value)
workbook.save("xlwt-screen.xls")
PY
perl -MSpreadsheet::WriteExcel -e '
  my $book = Spreadsheet::WriteExcel->new("writeexcel-screen.xls");
  $book->add_worksheet("notes")->write(0, 0, "measured with filter 620 nm");
  my $sheet = $book->add_worksheet("data");
  open my $in, "<", "screen.tsv";
  while (<$in>) { chomp; my $y = $. - 1; my $x = 0; $sheet->write($y, $x++, $_) for split /\t/; }
  $book->close();'
rm screen.tsv
profile=$(mktemp -d)
soffice "-env:UserInstallation=file://$profile" --headless --convert-to xls:"MS Excel 97" \
  --outdir "$profile" xlwt-screen.xls
mv "$profile/xlwt-screen.xls" libreoffice-screen.xls
rm -r "$profile"
ssconvert -T Gnumeric_Excel:excel_biff8 xlwt-screen.xls gnumeric-screen.xls
