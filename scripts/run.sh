#!/usr/bin/env bash
# Sets up what is missing, builds the program alone and starts it. Without a
# display it runs on a virtual screen (Xvfb), where it can't be seen; Ctrl+C
# ends it either way.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh tessalwick tessalwick-send TessalwickDownloadManagerHelper browser-extension
if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  echo "No display: Tessalwick runs on a virtual screen (Xvfb) that you can't see."
  echo "Hand it links with build/tessalwick-send; press Ctrl+C to end it."
  exec xvfb-run -a -s "-screen 0 1280x800x24" build/tessalwick "$@"
fi
echo "Tessalwick starts; end it with its close button, the tray menu's Exit, or Ctrl+C here."
exec build/tessalwick "$@"
