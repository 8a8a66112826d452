#!/usr/bin/env bash
# Working on several threads shows in nothing but the time:
#
#   tests/campaign/run_threads.sh BIN_DIR
#
# Converts the samples, a campaign with broken files in its middle, and a campaign that is stopped, with
# one thread and with several: outputs, messages and exit statuses are the same. Run with programs that
# were built with a thread sanitizer it finds races, too: those end with a status of their own.
set -euo pipefail
bin=$(cd "$1" && pwd)
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work XDG_CONFIG_HOME=$work TSAN_OPTIONS="exitcode=66 halt_on_error=1 ${TSAN_OPTIONS:-}"
passed=0 failed=0

fail() {
  echo "FAILED: $*" >&2
  failed=$((failed + 1))
}

convert() { # JOBS NAME ARGS...
  local status=0
  "$bin/korvex-convert" --jobs "$1" --settings "$root/samples/korvex.ini" "${@:3}" \
    >"$work/$2.out" 2>"$work/$2.err" </dev/null || status=$?
  echo "$status" >>"$work/$2.out"
}

ending=xls
same() { # WHAT ARGS...: the same with every number of threads
  local jobs
  rm -f "$work/out.$ending"
  convert 1 one -o "$work/out.$ending" "${@:2}"
  if [ -e "$work/out.$ending" ]; then mv "$work/out.$ending" "$work/one.$ending"; else rm -f "$work/one.$ending"; fi
  for jobs in 2 3 8; do
    rm -f "$work/out.$ending"
    convert "$jobs" many -o "$work/out.$ending" "${@:2}"
    if cmp -s "$work/one.out" "$work/many.out" && cmp -s "$work/one.err" "$work/many.err" &&
      { [ ! -e "$work/one.$ending" ] && [ ! -e "$work/out.$ending" ] || cmp -s "$work/one.$ending" "$work/out.$ending"; }; then
      passed=$((passed + 1))
    else
      fail "$1 with $jobs threads"
      diff "$work/one.err" "$work/many.err" >&2 || true
    fi
  done
}

cp -r "$root/samples/campaign" "$work/campaign"
same "the samples" "$work/campaign"
same "a check" --check "$work/campaign"
for set in "$work"/campaign/*/; do
  for number in {20..34}; do
    for file in "$set"*-1.xls; do
      cp "$file" "$set/ZZ$number-${number}-$(basename "$file" | sed 's/.*-\([0-9]*\)-1.xls/\1/')-1.xls"
    done
  done
done
same "colliding keys in many files" "$work/campaign"
same "a check of many files" --check "$work/campaign"

rm -rf "$work/campaign"
cp -r "$root/samples/campaign" "$work/campaign"
middle="$work/campaign/Set 2 natural products/NAT07-2-2.xls"
head -c 9000 "$middle" >"$work/cut" && mv "$work/cut" "$middle"
echo "no workbook" >"$work/campaign/Set 2 natural products/NAT07-2-3.xls"
same "a broken file in the middle" "$work/campaign"
same "a check with broken files" --check "$work/campaign"

# A stop, at some moment of a run that lasts: nothing hangs, nothing is written.
rm -rf "$work/campaign"
mkdir -p "$work/campaign/long"
for number in {1..160}; do
  ln "$root/samples/campaign/Set 3 fragments/FRG384-3-1.xls" "$work/campaign/long/P$number-1-1.xls" 2>/dev/null ||
    cp "$root/samples/campaign/Set 3 fragments/FRG384-3-1.xls" "$work/campaign/long/P$number-1-1.xls"
done
# Its .xlsx is packed on a thread of its own.
ending=xlsx
same "a long .xlsx" -k Filename -k "cell plate wells ##" "$work/campaign"
for delay in 0.01 0.05 0.1 0.2; do
  rm -f "$work/out.$ending"
  "$bin/korvex-convert" --jobs 4 -q --settings "$root/samples/korvex.ini" -k Filename -k "cell plate wells ##" \
    -o "$work/out.$ending" "$work/campaign" >"$work/stop.out" 2>"$work/stop.err" </dev/null &
  sleep "$delay"
  kill -INT $! 2>/dev/null || true
  status=0
  wait $! || status=$?
  written=0
  [ ! -e "$work/out.$ending" ] || written=1
  if [ "$status $written" = "130 0" ] || [ "$status $written" = "0 1" ]; then
    passed=$((passed + 1))
  else
    fail "a stop after $delay s: status $status"
    cat "$work/stop.err" >&2
  fi
done

echo "threads: $passed passed, $failed failed"
[ "$failed" = 0 ]
