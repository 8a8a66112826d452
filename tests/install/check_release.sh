#!/usr/bin/env bash
# Uses the archives of a release as their users do; those for Windows under Wine.
#
#   tests/install/check_release.sh DIST_DIR
set -uo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
dist=$(cd "$1" && pwd)
. "$root/tools/setup.sh"
. "$root/tools/windows.sh"
install_missing "${WINDOWS_PACKAGES[@]}" "${RELEASE_PACKAGES[@]}" "${RELEASE_CHECK_PACKAGES[@]}"
work=$(mktemp -d)
chmod 711 "$work" # other users go through it
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
setup() { # OPTIONS...; status in $status
  wine "$installer" /S "$@"
  status=$?
  wineserver -w
}
uninstall() {
  wine "$home/uninstall.exe" /S
  wineserver -w # it goes on in a copy of itself
}

# What CMakeLists.txt hardens the programs with, or the FACTS alone.
is_hardened() { # PROGRAM FACTS...
  local facts fact lacking=''
  if [[ $1 == *.exe ]]; then
    facts=$(x86_64-w64-mingw32-objdump -p "$1" && strings "$1")
    shift
    [ $# -gt 0 ] || set -- HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT 'stack smashing detected' '__n < this->size()'
  else
    # The start-up objects of the C library have two targets of indirect jumps, the programs thousands.
    facts=$(readelf -lWd --dyn-syms "$1" && objdump -d "$1" | grep -c endbr64)
    set -- 'Flags: .*PIE' 'GNU_STACK .* RW ' GNU_RELRO 'Flags: .*NOW' '^[0-9]{3,}$' \
      ' __stack_chk_fail@' ' __[a-z]+_chk@' ' _ZSt21__glibcxx_assert_fail'
  fi
  for fact in "$@"; do
    grep -qE -- "$fact" <<<"$facts" || lacking+=" '$fact'"
  done
  [ -z "$lacking" ] || echo "not found:$lacking"
  [ -z "$lacking" ]
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

# The users of one computer share what is installed and the campaign; what they make is their own.
user() { # NUMBER COMMAND...
  local number=$1 as=()
  shift
  [ "$(id -u)" != 0 ] || as=(setpriv --reuid $((65000 + number)) --regid $((65000 + number)) --clear-groups)
  HOME=$work/user$number "${as[@]}" "$@"
}
use() { # NUMBER KEYS...: a conversion that works, and one that fails
  local number=$1 key keys=()
  shift
  for key; do keys+=(-k "$key"); done
  user "$number" "$programs/korvex-convert" -q --save-settings "${keys[@]}" -c "compound #" -d "Delta OD" \
    -o "$work/user$number/output.xls" "$work/shared/campaign"
  user "$number" "$programs/korvex-convert" -q --files "$work/shared/no-workbook.xls"
}
as_it_was() { (cd "$1" && find . -printf '%p %T@ %m\n' | sort); }
use_at_once() { # PROGRAMS SYSTEM_FOLDER
  local programs=$1 number own
  cp -r "$work/samples" "$work/shared"
  echo "no workbook" >"$work/shared/no-workbook.xls"
  chmod -R a-w "$2" "$work/shared"
  as_it_was "$2" >"$work/before"
  as_it_was "$work/shared" >>"$work/before"
  for number in 1 2; do
    mkdir "$work/user$number"
    [ "$(id -u)" != 0 ] || chown "$((65000 + number)):$((65000 + number))" "$work/user$number"
  done
  use 1 "compound ID" "cell plate #" "cell plate wells ##" >"$work/told1" 2>&1 &
  use 2 "cell plate #" "cell plate wells ##" "compound ID" >"$work/told2" 2>&1 &
  wait
  check "nothing of others changes" diff "$work/before" <(as_it_was "$2" && as_it_was "$work/shared")
  for number in 1 2; do
    own=$work/user$number
    check "output of user $number" [ -s "$own/output.xls" ]
    check "settings of user $number" [ "$(stat -c %a "$own/.config/korvex/korvex.ini")" = 600 ]
    check "log of user $number" grep -q '^Error Number' "$own/.local/state/korvex/AppErr/KORVEX.LOG"
  done
  check "keys of the users" [ "$(sed -n 's/^Keys Columns=\(....\).*/\1/p' \
    "$work"/user[12]/.config/korvex/korvex.ini | tr '\n' ' ')" = "comp cell " ]
  chmod -R u+w "$2" "$work/shared"
}

echo "Digests and notes"
check "digests" env -C "$dist" sha256sum --check --quiet SHA256SUMS
check "a digest of each file" diff <(cd "$dist" && find . -type f ! -name SHA256SUMS -printf '%P\n' | sort) \
  <(sed 's/^[^ ]*  //' "$dist/SHA256SUMS" | sort)
check "notes" [ "$(grep -c '^- ' "$dist"/korvex-*-notes.md)" -ge 1 ]

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
"$root/tests/install/check_desktop.sh" "$linux" || failed=1

echo "The Debian package"
deb=$(echo "$dist"/korvex_*.deb)
dpkg-deb -x "$deb" "$work/deb"
check "version" [ "$(dpkg-deb -f "$deb" Version)" = "$version-1" ]
check "depends on wx" grep -q libwxgtk <<<"$(dpkg-deb -f "$deb" Depends)"
check "changelog" [ "$(zcat "$work/deb/usr/share/doc/korvex/changelog.Debian.gz" |
  dpkg-parsechangelog -l - -S Version)" = "$version-1" ]
check "changes" grep -q "^## $version " <(zcat "$work/deb/usr/share/doc/korvex/changelog.gz")
check "files of root alone" [ -z "$(dpkg-deb -c "$deb" | grep -v ' root/root ')" ]
cp -r "$work/deb/usr/share/korvex/samples" "$work"
use_at_once "$work/deb/usr/lib/korvex/bin" "$work/deb"
converts "$work/deb/usr/lib/korvex/bin" "$work/samples"
check "nothing for lintian" lintian --allow-root --fail-on error,warning "$deb"

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
check "manifests" "$root/tests/install/check_manifests.py" "$dist" "$windows/bin"
converts "$windows/bin" "$windows/samples"
rm -r "$windows/samples/campaign/campaign.xls" "$windows/AppErr" # not to be packed below

echo "The installer"
installer=$(echo "$dist"/korvex-*-setup-*.exe)
local_data=$(echo "$WINEPREFIX"/drive_c/users/*/AppData/Local | tr ' ' '\n' | grep -v /Public/)
in_registry() { # HIVE PATTERN: how many lines have it
  grep -cE "$2" "$WINEPREFIX/$1.reg"
}
entries='^\[Software.*(Uninstall|shell)\\\\KORVEX' # of what is registered
# installs WHOM HIVE HOME START_MENU OPTIONS...: what the installer leaves, and its uninstaller.
installs() {
  local whom=$1 hive=$2 home=$3 menu=$4 before other=system
  shift 4
  [ "$hive" = user ] || other=user
  before=$(listed "$menu")
  setup "$@"
  check "$whom: exit status is $status" [ "$status" = 0 ]
  check "$whom: brings what the zip holds" diff "$work/files" \
    <(cd "$home" && find . -type f ! -name uninstall.exe | sort)
  check "$whom: start menu" [ -s "$menu/KORVEX/KORVEX.lnk" ]
  check "$whom: window" [ "$(wine "$home/bin/korvex.exe" --version | tr -d '\r')" = "korvex $version" ]
  check "$whom: registered" [ "$(in_registry "$hive" "^\"DisplayVersion\"=\"$version\"")" = 1 ]
  check "$whom: opens folders" \
    [ "$(in_registry "$hive" '^@=.*\\KORVEX\\\\bin\\\\korvex.exe\\" \\"%1\\""')" = 1 ]
  check "$whom: registered for them alone" [ "$(in_registry "$other" "$entries")" = 0 ]
  converts "$home/bin" "$home/samples"
  rm "$home/samples/campaign/campaign.xls"
  uninstall
  check "$whom: leaves nothing" [ ! -e "$home" ]
  check "$whom: leaves the start menu as it was" [ "$before" = "$(listed "$menu")" ]
  check "$whom: no longer registered" [ "$(in_registry "$hive" "$entries")" = 0 ]
}
check "the installer is hardened" is_hardened "$installer" HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT
start_menu="Microsoft/Windows/Start Menu/Programs"
installs "all users" system "$WINEPREFIX/drive_c/Program Files/KORVEX" \
  "$WINEPREFIX/drive_c/ProgramData/$start_menu" /AllUsers
installs "one user" user "$local_data/Programs/KORVEX" "${local_data%Local}Roaming/$start_menu"

echo "Signing, with a certificate of our own"
openssl req -x509 -newkey rsa:2048 -subj "/CN=KORVEX test" -days 2 -passout pass:open \
  -addext extendedKeyUsage=codeSigning -keyout "$work/key" -out "$work/certificate" 2>/dev/null
openssl pkcs12 -export -inkey "$work/key" -in "$work/certificate" -passin pass:open -passout pass:sesame \
  -out "$work/signer.p12"
echo sesame >"$work/password"
signed() { # FILE
  osslsigncode verify -CAfile "$work/certificate" -in "$1" >"$work/told" 2>&1
}
check "not signed by us" [ "$(signed "$installer" && echo signed)" = "" ]
(
  export KORVEX_CERTIFICATE=$work/signer.p12 KORVEX_PASSWORD_FILE=$work/password
  packaging=$root/packaging # for make_installer
  . "$root/packaging/windows/pack.sh"
  "$root/tools/sign-windows" "$windows"/bin/*.exe && make_installer "$windows" "$work/signed-korvex.exe"
) || failed=1
installer=$work/signed-korvex.exe
check "the installer is signed" signed "$installer"

echo "What users have made, and a program that runs"
home=$local_data/Programs/KORVEX
programs=$home/bin
setup
for file in "$home/uninstall.exe" "$programs"/*.exe; do
  check "${file##*/} is signed" signed "$file"
done
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
