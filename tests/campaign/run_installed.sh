#!/usr/bin/env bash
# Runs korvex-convert.exe on the samples with an installed spreadsheet application, which is a program
# of the tests: the cells of the output, the calls that reach it, that it is ended, and what is said
# when it dies.
#
#   tests/campaign/run_installed.sh BIN_DIR
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
bin=$(cd "$1" && pwd)
work=$(mktemp -d)
wine() { "$here/../../tools/under-wine" "$@"; }
native() { local path=Z:$1 && printf '%s' "${path//\//\\}"; } # FILE: as Windows programs name it
finish() {
  wineserver -k || true
  rm -rf "$work"
}
trap finish EXIT
export WINEPREFIX=$work/wine

convert() { # what it prints is the output's name
  wine "$bin/korvex-convert.exe" -q --spreadsheet installed \
    --settings "$(native "$here/../../samples/korvex.ini")" -o "$(native "$work/out.xls")" \
    "$(native "$(realpath "$here/../../samples/campaign")")" 2>"$work/told"
}
fail() {
  echo "FAILED: $1"
  sed 's/^/    /' "$work/told" "$work/calls" 2>/dev/null || true
  exit 1
}

# Without one it says so.
! convert || fail "runs without a spreadsheet application"
grep -q "no installed spreadsheet application" "$work/told" || fail "does not say that there is none"

# Registers the program as an installer does.
class='{7B1C2A60-5D0E-4F7B-9C1F-000000000001}'
register() { # KEY VALUE
  wine "$WINEPREFIX/drive_c/windows/system32/reg.exe" add "HKLM\\Software\\Classes\\$1" \
    /ve /d "$2" /f >/dev/null
}
register_server() { # [CALL-TO-DIE-AT]
  register "CLSID\\$class\\LocalServer32" \
    "\"$(native "$bin/spreadsheet_server.exe")\" $class \"$(native "$work/calls")\" $*"
}
register 'Excel.Application\CLSID' "$class"

# One that dies is an error of the run, and the next run starts it anew.
register_server Workbooks.Add
! convert || fail "goes on without its application"
grep -q "The spreadsheet application has ended" "$work/told" || fail "does not say that it has ended"
rm "$work/calls"

register_server
convert >"$work/printed" || fail "exit status"
wine "$bin/workbook-dump.exe" "$(native "$work/out.xls")" | diff "$here/expected/samples.tsv" - ||
  fail "cells"
# The sample file is opened twice. Two applications were used, and each was told to quit.
for count in "16 Workbooks.Open(" "17 Workbook.Close(" "1 Workbook.SaveAs(" "2 Application.Quit"; do
  [ "$(grep -cF "${count#* }" "$work/calls")" = "${count%% *}" ] || fail "not ${count}"
done
[ "$(tail -1 "$work/calls" | tr -d '\r')" = Application.Quit ] || fail "does not end with Quit"
timeout 30 wineserver -w || fail "leaves an application running"
echo "installed: passed"
