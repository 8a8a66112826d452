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

convert() { # [OPTION…]; what it prints is the output's name
  wine "${program[@]}" -q --settings "$(native "$here/../../samples/korvex.ini")" \
    -o "$(native "$work/out.xls")" "$@" \
    "$(native "$campaign")" 2>"$work/told"
}
campaign=$(realpath "$here/../../samples/campaign")
program=("$bin/korvex-convert.exe")
installed=(--spreadsheet installed)
calls() { tr -d '\r' <"$work/calls"; }
# Waits for up to 20 s until the application has written a line.
wait_for() { # LINE
  for ((i = 0; i < 200; i++)); do
    calls 2>/dev/null | grep -qxF "$1" && return
    sleep 0.1
  done
  return 1
}
fail() {
  echo "FAILED: $1"
  sed 's/^/    /' "$work/told" "$work/calls" 2>/dev/null || true
  exit 1
}

# Without one it says so.
! convert "${installed[@]}" || fail "runs without a spreadsheet application"
grep -q "no installed spreadsheet application" "$work/told" || fail "does not say that there is none"
grep -q -- "--spreadsheet embedded" "$work/told" || fail "does not say what helps"

# Registers the program as an installer does.
class='{7B1C2A60-5D0E-4F7B-9C1F-000000000001}'
register() { # KEY VALUE
  wine "$WINEPREFIX/drive_c/windows/system32/reg.exe" add "HKLM\\Software\\Classes\\$1" \
    /ve /d "$2" /f >/dev/null
}
register_server() { # [BEHAVIOUR…]
  rm -f "$work/calls"
  register "CLSID\\$class\\LocalServer32" \
    "\"$(native "$bin/spreadsheet_server.exe")\" $class \"$(native "$work/calls")\" $*"
}

# One that cannot be started.
register 'Excel.Application\CLSID' "$class"
register "CLSID\\$class\\LocalServer32" "Z:\\none.exe"
! convert "${installed[@]}" || fail "runs with an application that does not start"
grep -q "cannot be started.*--spreadsheet embedded" "$work/told" || fail "does not say what helps"

# One that dies is an error of the run, and the next run starts it anew.
register_server dies=Workbooks.Add
! convert "${installed[@]}" || fail "goes on without its application"
grep -q "The spreadsheet application has ended" "$work/told" || fail "does not say that it has ended"

# What it could not open by its name is refused before the first file is read; a check reads the others.
# The sample is read in any case.
few=$work/few
mkdir -p "$few/Set 1"
cp "$campaign/Set 1 kinase inhibitors/KIN01-1-1.xls" "$few/Set 1/KIN01-1-1.xls"
cp "$campaign/Set 1 kinase inhibitors/KIN01-1-2.xls" "$few/Set 1/KIN01[2]-1-2.xls"
for run in "1" "2 --check"; do
  register_server
  # shellcheck disable=SC2086 # an option or none
  ! campaign=$few convert "${installed[@]}" ${run#?} || fail "takes a name that the application does not"
  grep -q 'KIN01\[2\]-1-2.xls: its name holds' "$work/told" || fail "does not say which file is refused"
  [ "$(grep -c "Workbooks.Open(" "$work/calls")" = "${run%% *}" ] || fail "opens not ${run%% *}"
done

# Where nobody sees windows it is not used, unless it is asked for.
register_server
program=("$bin/spreadsheet_server.exe" --without-desktop "$(native "$bin/korvex-convert.exe")")
convert >/dev/null || fail "does not work without a desktop"
[ ! -e "$work/calls" ] || fail "uses the application without a desktop"
program=("$bin/korvex-convert.exe")

# One that takes long to come and to go.
register_server busy=40 stays=3 stopping
convert "${installed[@]}" >"$work/printed" || fail "exit status"
wine "$bin/workbook-dump.exe" "$(native "$work/out.xls")" | diff "$here/expected/samples.tsv" - ||
  fail "cells"
# The sample file is opened twice. Two applications were used, and each was told to quit. The output
# is saved twice: empty at the start, to see whether that works.
for count in "16 Workbooks.Open(" "17 Workbook.Close(" "2 Workbook.SaveAs(" "2 Application.Quit"; do
  [ "$(grep -cF "${count#* }" "$work/calls")" = "${count%% *}" ] || fail "not ${count}"
done
[ "$(calls | grep -cxF ended)" = 2 ] || fail "does not wait for its end"
timeout 30 wineserver -w || fail "leaves an application running"
temporary=$(find "$WINEPREFIX/drive_c" -name 'korvex-*.xls*')
[ -z "$temporary" ] || fail "leaves temporary files: $temporary"

# One that refuses to come while the one before it goes.
convert "${installed[@]}" --list-columns >/dev/null || fail "does not wait for the one before"
calls | grep -qxF stopping || fail "is not told to wait"

# One that never answers ends with this program, even when that is killed.
register_server hangs=Workbooks.Add
convert "${installed[@]}" &
wait_for Workbooks.Add || fail "does not get to the call"
wine "$WINEPREFIX/drive_c/windows/system32/taskkill.exe" /f /im korvex-convert.exe >/dev/null
wait $! || true
timeout 20 wineserver -w || fail "leaves an application that does not answer"

# One in which the user has opened a workbook is left to the user.
register_server foreign
convert >/dev/null || fail "does not work beside the user"
wait_for "The user's workbook is still open." || fail "ends the application of the user"
# That of the sample has quit.
[ "$(grep -cF Application.Quit "$work/calls")" = 1 ] || fail "tells the application of the user to quit"
for call in UserControl DisplayAlerts ScreenUpdating EnableEvents; do
  calls | grep -qxF "Application.$call = True" || fail "does not put $call back"
done
echo "installed: passed"
