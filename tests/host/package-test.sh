#!/bin/sh
# The Debian package: built from the tree, unpacked into a private prefix (never installed on
# the machine), and its talmo-print run from there finds its bundle and saves a ticket.
set -eu
build=$1
source=$2
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
cpack --config "$build/CPackConfig.cmake" -B "$tmp/out" >"$tmp/cpack.log" 2>&1 || { cat "$tmp/cpack.log"; exit 1; }
deb=$(ls "$tmp"/out/talmo_*.deb)
depends=$(dpkg-deb -f "$deb" Depends)
for lib in libqt6widgets6 libqt6printsupport6 libcups2 libqpdf29 libxml2 cups-ipp-utils; do
  case "$depends" in *"$lib"*) ;; *) echo "Depends lacks $lib: $depends"; exit 1 ;; esac
done
dpkg-deb -x "$deb" "$tmp/root"
for f in usr/bin/talmo usr/bin/talmo-print usr/lib/talmo/TalmoFeatures.plugin/libTalmoFeatures.so \
         usr/lib/talmo/TalmoFeatures.plugin/Info.plist usr/share/applications/talmo-print.desktop \
         usr/share/icons/hicolor/scalable/apps/talmo-print.svg usr/share/talmo/examples/sample.pdf; do
  [ -e "$tmp/root/$f" ] || { echo "missing $f"; exit 1; }
done
# Nothing of the build tree may be reachable: no bundle variable, no source folder.
env -u TALMO_BUNDLE_DIR -u TALMO_SOURCE_DIR QT_QPA_PLATFORM=offscreen HOME="$tmp" XDG_CONFIG_HOME="$tmp/config" \
  XDG_DATA_HOME="$tmp/data" "$tmp/root/usr/bin/talmo-print" --printer demo \
  --ticket "$source/examples/tpif-plain-job.plist" --save-ticket "$tmp/saved.plist" \
  "$tmp/root/usr/share/talmo/examples/sample.pdf" 2>"$tmp/err" || { cat "$tmp/err"; exit 1; }
grep -q "<key>com.apple.print.JobInfo.PMJobName</key>" "$tmp/saved.plist"
grep -q "<string>sample.pdf</string>" "$tmp/saved.plist"
grep -q "<key>com.talmo.print.TPIFOptions</key>" "$tmp/saved.plist"
echo "package ok: $(basename "$deb")"
