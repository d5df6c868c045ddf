#!/bin/sh
# talmo's dispatch to the group programs: "STATUS|TEXT|ARG..." runs talmo ARG... and wants the
# exit STATUS and TEXT somewhere in its output (stdout and stderr together).
set -u
talmo="$1"
out=$(mktemp) || exit 1
trap 'rm -f "$out"' EXIT
failures=0
while IFS= read -r line; do
    want=${line%%|*}
    rest=${line#*|}
    text=${rest%%|*}
    set -f; IFS='|'; set -- ${rest#*|}; unset IFS; set +f
    "$talmo" "$@" > "$out" 2>&1
    status=$?
    if [ "$status" -ne "$want" ] || ! grep -qF -- "$text" "$out"; then
        echo "FAIL: talmo $* (exit $status, wanted $want and \"$text\")"; cat "$out"
        failures=$((failures + 1))
    fi
done <<'CASES'
2|talmo tpif export SETTINGS.plist|tpif
2|talmo tpif summary|tpif
2|talmo papers rename|papers
2|papers has no sub-command 'bogus'|papers|bogus
2|unknown command 'bogus'|bogus
2|unknown option '-z'|-z
2|no command given|
0|talmo type42 FONT.ttf|--help
0|3 2|pages|3-4
2|papers fetch takes one HOST[:PORT]|papers|fetch
CASES
[ "$failures" -eq 0 ] && echo "all dispatch cases passed"
exit "$failures"
