#!/usr/bin/env bash
# Installs a build into a temporary folder and uses what is there as a user does.
#
#   tests/install/check_install.sh BUILD_DIR
set -uo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home LC_ALL=C.UTF-8
unset XDG_CONFIG_HOME XDG_STATE_HOME DESTDIR
mkdir "$HOME"

failed=0
check() { # WHAT CONDITION...
  local what=$1
  shift
  "$@" || {
    failed=1
    echo "FAILED: $what"
  }
}

prefix="$work/an application"
cmake --install "$build" --prefix "$prefix" >"$work/log" || {
  cat "$work/log"
  exit 1
}
# Links and programs hold wherever the tree lies.
mv "$prefix" "$work/moved"
prefix=$work/moved
programs=$prefix/lib/korvex/bin

convert() { # SAMPLE_FOLDER: prints the name of the output
  "$prefix/bin/korvex-convert" -q --settings "$work/samples/korvex.ini" "$1" 2>"$work/told"
}

check "no more sample workbooks than the campaigns have" \
  [ "$(find "$prefix/share/korvex/samples" -name '*.xls' | wc -l)" = 20 ]
cp -r "$prefix/share/korvex/samples" "$work"
output=$(convert "$work/samples/campaign")
check "converts the samples" [ "$output" = "$work/samples/campaign/campaign.xls" ]
"$programs/workbook-dump" "$output" >"$work/cells"
check "cells" cmp "$root/tests/campaign/expected/samples.tsv" "$work/cells"

check "the window is a command" [ "$(readlink -f "$prefix/bin/korvex")" = "$programs/korvex" ]
for name in installed other; do
  "$root/tests/ui/with_display" "$prefix/bin/korvex" --spreadsheet "$name" 2>"$work/told"
  check "the window refuses a spreadsheet application that is not there" \
    [ "$? $(grep -c "no .*spreadsheet application" "$work/told")" = "255 1" ]
done
check "help beside the programs" diff -r "$root/help" "$programs/Help"
check "samples where the window looks for them" [ -e "$programs/../../../share/korvex/samples/campaign" ]
check "help in the build folder" diff -r "$root/help" "$build/bin/Help"

records() { grep -cs '^Error Number' "$1"; }
echo "no workbook" >"$work/samples/campaign/Set 3 fragments/FRG384-3-4.xls"
convert "$work/samples/campaign"
check "logs beside the programs" [ "$(records "$prefix/lib/korvex/AppErr/KORVEX.LOG")" = 1 ]
rm -r "$prefix/lib/korvex/AppErr"
touch "$prefix/lib/korvex/AppErr" # as good as a folder that may not be made
convert "$work/samples/campaign"
check "logs in the home folder" \
  [ "$(records "$HOME/.local/state/korvex/AppErr/KORVEX.LOG")" = 1 ]
XDG_STATE_HOME=$work/state convert "$work/samples/campaign"
check "logs where the user keeps such files" \
  [ "$(records "$work/state/korvex/AppErr/KORVEX.LOG")" = 1 ]

"$root/tests/install/check_desktop.sh" "$prefix" || failed=1

exit $failed
