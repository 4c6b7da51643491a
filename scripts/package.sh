#!/usr/bin/env bash
# Installs the build into a staging folder and checks the desktop entry and the
# AppStream metainfo there, then builds the Debian package and lists it.
set -euo pipefail
cd "$(dirname "$0")/.."
need=()
for p in desktop-file-utils appstream dpkg-dev file; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || need+=("$p")
done
if [ ${#need[@]} -gt 0 ]; then
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends "${need[@]}"
fi
scripts/setup.sh tessalwick tessalwick-send
stage=build/stage
rm -rf "$stage"
DESTDIR="$PWD/$stage" cmake --install build --prefix /usr
desktop-file-validate "$stage"/usr/share/applications/*.desktop
appstreamcli validate --no-net --pedantic "$stage"/usr/share/metainfo/*.metainfo.xml
(cd build && cpack -G DEB)
deb=$(ls build/tessalwick_*.deb | head -1)
dpkg-deb --info "$deb"
dpkg-deb --contents "$deb"
echo "package: ok ($deb)"
