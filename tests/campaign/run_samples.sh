#!/usr/bin/env bash
# Runs korvex-convert on the campaign in samples/: the cells of its output, what it refuses and its
# exit statuses.
#
#   tests/campaign/run_samples.sh BIN_DIR [ARGS OF EVERY CALL...]
#
# Needs nothing but the two programs in BIN_DIR; works in a temporary folder. Windows programs run
# under Wine, and name every file in their own way.
set -uo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
bin=$(cd "$1" && pwd)
shift
always=("$@")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

if [ -e "$bin/korvex-convert.exe" ]; then
  export WINEPREFIX=${WINEPREFIX:-$bin/../wine}
  suffix=.exe
  runner=("$here/../../tools/under-wine")
  native() { local path=Z:$1 && printf '%s' "${path//\//\\}"; }
  shown() { local path=$1 && printf 'Z:\\...\\campaign\\%s' "${path//\//\\}"; }
else
  suffix=
  runner=()
  native() { printf '%s' "$1"; }                     # FILE: as the programs name it
  shown() { printf '/.../campaign/%s' "$1"; }        # FILE of the campaign: as messages show it
fi
export HOME=$work XDG_CONFIG_HOME=$work/config LC_ALL=C.UTF-8

# The error log lies beside the program's folder, so the program gets a place of its own.
mkdir -p "$work/program/bin"
cp "$bin/korvex-convert$suffix" "$work/program/bin/"
log=$work/program/AppErr/KORVEX.LOG
settings=$(native "$work/samples/korvex.ini")
program=("${runner[@]}" "$work/program/bin/korvex-convert$suffix" "${always[@]}" --settings "$settings")
dump=("${runner[@]}" "$bin/workbook-dump$suffix")

passed=0
failed=0

check() { # WHAT CONDITION...
  local what=$1
  shift
  if "$@"; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "FAILED: $case: $what"
    sed 's/^/    /' "$work/told"
  fi
}

# A fresh copy of the samples in $campaign, and no error log.
start() { # CASE
  case=$1
  rm -rf "$work/samples" "$work/program/AppErr"
  cp -r "$here/../../samples" "$work/samples"
  campaign=$work/samples/campaign
  first="$campaign/Set 1 kinase inhibitors"
  output=$campaign/campaign.xls
  rm -f "$output"
}

convert() { # ARGS..., whose full names are made native
  local args=() arg
  for arg in "$@"; do
    [[ $arg == /* ]] && arg=$(native "$arg")
    args+=("$arg")
  done
  "${program[@]}" "${args[@]}" </dev/null >"$work/printed" 2>"$work/told.raw"
  status=$?
  tr -d '\r' <"$work/told.raw" >"$work/told"
}

told() { # TEXT, which may have several lines
  [[ $(<"$work/told") == *"$1"* ]]
}

cells() { # WORKBOOK COLUMN...: the texts of row 1 in these columns
  "${dump[@]}" "$(native "$1")" | awk -F '\t' -v columns=" ${*:2} " \
    '$2 == 1 && index(columns, " " $3 " ") { printf "%s%s", separator, $5; separator = "|" }'
}

refused() { # TEXT LOGGED: a refusal with this text and as many records in the error log
  check "exit status is $status, not 1" [ "$status" = 1 ]
  check "text" told "$1"
  check "prints nothing" [ ! -s "$work/printed" ]
  check "leaves no output" [ ! -e "$output" ]
  local records=0
  [[ -e $log ]] && records=$(grep -c '^Error Number' "$log")
  check "$records error log records, not $2" [ "$records" = "$2" ]
}

start "the campaign"
convert "$campaign"
check "exit status is $status" [ "$status" = 0 ]
check "prints the output's name" [ "$(<"$work/printed")" = "$(native "$output")" ]
"${dump[@]}" "$(native "$output")" >"$work/cells" 2>>"$work/told"
check "cells" diff -q "$here/expected/samples.tsv" "$work/cells"
check "no error log record" [ ! -s "$log" ]
convert --quiet "$campaign"
check "replaces its former output" [ "$status" = 0 ]
check "tells no progress" [ "$(grep -c Folder "$work/told")" = 0 ]

start "files given"
convert -q -o "$work/some.xls" -c "compound ID" -c FILENAME --files "$first/KIN01-1-1.xls" "$first/KIN01-1-3.xls"
check "exit status is $status" [ "$status" = 0 ]
check "headers" [ "$(cells "$work/some.xls" 1 2 3 4 5)" = "chem_id|FILENAME|A|C|screen_num" ]
check "writes where told" [ ! -e "$output" ]

start "columns"
convert --list-columns "$campaign"
check "exit status is $status" [ "$status" = 0 ]
check "names" [ "$(paste -sd'|' "$work/printed")" = \
  "Filename|Date|day_num|cell plate #|cell plate wells ##|compound ID|compound #|conc (µM)|OD 0 h|OD 24 h|Delta OD|remarks" ]

start "empty sub-folder"
mkdir "$campaign/Set 2b"
convert "$campaign"
refused 'The sub-folder "Set 2b" is empty. Please make sure all sub-folders of chosen processing folder have files in them.' 0

start "no sub-folders"
convert "$first"
refused "The folder you chose to process has no sub folders." 0

start "key column that the sample lacks"
convert -k "compound ID" -k plate "$campaign"
refused "Please check structure settings before start.

File used for format check:

$(shown "Set 1 kinase inhibitors/KIN01-1-1.xls")" 0
check "names the column" told 'Cause: Missing: key column "plate".'

start "no replication number"
cp "$first/KIN01-1-1.xls" "$first/KIN03-1-one.xls"
convert "$campaign"
refused 'Could not extract replication number from file. Please make sure filenames are in format "<XXX>-<X>-<REPLICATION-NUM>.xls".

Filename: '"$(shown "Set 1 kinase inhibitors/KIN03-1-one.xls")" 0

start "same key and replication in two files"
cp "$first/KIN01-1-1.xls" "$campaign/Set 3 fragments/ZZZ-9-1.xls"
convert "$campaign"
refused "The same key, with the same replication number was found in different files, and data would be overwritten. Please check that all key fields are truely unique.

Current file: $(shown "Set 3 fragments/ZZZ-9-1.xls")

Key name:   compound ID=DMSO;cell plate #=1041;cell plate wells ##=A01;" 0

start "same key twice in a sheet"
convert -k "compound ID" "$campaign"
refused "Duplicate key in file 
'$(shown "Set 1 kinase inhibitors/KIN01-1-1.xls")'

Key name:   compound ID=DMSO;" 0

start "day number is a word"
mv "$first/KIN01-1-2.xls" "$first/KIN01-x-2.xls"
convert "$campaign"
check "only rows that are new need it" [ "$status" = 0 ]
mv "$first/KIN01-1-1.xls" "$first/KIN01-x-1.xls"
mv "$first/KIN01-1-3.xls" "$first/KIN01-x-3.xls"
rm "$output"
convert "$campaign"
refused "An error occurred while processing the file $(shown "Set 1 kinase inhibitors/KIN01-x-1.xls")" 1

start "a file that is no workbook"
head -c 3000 /dev/zero >"$campaign/Set 2 natural products/NAT07-2-4.xls"
convert "$campaign"
refused "An error occurred while processing the file $(shown "Set 2 natural products/NAT07-2-4.xls")" 1

start "sample that is no workbook"
head -c 3000 /dev/zero >"$first/A-1-1.xls"
convert "$campaign"
refused "Problems occurred when opening a file to use as a sample for format settings. Please double click the folder or parent-folder you want to process, and make sure it has the files with a correct format in them." 2

start "columns of settings that fit no sample"
sed -i 's/^Keys Columns=.*/Keys Columns=Date<-- -->Date/' "$work/samples/korvex.ini"
convert --list-columns "$campaign"
refused "Problems occurred when opening a file to use as a sample for format settings. " 1

start "workbook cut short"
head -c 9000 "$first/KIN01-1-2.xls" >"$first/cut" && mv "$first/cut" "$first/KIN01-1-2.xls"
convert "$campaign"
refused "An error occurred while processing the file $(shown "Set 1 kinase inhibitors/KIN01-1-2.xls")" 1

start "output that cannot be written"
convert -o "$work/nowhere/out.xls" "$campaign"
refused "Please specify a valid filename for the output file. 
(File could be in use)." 0

start "output that exists"
echo kept >"$work/kept.xls"
convert --no-replace -o "$work/kept.xls" "$campaign"
check "exit status is $status, not 1" [ "$status" = 1 ]
check "keeps the file" [ "$(<"$work/kept.xls")" = kept ]
check "asks" told 'exists. Would you like to replace it with a new output file?'

start "output that is an input"
cp "$first/KIN01-1-1.xls" "$work/kept.xls"
ln -sf "$first/KIN01-1-1.xls" "$work/link.xls"
convert -o "$work/link.xls" "$campaign"
refused "$(native "$work/link.xls"): It was read as input, and would be lost." 1
check "keeps the input" cmp -s "$first/KIN01-1-1.xls" "$work/kept.xls"

start "output in a sub-folder, from the last time"
convert -q -o "$first/all.xls" "$campaign"
convert -o "$first/all.xls" "$campaign"
output=$first/none.xls
refused "The output file \"$(shown "Set 1 kinase inhibitors/all.xls")\" is itself one of the files to process." 0
check "says so at once" [ "$(grep -c Folder "$work/told")" = 0 ]

start "output of another format"
convert -o "$campaign/campaign.ods" "$campaign"
refused "Only .xls, .xlsx, .csv and .tsv files can be written" 1
check "says so at once" [ "$(grep -c Folder "$work/told")" = 0 ]

start "output as .xlsx"
convert -q -o "$campaign/µ.xlsx" "$campaign"
check "exit status is $status" [ "$status" = 0 ]
"${dump[@]}" "$(native "$campaign/µ.xlsx")" >"$work/cells" 2>>"$work/told"
check "cells" diff -q "$here/expected/samples.tsv" "$work/cells"

start "output as .csv"
convert -q -o "$campaign/campaign.csv" "$campaign"
check "exit status is $status" [ "$status" = 0 ]
awk -F '\t' '
  BEGIN { error["Error 2042"] = "#N/A"; error["Error 2007"] = "#DIV/0!" }
  { cell[$2, $3] = $4 == "error" ? error[$5] : $5; rows = $2; if ($3 > columns) columns = $3 }
  END {
    printf "\357\273\277"
    for (r = 1; r <= rows; ++r)
      for (c = 1; c <= columns; ++c) printf "%s%s", cell[r, c], c < columns ? "," : "\r\n"
  }' "$here/expected/samples.tsv" >"$work/expected.csv"
check "cells" cmp -s "$work/expected.csv" "$campaign/campaign.csv"
convert -q -o "$campaign/campaign.tsv" "$campaign"
check "cells of .tsv" cmp -s <(tr , '\t' <"$work/expected.csv") "$campaign/campaign.tsv"

start "long form"
convert -q -o "$campaign/campaign.tsv" --long "$campaign/both.csv" "$campaign"
check "exit status is $status" [ "$status" = 0 ]
check "the same output" cmp -s <(tr , '\t' <"$work/expected.csv") "$campaign/campaign.tsv"
rm "$campaign/campaign.tsv"
convert -q --long "$campaign/long.csv" "$campaign"
check "exit status is $status" [ "$status" = 0 ]
check "no output workbook" [ ! -e "$output" ]
check "the same long form" cmp -s "$campaign/both.csv" "$campaign/long.csv"
check "readings" cmp -s \
  <(awk -F , -v OFS=, 'NR > 1 { for (r = 1; r <= 3; ++r) if ($(6 + r) != "") print $3, $1, $2, r, $(6 + r) }' \
    "$work/expected.csv" | sort) \
  <(awk -F , -v OFS=, 'NR > 1 && $9 != "" { print $1, $2, $3, $8, $9 }' "$campaign/long.csv" | sort)

start "more sub-folders than .xls has columns for"
for number in {10..50}; do
  mkdir "$campaign/Set $number"
  cp "$first/KIN01-1-1.xls" "$campaign/Set $number/"
done
convert "$campaign"
refused "Give the output a name that ends with .xlsx." 0
check "says so at once" [ "$(grep -c Folder "$work/told")" = 0 ]

if [ -z "$suffix" ]; then # Wine knows no such limits, and opens streams of its own for what is closed.
  start "disk that is full, while .xlsx is packed on another thread"
  (trap '' XFSZ && ulimit -f 4 && convert -o "$campaign/campaign.xlsx" "$campaign" && exit "$status")
  status=$?
  refused "campaign.xlsx: File too large" 1
  check "leaves no output of that name" [ ! -e "$campaign/campaign.xlsx" ]

  start "streams that are closed or full"
  "${program[@]}" "$campaign" >"$work/printed" 2>&-
  check "no messages: exit status" [ $? = 0 ]
  check "no messages: nothing in the error log" [ ! -s "$log" ]
  for target in /dev/full "&-"; do
    eval '"${program[@]}" -q "$campaign"' ">$target 2>'$work/told'"
    check "lost name of the output ($target): exit status" [ $? = 1 ]
    check "lost name of the output ($target): says so" told "Cannot write to standard output"
    eval '"${dump[@]}" "$output"' ">$target 2>'$work/told'"
    check "lost cells ($target): exit status" [ $? = 1 ]
  done
fi

start "arguments"
convert -o "$work/some.xls" --files -- "$first/KIN01-1-1.xls"
check "files behind --: exit status is $status" [ "$status" = 0 ]
(cd "$first" && mv -- KIN01-1-1.xls -a-1-1.xls && convert -o "$output" --files -- -a-1-1.xls)
check "file named like an option" [ -s "$output" ]
convert -o "$work/some.xls" ""
check "empty folder name: exit status is $status, not 2" [ "$status" = 2 ]
convert
check "neither folder nor files: exit status is $status, not 2" [ "$status" = 2 ]
convert "$first/KIN01-1-3.xls"
check "a file for a folder: exit status is $status, not 2" [ "$status" = 2 ]
convert -o "$work/" "$campaign"
check "a folder for a file: exit status is $status, not 2" [ "$status" = 2 ]
convert --unknown "$campaign"
check "unknown option: exit status is $status, not 2" [ "$status" = 2 ]
convert --version
check "version: exit status is $status, not 0" [ "$status" = 0 ]
version=$(sed -n 's/^project(KORVEX VERSION \([0-9.]*\).*/\1/p' "$here/../../CMakeLists.txt")
check "version: prints it" grep -qF "${version:-none}" "$work/printed"

echo "campaign: $passed passed, $failed failed"
[ "$failed" = 0 ]
