#!/bin/sh
# Installs what the project needs, builds the default and the sanitizer builds, and runs the
# whole suite in each. A sanitizer report fails the run.
set -eu
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
echo "== format"
./scripts/check-format.sh
for preset in default asan; do
  echo "== $preset build"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  echo "== $preset tests"
  ctest --preset "$preset" -j2
done
