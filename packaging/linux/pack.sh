# What ./release makes of the Linux programs. Sourced after its own settings; root, packaging, version,
# work and SOURCE_DATE_EPOCH are those of ./release.
# shellcheck shell=bash disable=SC2154

# The revision of the package counts when the same version is packed anew.
debian_version=$version-1

# find_depends PACKAGE: the Debian packages that its programs are linked with, into $depends.
find_depends() {
  # dpkg-shlibdeps wants to stand where the source of a package would lie.
  printf 'Source: korvex\n\nPackage: korvex\nArchitecture: any\n' >"$work/debian/control"
  depends=$(cd "$work" &&
    dpkg-shlibdeps -O "$1"/usr/lib/korvex/bin/{korvex,korvex-convert,workbook-dump})
  depends=${depends#shlibs:Depends=}
}

# make_tar TREE ARCHIVE: the folder TREE itself is the archive's only entry.
make_tar() {
  sed "s/@depends@/$depends/" "$packaging/linux/README" >"$1/README"
  same_times "$1"
  tar -C "${1%/*}" --sort=name --owner=0 --group=0 --numeric-owner --format=gnu -c "${1##*/}" |
    gzip -9n >"$2"
}

# debian_changelog: CHANGELOG.md in the form that Debian's programs read. "Unreleased" is taken for the
# version that is packed. Lines are broken anew, since those of Debian begin further to the right.
debian_changelog() {
  awk -v version="$version" -v revision="${debian_version#"$version"}" -v maintainer="$maintainer" \
    -v packed="$(date -R -d "@$SOURCE_DATE_EPOCH")" '
    function flush_item(  count, words, i, line) {
      count = split(item, words)
      line = "  *"
      for (i = 1; i <= count; ++i) {
        if (length(line " " words[i]) > 78) { print line; line = "   " }
        line = line " " words[i]
      }
      if (count) print line
      item = ""
    }
    function finish() { if (entry) { flush_item(); printf "\n -- %s  %s\n\n", maintainer, date } }
    /^## / {
      name = $2 == "Unreleased" ? version : $2
      if (name == entry) next
      finish()
      printf "korvex (%s) unstable; urgency=medium\n\n", (entry = name) revision
      date = packed
      if (entry != version) ("date -R -d " substr($3, 2, 10)) | getline date
    }
    entry && /^- / { flush_item(); item = substr($0, 3) }
    entry && /^  / { item = item $0 }
    END { finish() }' "$root/CHANGELOG.md"
}

# make_deb PACKAGE ARCHIVE: PACKAGE holds its files below usr already.
make_deb() {
  local package=$1 doc=$1/usr/share/doc/korvex
  mkdir -p "$doc"
  cp "$packaging/debian/copyright" "$doc"
  rm "$doc/LICENSE" # in Debian's form instead
  mv "$doc/CHANGELOG.md" "$doc/changelog"
  debian_changelog >"$doc/changelog.Debian"
  gzip -9n "$doc"/changelog* "$package"/usr/share/man/man1/*.1
  install -D -m 644 "$packaging/debian/lintian-overrides" "$package/usr/share/lintian/overrides/korvex"
  sed -e "s/@version@/$debian_version/" -e "s/@architecture@/$(dpkg --print-architecture)/" \
    -e "s/@maintainer@/$maintainer/" -e "s/@depends@/$depends/" \
    -e "s/@size@/$(du -sk --apparent-size "$package/usr" | cut -f1)/" \
    "$packaging/debian/control.in" >"$package/DEBIAN/control"
  (cd "$package" && find usr -type f | sort | xargs -d '\n' md5sum) >"$package/DEBIAN/md5sums"
  same_times "$package"
  dpkg-deb --root-owner-group --build "$package" "$2" >/dev/null
}
