#!/usr/bin/env bash
# Installs the build into a staging folder and checks the desktop entry and the
# AppStream metainfo there, then builds the Debian package and lists it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/need.sh desktop-file-utils appstream dpkg-dev file
scripts/setup.sh tessalwick tessalwick-send TessalwickDownloadManagerHelper browser-extension
stage=build/stage
rm -rf "$stage"
DESTDIR="$PWD/$stage" cmake --install build --prefix /usr
# The helper beside the program, and the extension with its site table.
test -x "$stage"/usr/bin/TessalwickDownloadManagerHelper
test -s "$stage"/usr/share/tessalwick/browser/sites.js
desktop-file-validate "$stage"/usr/share/applications/*.desktop
appstreamcli validate --no-net --pedantic "$stage"/usr/share/metainfo/*.metainfo.xml
(cd build && cpack -G DEB)
deb=$(ls build/tessalwick_*.deb | head -1)
dpkg-deb --info "$deb"
dpkg-deb --contents "$deb"
echo "package: ok ($deb)"
