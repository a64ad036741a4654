#!/usr/bin/env bash
# Installs what is needed, builds, and runs the qvkit tool with the given arguments.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build --target qvkit
exec build/tools/qvkit "$@"
