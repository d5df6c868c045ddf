#!/bin/sh
# The main job: installs what the project needs, builds it, and shows the print dialog with the
# Talmo extension on the demo printer with a sample document. On a desktop the dialog opens;
# without a display it runs under a private Xvfb and saves a picture of each panel in
# build/screenshots/. Then the command line on the shipped examples.
set -eu
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
cmake --preset default >/dev/null
cmake --build --preset default --target talmo talmo-print
talmo=./build/default/cli/talmo
print=./build/default/host/talmo-print
sample=examples/sample.pdf

xvfb_pid=""
cleanup() { [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2>/dev/null || true; }
trap cleanup EXIT INT TERM

if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
  echo "== The print dialog on the demo printer (Print sends $sample to it)"
  $print --printer demo "$sample"
else
  # A private X server for the real dialog; it tells us its display number once it is ready.
  fifo=$(mktemp -u)
  mkfifo "$fifo"
  Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$fifo" 2>/dev/null &
  xvfb_pid=$!
  read -r display <"$fifo"
  rm -f "$fifo"
  mkdir -p build/screenshots
  for panel in 1 2 3 4 5 6; do
    DISPLAY=":$display" QT_QPA_PLATFORM=xcb $print --printer demo --panel "$panel" \
      --screenshot "build/screenshots/panel-$panel.png" "$sample" 2>/dev/null
    echo "== build/screenshots/panel-$panel.png"
  done
  kill "$xvfb_pid"
  wait "$xvfb_pid" 2>/dev/null || true
  xvfb_pid=""
fi

$talmo --help
echo "== Output destinations offered by the demo printer (ticket value, text)"
$talmo ppd choices resources/ppd/talmo-studio-press.ppd OutputBin
echo "== examples/tpif-special-pages.plist as a TPIF ticket"
$talmo tpif export examples/tpif-special-pages.plist 2>/dev/null
echo
