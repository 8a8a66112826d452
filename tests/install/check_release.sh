#!/usr/bin/env bash
# Uses the archives of a release as their users do; those for Windows under Wine.
#
#   tests/install/check_release.sh DIST_DIR
set -uo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
dist=$(cd "$1" && pwd)
work=$(mktemp -d)
export HOME=$work/home LC_ALL=C.UTF-8 WINEPREFIX=$work/wine
unset XDG_CONFIG_HOME XDG_STATE_HOME
mkdir "$HOME"
finish() {
  wineserver -k
  wineserver -w
  rm -rf "$work"
}
trap finish EXIT

failed=0
check() { # WHAT CONDITION...
  local what=$1
  shift
  "$@" || {
    failed=1
    echo "FAILED: $what"
  }
}

wine() { "$root/tools/under-wine" "$@" 2>/dev/null; }
native() { local path=Z:$1 && printf '%s' "${path//\//\\}"; } # FILE: as Windows programs name it
listed() { (cd "$1" && find . | sort); }

# A failing installer may return 0, hence the checks of what is there.
setup() { # status in $status
  wine "$installer" /S
  status=$?
  wineserver -w
}
uninstall() {
  wine "$home/uninstall.exe" /S
  wineserver -w # it goes on in a copy of itself
}

# What CMakeLists.txt hardens the programs with.
is_hardened() { # PROGRAM
  local facts fact missing=
  if [[ $1 == *.exe ]]; then
    facts=$(x86_64-w64-mingw32-objdump -p "$1" && strings "$1")
    set -- HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT 'stack smashing detected' '__n < this->size()'
  else
    # The start-up objects of the C library have two targets of indirect jumps, the programs thousands.
    facts=$(readelf -lWd --dyn-syms "$1" && objdump -d "$1" | grep -c endbr64)
    set -- 'Flags: .*PIE' 'GNU_STACK .* RW ' GNU_RELRO 'Flags: .*NOW' '^[0-9]{3,}$' \
      ' __stack_chk_fail@' ' __[a-z]+_chk@' ' _ZSt21__glibcxx_assert_fail'
  fi
  for fact in "$@"; do
    grep -qE -- "$fact" <<<"$facts" || missing+=" '$fact'"
  done
  [ -z "$missing" ] || echo "not found:$missing"
  [ -z "$missing" ]
}

converts() { # PROGRAMS SAMPLES: the samples, with what lies in PROGRAMS
  local output=$2/campaign/campaign.xls
  if [ -e "$1/korvex-convert.exe" ]; then
    wine "$1/korvex-convert.exe" -q --settings "$(native "$2/korvex.ini")" "$(native "$2/campaign")"
    wine "$1/workbook-dump.exe" "$(native "$output")" >"$work/cells"
  else
    "$1/korvex-convert" -q --settings "$2/korvex.ini" "$2/campaign" 2>"$work/told"
    "$1/workbook-dump" "$output" >"$work/cells"
  fi >"$work/printed"
  check "converts the samples" cmp "$root/tests/campaign/expected/samples.tsv" "$work/cells"
}

echo "The archive for Linux"
mkdir "$work/any folder"
tar -C "$work/any folder" -xf "$dist"/korvex-*-linux-*.tar.gz
linux=$(echo "$work/any folder"/*)
check "licence" cmp "$root/LICENSE" "$linux/share/doc/korvex/LICENSE"
converts "$linux/lib/korvex/bin" "$linux/share/korvex/samples"
for program in korvex korvex-convert workbook-dump; do
  check "$program is hardened" is_hardened "$linux/lib/korvex/bin/$program"
done
version=$("$linux/bin/korvex-convert" --version)
version=${version##* }
check "the window" [ "$("$linux/bin/korvex" --version 2>&1)" = "korvex $version" ]
for option in $("$linux/bin/korvex-convert" --help | grep -o -- '--[a-z-]*'); do
  check "the man page names $option" \
    grep -qF -- "${option//-/\\-}" "$linux/share/man/man1/korvex-convert.1"
done

echo "The Debian package"
deb=$(echo "$dist"/korvex_*.deb)
dpkg-deb -x "$deb" "$work/deb"
check "version" [ "$(dpkg-deb -f "$deb" Version)" = "$version" ]
check "depends on wx" grep -q libwxgtk <<<"$(dpkg-deb -f "$deb" Depends)"
check "changelog" [ "$(zcat "$work/deb/usr/share/doc/korvex/changelog.gz" |
  dpkg-parsechangelog -l - -S Version)" = "$version" ]
check "files of root alone" [ -z "$(dpkg-deb -c "$deb" | grep -v ' root/root ')" ]
cp -r "$work/deb/usr/share/korvex/samples" "$work"
converts "$work/deb/usr/lib/korvex/bin" "$work/samples"
if command -v lintian >/dev/null; then
  # Nobody has an address yet.
  check "nothing for lintian" lintian --allow-root --fail-on error,warning \
    --suppress-tags bogus-mail-host,bogus-mail-host-in-debian-changelog "$deb"
fi

echo "The archive for Windows"
mkdir "$work/Größe µ"
unzip -q "$dist"/korvex-*-windows-*.zip -d "$work/Größe µ"
windows=$(echo "$work/Größe µ"/*)
(cd "$windows" && find . -type f | sort) >"$work/files"
check "help beside the programs" diff -r "$root/help" "$windows/bin/Help"
check "licence" cmp "$root/LICENSE" "$windows/LICENSE.txt"
for licence in "$windows"/licences/*; do
  check "NOTICES.txt names ${licence##*/}" grep -q "licences/${licence##*/}" "$windows/NOTICES.txt"
done
for program in korvex korvex-convert workbook-dump; do
  file=$windows/bin/$program.exe
  check "$program: version" \
    [ "$(strings -el "$file" | grep -A1 -x ProductVersion | tail -1)" = "$version" ]
  # Every Windows has these.
  foreign=$(x86_64-w64-mingw32-objdump -p "$file" | sed -n 's/^\tDLL Name: //p' | tr '[:upper:]' '[:lower:]' |
    grep -vxE '(advapi32|comctl32|comdlg32|gdi32|gdiplus|kernel32|msimg32|msvcrt|ole32|oleacc|oleaut32|rpcrt4|shell32|shlwapi|user32|uuid|uxtheme|version|winmm|winspool|ws2_32)\.(dll|drv)')
  check "$program imports $foreign" [ -z "$foreign" ]
  check "$program is hardened" is_hardened "$file"
done
converts "$windows/bin" "$windows/samples"

echo "The installer"
installer=$(echo "$dist"/korvex-*-setup-*.exe)
local_data=$(echo "$WINEPREFIX"/drive_c/users/*/AppData/Local | tr ' ' '\n' | grep -v /Public/)
roaming=${local_data%Local}Roaming
home=$local_data/Programs/KORVEX
programs=$home/bin
before=$(listed "$roaming")
setup
check "exit status is $status" [ "$status" = 0 ]
check "brings what the zip holds" diff "$work/files" \
  <(cd "$home" && find . -type f ! -name uninstall.exe | sort)
check "start menu" [ -s "$roaming/Microsoft/Windows/Start Menu/Programs/KORVEX/KORVEX.lnk" ]
converts "$programs" "$home/samples"
check "window" [ "$(wine "$programs/korvex.exe" --version | tr -d '\r')" = "korvex $version" ]

check "registered" grep -q "\"DisplayVersion\"=\"$version\"" "$WINEPREFIX/user.reg"

echo "Removing it"
rm "$home/samples/campaign/campaign.xls"
uninstall
check "leaves nothing" [ ! -e "$home" ]
check "leaves the start menu as it was" [ "$before" = "$(listed "$roaming")" ]
check "no longer registered" [ "$(grep -c 'Uninstall.*KORVEX' "$WINEPREFIX/user.reg")" = 0 ]

echo "What users have made, and a program that runs"
setup
mkdir -p "$home/AppErr"
own=(AppErr/KORVEX.LOG bin/Help/note.txt samples/campaign/campaign.xls samples/own.ini)
(cd "$home" && tee "${own[@]}" <<<"kept" >/dev/null)
"$root/tests/ui/with_display" "$root/tools/under-wine" "$programs/korvex.exe" >/dev/null 2>&1 &
window=$!
for _ in $(seq 50); do # until it runs; then nothing is replaced or removed
  wine "$installer" /S
  status=$?
  [ "$status" = 2 ] && break
  sleep 0.2
done
check "the installer refuses ($status)" [ "$status" = 2 ]
wine "$home/uninstall.exe" /S "_?=$(native "$home")"
check "the uninstaller refuses" [ $? = 2 ]
check "nothing is removed" [ -e "$programs/korvex-convert.exe" ]
WINEDEBUG=-all command wine taskkill /f /im korvex.exe >/dev/null 2>&1
wait "$window"
setup
check "installs over itself: exit status is $status" [ "$status" = 0 ]
uninstall
check "keeps what users have made" diff <(printf './%s\n' "${own[@]}") \
  <(cd "$home" && find . -type f | sort)

exit $failed
