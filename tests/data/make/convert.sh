#!/bin/sh
# Makes the fixtures that LibreOffice and Gnumeric write. Run it in tests/data.
set -e
profile=$(mktemp -d)

# convert FORMAT FILE FIXTURE
convert() {
  soffice "-env:UserInstallation=file://$profile" --headless --convert-to "$1" \
    --outdir "$profile" "$2"
  name=${2##*/}
  mv "$profile/${name%.*}.${3##*.}" "$3"
}

convert xls:"MS Excel 97" make/results.fods libreoffice-results.xls
convert xlsx:"Calc MS Excel 2007 XML" make/results.fods libreoffice-results.xlsx
convert ods make/results.fods libreoffice-results.ods
convert xml:"MS Excel 2003 XML" make/results.fods libreoffice-results.xml
convert ods xlwt-plate.xls libreoffice-plate.ods
convert xlsx:"Calc MS Excel 2007 XML" xlwt-1904.xls libreoffice-1904.xlsx
ssconvert -T Gnumeric_Excel:excel_biff7 libreoffice-results.xls gnumeric-excel95.xls
ssconvert -T Gnumeric_Excel:excel_dsf libreoffice-results.xls gnumeric-both-streams.xls
ssconvert -T Gnumeric_OpenCalc:odf libreoffice-results.xls gnumeric-results.ods
rm -r "$profile"
