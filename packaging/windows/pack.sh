# What ./release makes of the Windows programs. Sourced by it and by its check; packaging, version, work
# and SOURCE_DATE_EPOCH are set there.
# shellcheck shell=bash disable=SC2154

make_zip() { # TREE ARCHIVE
  (cd "${1%/*}" && find "${1##*/}" | sort | zip -q -9 -X -@ "$2")
}

# installer_files TREE: what the installer brings and the uninstaller removes, file by file; a folder
# goes only when it is empty by then.
installer_files() {
  local file folder
  cd "$1" || return
  echo '!macro InstallFiles'
  find . -type d -printf '%P\n' | sort | while read -r folder; do
    echo "  SetOutPath \"\$INSTDIR${folder:+\\${folder//\//\\}}\""
    find "./$folder" -maxdepth 1 -type f | sort | while read -r file; do
      echo "  File \"$1/${file#./}\""
    done
  done
  echo '!macroend'
  echo '!macro CheckUnused'
  find . -name '*.exe' -printf '%P\n' | sort | while read -r file; do
    echo "  !insertmacro RefuseInUse \"${file//\//\\}\""
  done
  echo '!macroend'
  echo '!macro DeleteFiles'
  find . -type f -printf '%P\n' | sort | while read -r file; do
    echo "  Delete \"\$INSTDIR\\${file//\//\\}\""
  done
  find . -mindepth 1 -type d -printf '%P\n' | sort -r | while read -r folder; do
    echo "  RMDir \"\$INSTDIR\\${folder//\//\\}\""
  done
  echo '!macroend'
}

# make_installer TREE INSTALLER: signed, and its uninstaller with it, when there is a certificate.
make_installer() {
  (installer_files "$1") >"$work/files.nsh"
  makensis -V2 -DVERSION="$version" -DSOURCE="$packaging/windows" -DFILES="$work/files.nsh" \
    -DSIZE="$(du -sk --apparent-size "$1" | cut -f1)" -DOUTPUT="$2" \
    -DSIGN="$packaging/../tools/sign-windows" "$packaging/windows/installer.nsi"
}

# make_winget INSTALLER URL FOLDER: the manifests by which winget installs what is found below URL.
make_winget() {
  local manifest
  mkdir "$3"
  for manifest in "$packaging"/windows/winget/*.yaml; do
    sed -e "s|@version@|$version|" -e "s|@url@|$2|" -e "s|@date@|$(date -d "@$SOURCE_DATE_EPOCH" +%F)|" \
      -e "s|@sha256@|$(sha256sum "$1" | cut -c1-64 | tr '[:lower:]' '[:upper:]')|" \
      "$manifest" >"$3/${manifest##*/}"
  done
}
