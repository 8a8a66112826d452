# What ./run, ./test and the release share for the Windows programs: cross-built here, started under
# Wine. Sourced after setup.sh, never run.

WINDOWS_PACKAGES=(g++-mingw-w64-x86-64-posix libz-mingw-w64-dev libgcrypt-mingw-w64-dev
  cmake ninja-build libcli11-dev googletest dpkg-dev make wine wine64 xvfb openbox)

# The libraries that Debian has no Windows form of, built from Debian's own sources, and the package
# of each that is used on Linux.
WINDOWS_LIBRARIES=(wxwidgets3.2 expat libxlsxwriter)
declare -A LINUX_PACKAGE=([wxwidgets3.2]=libwxgtk3.2-dev [expat]=libexpat1-dev
  [libxlsxwriter]=libxlsxwriter-dev)

# Of wxWidgets only what the windows use; what is left out would have to be shipped.
wxwidgets_OPTIONS=(--host=x86_64-w64-mingw32 --disable-shared --enable-monolithic --without-libpng
  --without-libjpeg --without-libtiff --without-expat --without-regex --with-zlib=no
  --without-opengl --disable-svg --disable-html --disable-xrc --disable-aui --disable-propgrid
  --disable-ribbon --disable-stc --disable-richtext --disable-mediactrl --disable-webview
  --disable-sockets --disable-protocols --disable-webrequest)
# The programs refuse documents that declare entities.
expat_OPTIONS=(-DEXPAT_DTD=OFF -DEXPAT_SHARED_LIBS=OFF -DEXPAT_BUILD_TOOLS=OFF -DEXPAT_BUILD_EXAMPLES=OFF
  -DEXPAT_BUILD_TESTS=OFF -DEXPAT_BUILD_DOCS=OFF)
libxlsxwriter_OPTIONS=(-DBUILD_SHARED_LIBS=OFF)

# apt_sources COMMAND…: apt-get in the current folder, with the sources of what the machine installs
# packages from. The machine's own lists stay as they are.
apt_sources() {
  apt-get -o "Dir::Etc::SourceList=$PWD/sources.list" -o Dir::Etc::SourceParts=/dev/null \
    -o "Dir::State::Lists=$PWD/lists" "$@"
}

# fetch_source PACKAGE FOLDER: Debian's source of it into FOLDER/source.
fetch_source() (
  cd "$2"
  mkdir -p lists/partial
  apt-get indextargets --format 'deb-src $(SITE) $(RELEASE) $(COMPONENT)' \
    'Created-By: Packages' | sort -u >sources.list
  apt_sources update
  # Not every mirror has the sources of the security updates.
  apt_sources source --download-only "$1" ||
    apt_sources source --download-only "$1/$(. /etc/os-release && echo "$VERSION_CODENAME")"
  dpkg-source --no-check -x ./*.dsc source
)

# library_folder PACKAGE: where its static build for Windows is kept, by version and options.
library_folder() {
  local -n options=${1%%[0-9]*}_OPTIONS
  local version key
  version=$(apt-cache policy "${LINUX_PACKAGE[$1]}" | awk '/Candidate:/ { print $2 }')
  key=$(printf '%s\n' "${options[@]}" | sha256sum | cut -c1-8)
  echo "${XDG_CACHE_HOME:-$HOME/.cache}/korvex/windows/$1-${version//[^0-9a-z.]/-}-$key"
}

# build_wx FOLDER PREFIX, build_with_cmake FOLDER PREFIX NAME-OF-OPTIONS SOURCE: the source in
# FOLDER/source, to be used from PREFIX, into FOLDER/installed.
build_wx() {
  mkdir "$1/build"
  build_quietly "$1" env -C "$1/build" ../source/configure "${wxwidgets_OPTIONS[@]}" \
    CC=x86_64-w64-mingw32-gcc-posix CXX=x86_64-w64-mingw32-g++-posix --prefix="$2"
  build_quietly "$1" make -C "$1/build" -j"$(nproc)"
  build_quietly "$1" make -C "$1/build" install DESTDIR="$1/installed"
}
build_with_cmake() {
  local -n options=$3
  build_quietly "$1" cmake -S "$1/$4" -B "$1/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    --toolchain "$root/cmake/mingw-w64.cmake" -DCMAKE_INSTALL_PREFIX="$2" "${options[@]}"
  build_quietly "$1" ninja -C "$1/build"
  build_quietly "$1" env DESTDIR="$1/installed" ninja -C "$1/build" install
}

# build_library PACKAGE: builds it once.
build_library() (
  folder=$(library_folder "$1")
  [ ! -d "$folder" ] || return 0
  echo "Building $1 for Windows, once ..." >&2
  mkdir -p "${folder%/*}"
  work=$(mktemp -d "${folder%/*}/build.XXXXXX")
  trap 'rm -rf "$work"' EXIT
  build_quietly "$work" fetch_source "$1" "$work"
  case $1 in
    wxwidgets3.2) build_wx "$work" "$folder" ;;
    expat) build_with_cmake "$work" "$folder" expat_OPTIONS source/expat ;;
    *) build_with_cmake "$work" "$folder" "${1}_OPTIONS" source ;;
  esac
  # There at once and whole, also when two builds do this.
  mv -T "$work/installed$folder" "$folder" 2>/dev/null || [ -d "$folder" ]
)

# build_windows ROOT TESTS: installs what is missing and builds the Windows programs in
# ROOT/build-windows, with or without the tests (ON or OFF).
build_windows() {
  local root=$1 library folders=
  install_missing "${WINDOWS_PACKAGES[@]}"
  # The one that takes some ten minutes on two cores comes first.
  for library in "${WINDOWS_LIBRARIES[@]}"; do
    build_library "$library"
    folders+=";$(library_folder "$library")"
  done
  configure "$root" mingw build-windows "$2" -DWINDOWS_LIBRARIES="${folders#;}"
  build "$root/build-windows" all
}

# test_windows ROOT [CTEST ARGS…]: one display for all of Wine's windows.
test_windows() {
  local root=$1
  shift
  WINEPREFIX=$root/build-windows/wine wineserver -k 2>/dev/null || true # it may know another display
  "$root/tests/ui/with_display" ctest --test-dir "$root/build-windows" --output-on-failure \
    -j"$(nproc)" "$@"
}
