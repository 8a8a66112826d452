#!/usr/bin/env bash
# What desktops, man and shells are told about the programs, against the programs themselves:
#
#   tests/install/check_desktop.sh PREFIX
set -uo pipefail

prefix=$(cd "$1" && pwd)
program=$prefix/bin/korvex-convert
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work LC_ALL=C.UTF-8
unset XDG_CONFIG_HOME XDG_STATE_HOME XDG_DATA_HOME

failed=0
check() { # WHAT CONDITION...
  local what=$1
  shift
  "$@" || {
    failed=1
    echo "FAILED: $what"
  }
}

entry=$prefix/share/applications/korvex.desktop
check "the desktop entry is valid" desktop-file-validate "$entry"
command=$(sed -n 's/^Exec=//p' "$entry")
check "the desktop entry starts the window" [ -x "$prefix/bin/${command%% *}" ]
check "the desktop entry has its icon" \
  [ -s "$prefix/share/icons/hicolor/scalable/apps/$(sed -n 's/^Icon=//p' "$entry").svg" ]
metainfo=$prefix/share/metainfo/org.korvex.korvex.metainfo.xml
check "the metainfo is valid" [ "$(appstreamcli validate --no-net "$metainfo" >"$work/told" && echo yes)" = yes ]
check "the metainfo names this version" \
  grep -q "<release version=\"$("$program" --version | sed 's/.* //')\"" "$metainfo"

# The man pages and --help name the same options.
help_options() { # PROGRAM
  "$1" --help | grep -oE '^  +-[^ ]*' | tr -d ' ' | tr ',' '\n' | sort
}
man_options() { # PAGE
  zcat -f "$1" | sed -e 's/\\-/-/g' -e 's/\\f.//g' -e 's/["\\,]/ /g' | awk '
    /^\.SH/ { inside = /OPTIONS/ }
    after && inside { print " " $0 }
    { after = /^\.TP/ }' | grep -oE ' --?[a-z][a-z-]*' | tr -d ' ' | sort
}
help_options "$program" >"$work/options"
check "options in --help" [ "$(wc -l <"$work/options")" -ge 20 ]
check "the man page names the options" \
  diff "$work/options" <(man_options "$prefix"/share/man/man1/korvex-convert.1*)

# The columns of the sample file are those of the folder in the settings.
mkdir -p "$HOME/campaign/Set 1"
cp "$prefix/share/korvex/samples/campaign/Set 1 kinase inhibitors/KIN01-1-1.xls" "$HOME/campaign/Set 1"
"$program" -q --save-settings -k "compound ID" -c "cell plate #" -d "Delta OD" "$HOME/campaign" >"$work/told" 2>&1
"$program" --list-columns 2>/dev/null | sort >"$work/columns"
check "columns" grep -qx 'compound ID' "$work/columns"
echo >"$HOME/a-file.xls"

# same_offers SHELL: SHELL_offers WORD… prints what the last word is completed to, maybe quoted.
same_offers() {
  check "$1: options" diff "$work/options" <("$1_offers" - | sort)
  check "$1: columns" diff "$work/columns" <("$1_offers" --key "" | sed 's/\\//g' | sort)
  check "$1: choices" [ "$("$1_offers" --spreadsheet e)" = embedded ]
  check "$1: folders" [ "$("$1_offers" camp | tr -d /)" = campaign ]
  check "$1: files" [ "$("$1_offers" --files x.xls a)" = a-file.xls ]
}
cd "$HOME" || exit
bash_offers() {
  # shellcheck disable=SC2016 # for the inner shell
  bash --norc -c 'compopt() { :; }
    . "$0" && COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) && _korvex_convert && printf "%s\n" "${COMPREPLY[@]}"' \
    "$prefix/share/bash-completion/completions/korvex-convert" "$program" "$@"
}
fish_offers() {
  # shellcheck disable=SC2016
  PATH=$prefix/bin:$PATH fish --no-config -c 'source $argv[1]
    complete -C "korvex-convert $(string join " " -- (string escape -- $argv[2..-2])) $argv[-1]"' \
    "$prefix/share/fish/vendor_completions.d/korvex-convert.fish" "${@:1:$#-1}" "${*: -1}" | cut -f1
}
same_offers bash
same_offers fish
check "zsh: options" diff "$work/options" <(zsh -fc '_arguments() { print -rl -- "$@" }; . "$0"' \
  "$prefix/share/zsh/vendor-completions/_korvex-convert" |
  grep -oE '^(\*|\([^)]*\))--?[a-z-]+' | grep -oE -- '--?[a-z-]+$' | sort)

exit $failed
