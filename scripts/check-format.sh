#!/usr/bin/env bash
# Fails when a C++ file of the project differs from what clang-format makes of it.
set -euo pipefail
cd "$(dirname "$0")/.."
if ! command -v clang-format >/dev/null; then
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends clang-format
fi
git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror
echo "format: ok"
