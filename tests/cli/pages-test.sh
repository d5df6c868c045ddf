#!/bin/sh
# talmo pages: byte-exact stdout on success; on a parse error an empty stdout, exit status 1
# and the error code named on stderr.
set -u
talmo="$1"
tmp="${TMPDIR:-/tmp}/talmo-pages-test.$$"
mkdir -p "$tmp" || exit 1
trap 'rm -rf "$tmp"' EXIT
failures=0

ok() { # expected-stdout args...
    expected="$1"
    shift
    printf '%b' "$expected" > "$tmp/expected"
    "$talmo" pages "$@" > "$tmp/out" 2> "$tmp/err"
    status=$?
    if [ "$status" -ne 0 ] || ! cmp -s "$tmp/expected" "$tmp/out"; then
        echo "FAIL: talmo pages $*: status $status"; cat "$tmp/out" "$tmp/err"
        failures=$((failures + 1))
    fi
}

refused() { # code args...
    code="$1"
    shift
    "$talmo" pages "$@" > "$tmp/out" 2> "$tmp/err"
    status=$?
    if [ "$status" -ne 1 ] || [ -s "$tmp/out" ] || ! grep -q "error $code " "$tmp/err"; then
        echo "FAIL: talmo pages $*: status $status, expected error $code"; cat "$tmp/out" "$tmp/err"
        failures=$((failures + 1))
    fi
}

ok '1 3\n7 1\n' '1-3, 7'
ok '1 1\n2 1\n3 1\n7 1\n' --single '1-3, 7'
ok '1 4\n' -- -4
ok '1 4\n' -4
ok '10 99990\n' 10-
ok '2 1\n4 1\n' '2 4'
ok '0 1\n' 0
refused 1002 5-3
refused 1001 -- 1--3
refused 1001 -- -,2
refused 1001 -- -
refused 1001 ''
refused 1001 ',,,'
refused 1000 100000
refused 1000 --single '1-,1-'

# 99,995 single pages: first and last lines and the count.
"$talmo" pages --single 5- > "$tmp/many" || failures=$((failures + 1))
[ "$(wc -l < "$tmp/many")" -eq 99995 ] && [ "$(head -n 1 "$tmp/many")" = "5 1" ] &&
    [ "$(tail -n 1 "$tmp/many")" = "99999 1" ] || { echo "FAIL: --single 5-"; failures=$((failures + 1)); }

# Usage errors exit 2.
"$talmo" pages > /dev/null 2>&1; [ $? -eq 2 ] || { echo "FAIL: no TEXT"; failures=$((failures + 1)); }
"$talmo" pages --bogus 1 > /dev/null 2>&1; [ $? -eq 2 ] || { echo "FAIL: unknown option"; failures=$((failures + 1)); }
"$talmo" pages 1 2 > /dev/null 2>&1; [ $? -eq 2 ] || { echo "FAIL: two TEXTs"; failures=$((failures + 1)); }

[ "$failures" -eq 0 ] && echo "all talmo pages cases passed"
exit "$failures"
