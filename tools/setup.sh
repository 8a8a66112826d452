# What ./run, ./test and .ci/run share. Sourced, never run.
# shellcheck shell=bash disable=SC2034

# What building the programs needs, what the tests, the comparison with other programs and the
# fuzzers need on top, and what the checks of .ci/run need.
BUILD_PACKAGES=(g++ cmake ninja-build pkgconf libcli11-dev libwxgtk3.2-dev libgtk-3-dev
  libgcrypt20-dev libdeflate-dev zlib1g-dev)
TEST_PACKAGES=(libgtest-dev libgmock-dev libexpat1-dev xvfb openbox appstream desktop-file-utils fish
  zsh dbus-daemon at-spi2-core python3-gi gir1.2-atspi-2.0)
PEER_PACKAGES=(libreoffice-calc gnumeric python3-xlrd python3-openpyxl)
FUZZ_PACKAGES=(libexpat1-dev clang-14 libclang-rt-14-dev xz-utils)
CHECK_PACKAGES=(clang-format clang-tidy shellcheck git python3)
# What making the release needs, and on top of that its check.
RELEASE_PACKAGES=(nsis zip dpkg-dev osslsigncode python3)
RELEASE_CHECK_PACKAGES=(unzip binutils openssl lintian python3-yaml appstream desktop-file-utils fish zsh)

# Installs the named Debian packages that are not there yet. Silent when none is missing.
install_missing() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q ' installed$' ||
      missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing: ${missing[*]}" >&2
  local sudo=()
  [ "$(id -u)" -eq 0 ] || sudo=(sudo)
  {
    "${sudo[@]}" apt-get update &&
      "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}"
  } >"${TMPDIR:-/tmp}/korvex-install.$$.log" 2>&1 || {
    cat "${TMPDIR:-/tmp}/korvex-install.$$.log" >&2
    rm -f "${TMPDIR:-/tmp}/korvex-install.$$.log"
    echo "The packages could not be installed." >&2
    return 1
  }
  rm -f "${TMPDIR:-/tmp}/korvex-install.$$.log"
}

# build_quietly FOLDER COMMAND…: runs a build step; its output is shown when it fails.
build_quietly() {
  local log="$1/build.log"
  shift
  "$@" >"$log" 2>&1 || {
    cat "$log" >&2
    echo "The build failed." >&2
    return 1
  }
}

# configure ROOT PRESET FOLDER TESTS [ARGS…]: the preset in ROOT/FOLDER, with or without the tests (ON
# or OFF). What is configured already stays, unless tests are wanted that were left out.
configure() {
  local root=$1 preset=$2 folder=$1/$3 tests=$4
  shift 4
  if [ -f "$folder/build.ninja" ]; then
    [ "$tests" = OFF ] || grep -q '^KORVEX_TESTS:BOOL=ON' "$folder/CMakeCache.txt" && return 0
  fi
  mkdir -p "$folder"
  build_quietly "$folder" cmake -S "$root" --preset "$preset" -DKORVEX_TESTS="$tests" "$@"
}

# build FOLDER TARGET…
build() {
  local folder=$1
  shift
  ninja -C "$folder" -n "$@" 2>/dev/null | grep -q 'no work to do' || echo "Building ..." >&2
  build_quietly "$folder" ninja -C "$folder" "$@"
}

build_programs() {
  configure "$1" release build OFF
  build "$1/build" korvex korvex-convert workbook-dump
}

build_all() {
  configure "$1" release build ON
  build "$1/build" all
}

# show_rows N: the first N rows of what workbook-dump prints, as a table of the columns that hold data
# in them; numbers shortened to six digits.
show_rows() {
  awk -F'\t' -v rows="$1" '
    $2 > rows { next }
    {
      value = $4 == "number" ? sprintf("%.6g", $5) : $5
      cell[$2, $3] = value
      if (length(value) > width[$3]) width[$3] = length(value)
      if ($2 > 1 && $3 > last) last = $3
    }
    END {
      for (r = 1; r <= rows; ++r) {
        line = ""
        for (c = 1; c <= last; ++c) line = line sprintf("%-" width[c] "s  ", cell[r, c])
        sub(/ +$/, "", line)
        print line
      }
    }'
}
