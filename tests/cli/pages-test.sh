#!/bin/sh
# talmo pages over the cases in data/pages.cases, then the longest list it may print.
set -u
talmo="$1"
tmp=$(mktemp -d) || exit 1
trap 'rm -rf "$tmp"' EXIT
failures=0
fail() { echo "FAIL: talmo pages $*"; cat "$tmp/out" "$tmp/err"; failures=$((failures + 1)); }

while IFS= read -r line; do
    case "$line" in '#'* | '') continue ;; esac
    want=${line%%|*}
    set -f; IFS='|'; set -- ${line#*|}; unset IFS; set +f
    "$talmo" pages "$@" > "$tmp/out" 2> "$tmp/err"
    status=$?
    case "$want" in
    =*) printf '%b' "${want#=}" > "$tmp/expected"
        { [ "$status" -eq 0 ] && cmp -s "$tmp/expected" "$tmp/out"; } || fail "$@" ;;
    !*) { [ "$status" -eq 1 ] && [ ! -s "$tmp/out" ] && grep -q "error ${want#!} " "$tmp/err"; } || fail "$@" ;;
    \?*) [ "$status" -eq "${want#?}" ] || fail "$@" ;;
    esac
done < "$(dirname "$0")/data/pages.cases"

"$talmo" pages > "$tmp/out" 2> "$tmp/err"; [ $? -eq 2 ] || fail "(no TEXT)"
# 99,995 single pages: the count and both ends.
"$talmo" pages --single 5- > "$tmp/out" 2> "$tmp/err"
{ [ "$(wc -l < "$tmp/out")" -eq 99995 ] && [ "$(head -n 1 "$tmp/out")" = "5 1" ] &&
    [ "$(tail -n 1 "$tmp/out")" = "99999 1" ]; } || fail --single 5-
[ "$failures" -eq 0 ] && echo "all talmo pages cases passed"
exit "$failures"
