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

# Errors: a usage error exits 2, a bad file 1, and a failed export leaves nothing behind.
"$talmo" tpif export >/dev/null 2>&1; [ $? -eq 2 ] || { echo "FAIL usage status"; status=1; }
"$talmo" tpif export "$tmp/missing.plist" >/dev/null 2>&1; [ $? -eq 1 ] || { echo "FAIL missing file status"; status=1; }
printf '<plist version="1.0"><array/></plist>' >"$tmp/array.plist"
"$talmo" tpif export "$tmp/array.plist" -o "$tmp/out.tpif" >/dev/null 2>&1
[ $? -eq 1 ] && [ ! -e "$tmp/out.tpif" ] || { echo "FAIL non-dictionary settings"; status=1; }
"$talmo" tpif export "$src/examples/tpif-plain-job.plist" -o "$tmp/no/such/dir/out.tpif" >/dev/null 2>&1
[ $? -eq 1 ] || { echo "FAIL unwritable output status"; status=1; }
# Without "TPIFOptions" the document is empty.
printf '<plist version="1.0"><dict/></plist>' >"$tmp/empty.plist"
"$talmo" tpif export "$tmp/empty.plist" -o "$tmp/empty.tpif" 2>/dev/null && [ -e "$tmp/empty.tpif" ] && [ ! -s "$tmp/empty.tpif" ] ||
  { echo "FAIL empty settings"; status=1; }
exit $status
