#!/bin/sh
# Installs what the project needs, builds it and runs the command line on the shipped
# examples: the demo printer's choices, then a settings file exported as a TPIF ticket.
set -eu
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
cmake --preset default >/dev/null
cmake --build --preset default --target talmo
talmo=./build/default/cli/talmo
$talmo --help
echo "== Output destinations offered by the demo printer (ticket value, text)"
$talmo ppd choices resources/ppd/talmo-studio-press.ppd OutputBin
echo "== examples/tpif-special-pages.plist as a TPIF ticket"
$talmo tpif export examples/tpif-special-pages.plist 2>/dev/null
echo
