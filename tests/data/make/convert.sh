#!/bin/sh
# Makes the fixtures that LibreOffice and Gnumeric write. Run it in tests/data.
set -e
profile=$(mktemp -d)
soffice "-env:UserInstallation=file://$profile" --headless --convert-to xls:"MS Excel 97" \
  --outdir "$profile" make/results.fods
mv "$profile/results.xls" libreoffice-results.xls
ssconvert -T Gnumeric_Excel:excel_biff7 libreoffice-results.xls gnumeric-excel95.xls
ssconvert -T Gnumeric_Excel:excel_dsf libreoffice-results.xls gnumeric-both-streams.xls
rm -r "$profile"
