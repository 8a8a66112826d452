# What ./run, ./test and the release share for the Windows programs: cross-built here, started under
# Wine. Sourced after setup.sh, never run.

WINDOWS_PACKAGES=(g++-mingw-w64-x86-64-posix cmake ninja-build libcli11-dev googletest
  libwxgtk3.2-dev dpkg-dev make wine wine64 xvfb openbox)

# Only what the windows use; what is left out would have to be shipped.
WX_OPTIONS=(--host=x86_64-w64-mingw32 --disable-shared --enable-monolithic --without-libpng
  --without-libjpeg --without-libtiff --without-expat --without-regex --with-zlib=no
  --without-opengl --disable-svg --disable-html --disable-xrc --disable-aui --disable-propgrid
  --disable-ribbon --disable-stc --disable-richtext --disable-mediactrl --disable-webview
  --disable-sockets --disable-protocols --disable-webrequest)

# wx_windows_folder: where the static wxWidgets for Windows is kept, by version and options. It has
# the version of the machine's own, which the window is written against.
wx_windows_folder() {
  local version key
  version=$(dpkg-query -W -f '${Version}' libwxgtk3.2-dev)
  key=$(printf '%s\n' "${WX_OPTIONS[@]}" | sha256sum | cut -c1-8)
  echo "${XDG_CACHE_HOME:-$HOME/.cache}/korvex/wx-windows-${version//[^0-9a-z.]/-}-$key"
}

# fetch_wx_source FOLDER: Debian's source of wxWidgets, from where its packages come from. The
# machine's own list of sources stays as it is.
fetch_wx_source() (
  cd "$1"
  mkdir -p lists/partial
  apt-get indextargets --format 'deb-src $(SITE) $(RELEASE) $(COMPONENT)' \
    'Created-By: Packages' | sort -u >sources.list
  options=(-o "Dir::Etc::SourceList=$PWD/sources.list" -o Dir::Etc::SourceParts=/dev/null
    -o "Dir::State::Lists=$PWD/lists")
  apt-get "${options[@]}" update
  apt-get "${options[@]}" source --download-only wxwidgets3.2
  dpkg-source --no-check -x wxwidgets3.2_*.dsc source
)

# build_wx_windows: builds it once; takes some ten minutes on two cores.
build_wx_windows() (
  folder=$(wx_windows_folder)
  [ -x "$folder/bin/wx-config" ] && return 0
  echo "Building wxWidgets for Windows, once (some ten minutes) ..." >&2
  mkdir -p "${folder%/*}"
  work=$(mktemp -d "${folder%/*}/build.XXXXXX")
  trap 'rm -rf "$work"' EXIT
  build_quietly "$work" fetch_wx_source "$work"
  mkdir "$work/build"
  build_quietly "$work" env -C "$work/build" ../source/configure "${WX_OPTIONS[@]}" \
    CC=x86_64-w64-mingw32-gcc-posix CXX=x86_64-w64-mingw32-g++-posix --prefix="$folder"
  build_quietly "$work" make -C "$work/build" -j"$(nproc)"
  build_quietly "$work" make -C "$work/build" install DESTDIR="$work/installed"
  # There at once and whole, also when two builds do this.
  rm -rf "$folder"
  mv "$work/installed$folder" "$folder"
)

# build_windows ROOT TESTS: installs what is missing and builds the Windows programs in
# ROOT/build-windows, with or without the tests (ON or OFF).
build_windows() {
  install_missing "${WINDOWS_PACKAGES[@]}"
  build_wx_windows
  configure "$1" mingw build-windows "$2" -DWX_WINDOWS="$(wx_windows_folder)"
  build "$1/build-windows" all
}

# test_windows ROOT [CTEST ARGS…]: one display for all of Wine's windows.
test_windows() {
  local root=$1
  shift
  WINEPREFIX=$root/build-windows/wine wineserver -k 2>/dev/null || true # it may know another display
  "$root/tests/ui/with_display" ctest --test-dir "$root/build-windows" --output-on-failure \
    -j"$(nproc)" "$@"
}
