#!/bin/sh
# Installs what the project needs, builds it and runs the command line on a shipped example.
set -eu
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
cmake --preset default >/dev/null
cmake --build --preset default --target talmo
./build/default/cli/talmo --help
./build/default/cli/talmo plist check examples/settings.plist
