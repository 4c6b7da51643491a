#!/usr/bin/env bash
# Sets everything up and starts Tessalwick. Without a display it runs on Xvfb.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  exec xvfb-run -a -s "-screen 0 1280x800x24" build/tessalwick "$@"
fi
exec build/tessalwick "$@"
