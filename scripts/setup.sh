#!/usr/bin/env bash
# Installs what the build needs (only what is missing), then configures and
# builds into build/: everything, or only the targets named (setup.sh tessalwick).
# Without targets it also installs what the browser tests need: Debian's
# chromium, node and npm, and puppeteer-core from tests/browser's lock file.
# A second run installs nothing and rebuilds only what changed.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(g++ cmake ninja-build pkg-config qt6-base-dev qt6-base-dev-tools qt6-qpa-plugins
          libgl-dev curl xvfb xauth fonts-dejavu-core dbus-daemon)
if [ $# -eq 0 ] || [ "${1:-}" = "--deps-only" ]; then
  packages+=(chromium nodejs)
  command -v npm >/dev/null || packages+=(npm)
fi
scripts/need.sh "${packages[@]}"

if [ $# -eq 0 ] || [ "${1:-}" = "--deps-only" ]; then
  [ -d tests/browser/node_modules/puppeteer-core ] ||
    (cd tests/browser && npm ci --no-audit --no-fund)
fi
[ "${1:-}" = "--deps-only" ] && exit 0

if [ ! -f build/build.ninja ]; then
  cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DTESSALWICK_WERROR="${TESSALWICK_WERROR:-OFF}"
fi
if [ $# -gt 0 ]; then
  cmake --build build --target "$@"
else
  cmake --build build
fi
