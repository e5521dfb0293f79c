# What a release is made of; to be read by a script that stands in the project's folder.

version=$(sed -n 's/^project(zeb VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
[ -n "$version" ] || { echo "CMakeLists.txt has no project(zeb VERSION ...)" >&2; exit 1; }

# The moment of everything that is made, so that it can be made again to the byte.
if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
  if [ -f .source-date ]; then
    SOURCE_DATE_EPOCH=$(cat .source-date)
  else
    SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null) ||
      { echo "no commit and no SOURCE_DATE_EPOCH: the date of this version is not known" >&2; exit 1; }
  fi
fi
export SOURCE_DATE_EPOCH

# The files of the source, each ended by NUL: what git knows or would take, else all but what is built.
list_files() {
  if [ -e .git ]; then
    git ls-files -z --cached --others --exclude-standard --deduplicate |
      while IFS= read -r -d '' file; do [ ! -e "$file" ] || printf '%s\0' "$file"; done
  else
    find . \( -path ./build -o -path ./demo \) -prune -o \( -type f -o -type l \) -printf '%P\0'
  fi | LC_ALL=C sort -z
}

# The points of the newest version in docs/changelog.md, whose heading must be this version.
newest_changes() {
  local newest
  newest=$(sed -n 's/^## \([0-9.]*\).*/\1/p' docs/changelog.md | head -n 1)
  [ "$newest" = "$version" ] ||
    { echo "docs/changelog.md begins with '$newest', CMakeLists.txt says '$version'" >&2; return 1; }
  awk '/^## /{n++; next} n==1 && NF' docs/changelog.md
}

write_debian_changelog() {
  local changes maintainer
  changes=$(newest_changes) || return 1
  maintainer=$(sed -n 's/^Maintainer: //p' debian/control)
  printf 'zeb (%s) unstable; urgency=medium\n\n' "$version"
  # A point may go over several lines; here each is folded anew.
  awk '/^- /{if (point) print point; point=substr($0,3); next} {sub(/^ +/,""); point=point " " $0} END{print point}' <<<"$changes" |
    while IFS= read -r point; do fold -s -w 74 <<<"$point" | sed 's/ *$//; 1s/^/  * /; 2,$s/^/    /'; done
  printf '\n -- %s  %s\n' "$maintainer" "$(LC_ALL=C date -u -R -d "@$SOURCE_DATE_EPOCH")"
}
