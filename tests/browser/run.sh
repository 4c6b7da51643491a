#!/usr/bin/env bash
# Runs the browser tests: node_modules from the lock file when missing, and,
# where the machine allows it, everything in a network namespace of its own
# that has nothing but the loopback device, so the browser can't reach the
# network whatever it tries.
set -euo pipefail
cd "$(dirname "$0")"
export TESSALWICK_BUILD="${TESSALWICK_BUILD:-$(pwd)/../../build}"
if [ ! -x /usr/bin/chromium ] || ! command -v node >/dev/null; then
  echo "chromium and node are needed: scripts/setup.sh installs them" >&2
  exit 1
fi
[ -d node_modules/puppeteer-core ] || npm ci --no-audit --no-fund
if unshare -n true 2>/dev/null && command -v ip >/dev/null; then
  exec unshare -n sh -c 'ip link set lo up && exec node --test capture.test.mjs'
fi
exec node --test capture.test.mjs
