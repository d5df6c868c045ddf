#!/bin/sh
# export-golden.sh TALMO SOURCE_DIR: exports every examples/tpif-*.plist and compares the
# document byte for byte with tests/tpif/data/<name>.tpif; cmp names the first differing byte.
set -u
talmo=$1
src=$2
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
status=0
for plist in "$src"/examples/tpif-*.plist; do
  name=$(basename "$plist" .plist)
  golden="$src/tests/tpif/data/$name.tpif"
  if ! "$talmo" tpif export "$plist" -o "$tmp/$name.tpif" 2>"$tmp/$name.err"; then
    echo "FAIL $name: export failed"; cat "$tmp/$name.err"; status=1; continue
  fi
  if ! cmp "$tmp/$name.tpif" "$golden"; then
    echo "FAIL $name (actual, golden)"; status=1; continue
  fi
  # Standard output carries the same bytes; diagnostics stay on stderr.
  "$talmo" tpif export "$plist" 2>/dev/null >"$tmp/$name.stdout"
  if ! cmp "$tmp/$name.stdout" "$golden"; then
    echo "FAIL $name on stdout"; status=1; continue
  fi
  echo "ok $name"
done
exit $status
