#!/usr/bin/env bash
# Sets everything up, builds, and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
QT_QPA_PLATFORM=offscreen ctest --test-dir build --output-on-failure -j2
