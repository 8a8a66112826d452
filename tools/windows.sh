# What ./run, ./test and the release share for the Windows programs: cross-built here, started under
# Wine. Sourced after setup.sh, never run.
# shellcheck shell=bash disable=SC2034

WINDOWS_PACKAGES=(g++-mingw-w64-x86-64-posix libz-mingw-w64-dev cmake ninja-build libcli11-dev
  googletest dpkg-dev make wine wine64 xvfb openbox)

# The libraries that Debian has no Windows form of, built from Debian's own sources, and the package
# of each that is used on Linux.
WINDOWS_LIBRARIES=(wxwidgets3.2 libdeflate)
declare -A LINUX_PACKAGE=([wxwidgets3.2]=libwxgtk3.2-dev [libdeflate]=libdeflate-dev)

# As the programs are compiled (HARDENING in CMakeLists.txt).
HARDENED="-O2 -fstack-protector-strong -D_FORTIFY_SOURCE=2"
# Of wxWidgets only what the windows use; what is left out would have to be shipped.
wxwidgets_OPTIONS=(--host=x86_64-w64-mingw32 --disable-shared --enable-monolithic --without-libpng
  --without-libjpeg --without-libtiff --without-expat --without-regex --with-zlib=no
  --without-opengl --disable-svg --disable-html --disable-xrc --disable-aui --disable-propgrid
  --disable-ribbon --disable-stc --disable-richtext --disable-mediactrl --disable-webview
  --disable-sockets --disable-protocols --disable-webrequest CFLAGS="$HARDENED" CXXFLAGS="$HARDENED")
libdeflate_OPTIONS=(CC=x86_64-w64-mingw32-gcc-posix AR=x86_64-w64-mingw32-ar CFLAGS="$HARDENED")

# Where the builds of these libraries are kept, for all checkouts.
WINDOWS_CACHE=${XDG_CACHE_HOME:-$HOME/.cache}/korvex/windows

# apt_sources get|cache COMMAND…: apt in the current folder, with the sources of what the machine
# installs packages from. The machine's own lists stay as they are.
apt_sources() {
  "apt-$1" -o "Dir::Etc::SourceList=$PWD/sources.list" -o Dir::Etc::SourceParts=/dev/null \
    -o "Dir::State::Lists=$PWD/lists" "${@:2}"
}

# is_pinned PACKAGE: WINDOWS_SOURCES says its version.
is_pinned() { [[ " ${WINDOWS_SOURCES:-}" == *" $1="* ]]; }

# wanted_version PACKAGE: the version of its source that WINDOWS_SOURCES in the environment asks for
# ("wxwidgets3.2=3.2.2+dfsg-2 libdeflate=1.14-1"), else the one that the Linux programs' package is
# made from.
wanted_version() {
  local word
  for word in ${WINDOWS_SOURCES:-}; do
    if [ "${word%%=*}" = "$1" ]; then
      echo "${word#*=}"
      return
    fi
  done
  apt-cache show --no-all-versions "${LINUX_PACKAGE[$1]}" | awk '
    /^Version:/ { version = $2 }
    /^Source:/ && NF == 3 { source = substr($3, 2, length($3) - 2) }
    END { print source ? source : version }'
}

# fetch_source PACKAGE WANTED: Debian's source of it into the current folder, its version into the
# file "version". Mirrors list versions whose files they lack, above all those of security updates:
# then the newest one to be had is taken, unless WINDOWS_SOURCES asks for just this version.
fetch_source() {
  local version versions=$2
  mkdir -p lists/partial
  # shellcheck disable=SC2016 # apt's own variables
  apt-get indextargets --format 'deb-src $(SITE) $(RELEASE) $(COMPONENT)' \
    'Created-By: Packages' | sort -u >sources.list
  apt_sources get update
  if ! is_pinned "$1"; then
    versions+=" $(apt_sources cache showsrc --only-source "$1" | sed -n 's/^Version: //p' |
      grep -vxF "$2" | sort -ruV | tr '\n' ' ' || true)"
    versions+=" $(cat "$(library_folder "$1" "$2").instead" 2>/dev/null || true)" # without a network
  fi
  for version in $versions; do
    rm -f ./*.dsc
    if [ -d "$(library_folder "$1" "$version")" ] ||
      apt_sources get source --download-only --only-source "$1=$version"; then
      echo "$version" >version
      return 0
    fi
  done
  echo "No source of $1 is to be had; tried: $versions"
  return 1
}

# library_folder PACKAGE VERSION: where its static build for Windows is kept, by the version of the
# source that it is built from, and by options.
library_folder() {
  local -n options=${1%%[0-9]*}_OPTIONS
  local key
  key=$(printf '%s\n' "${options[@]}" | sha256sum | cut -c1-8)
  echo "$WINDOWS_CACHE/$1-${2//[^0-9a-z.]/-}-$key"
}

# build_wx FOLDER PREFIX, build_deflate FOLDER PREFIX: the source in FOLDER/source, to be used from
# PREFIX, into FOLDER/installed.
build_wx() {
  mkdir "$1/build"
  build_quietly "$1" env -C "$1/build" ../source/configure "${wxwidgets_OPTIONS[@]}" \
    CC=x86_64-w64-mingw32-gcc-posix CXX=x86_64-w64-mingw32-g++-posix --prefix="$2"
  build_quietly "$1" make -C "$1/build" -j"$(nproc)"
  build_quietly "$1" make -C "$1/build" install DESTDIR="$1/installed"
}
# Of libdeflate the static library alone, under the name that the linker looks for.
build_deflate() {
  local library=libdeflatestatic.lib
  build_quietly "$1" make -C "$1/source" -j"$(nproc)" "${libdeflate_OPTIONS[@]}" "$library"
  install -D -m 644 "$1/source/$library" "$1/installed$2/lib/libdeflate.a"
  install -D -m 644 "$1/source/libdeflate.h" "$1/installed$2/include/libdeflate.h"
}

# build_newest PACKAGE WANTED: builds it from the wanted source or what is to be had instead; the
# version of that stands in the file WANTED-FOLDER.instead then.
build_newest() (
  mkdir -p "$WINDOWS_CACHE"
  scratch=$(mktemp -d "$WINDOWS_CACHE/build.XXXXXX")
  trap 'rm -rf "$scratch"' EXIT
  cd "$scratch" || exit
  build_quietly "$scratch" fetch_source "$1" "$2"
  version=$(<version)
  folder=$(library_folder "$1" "$version")
  if [ ! -d "$folder" ]; then
    echo "Building $1 $version for Windows, once ..." >&2
    build_quietly "$scratch" dpkg-source --no-check -x ./*.dsc source
    case $1 in
      wxwidgets3.2) build_wx "$scratch" "$folder" ;;
      libdeflate) build_deflate "$scratch" "$folder" ;;
    esac
    # There at once and whole, also when two builds do this.
    mv -T "$scratch/installed$folder" "$folder" 2>/dev/null || [ -d "$folder" ]
  fi
  [ "$version" = "$2" ] || echo "$version" >"$(library_folder "$1" "$2").instead"
)

# build_library PACKAGE: builds it once; its folder in $library_folder, the version of its source in
# $library_version. What is used instead of a version that is not to be had is said each time; that version
# is asked for again after a day.
build_library() {
  local wanted instead
  wanted=$(wanted_version "$1")
  library_version=$wanted
  library_folder=$(library_folder "$1" "$wanted")
  instead=$library_folder.instead
  if [ ! -d "$library_folder" ]; then
    if is_pinned "$1" ||
      [ -z "$(find "$instead" -mmin -1440 2>/dev/null)" ] ||
      [ ! -d "$(library_folder "$1" "$(<"$instead")")" ]; then
      build_newest "$1" "$wanted"
    fi
    if [ ! -d "$library_folder" ]; then
      library_version=$(<"$instead")
      library_folder=$(library_folder "$1" "$library_version")
      echo "The Windows programs hold $1 $library_version: the source of $wanted is not to be had." >&2
    fi
  fi
}

# build_windows ROOT TESTS: installs what is missing and builds the Windows programs in
# ROOT/build-windows, with or without the tests (ON or OFF).
build_windows() {
  local root=$1 library library_folder library_version folders='' versions=''
  install_missing "${WINDOWS_PACKAGES[@]}"
  # The one that takes some ten minutes on two cores comes first.
  for library in "${WINDOWS_LIBRARIES[@]}"; do
    build_library "$library"
    folders+=";$library_folder"
    versions+="$library $library_version $library_folder"$'\n'
  done
  # What was configured with other libraries would keep them.
  grep -qxF "WINDOWS_LIBRARIES:UNINITIALIZED=${folders#;}" "$root/build-windows/CMakeCache.txt" \
    2>/dev/null || rm -f "$root/build-windows"/{CMakeCache.txt,build.ninja}
  configure "$root" mingw build-windows "$2" -DWINDOWS_LIBRARIES="${folders#;}"
  build "$root/build-windows" all
  printf %s "$versions" >"$root/build-windows/libraries.txt" # for tools/make-sbom
}

# test_windows ROOT [CTEST ARGS…]: one display for all of Wine's windows.
test_windows() {
  local root=$1
  shift
  WINEPREFIX=$root/build-windows/wine wineserver -k 2>/dev/null || true # it may know another display
  "$root/tests/ui/with_display" ctest --test-dir "$root/build-windows" --output-on-failure \
    -j"$(nproc)" "$@"
}
