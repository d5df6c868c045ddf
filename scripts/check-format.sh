#!/bin/sh
# Fails when a tracked C++ source differs from what .clang-format makes of it.
set -eu
cd "$(dirname "$0")/.."
git ls-files -- '*.cpp' '*.h' | xargs clang-format --dry-run -Werror
