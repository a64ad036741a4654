#!/usr/bin/env bash
# Installs every Debian package QVKit needs to build, test, benchmark and fuzz.
# Non-interactive and safe to run again: packages already present are kept.
set -euo pipefail

packages=(
    # compilers and build
    g++ clang cmake ninja-build
    # Qt: Core, Gui, Widgets, Concurrent, Network, Test, the offscreen platform, translations
    qt6-base-dev qt6-qpa-plugins qt6-l10n-tools qt6-tools-dev qt6-tools-dev-tools
    # tests, benchmarks, fuzzing and sanitizers
    libgtest-dev libgmock-dev libbenchmark-dev libclang-rt-14-dev llvm-14
    # GPU names for the system information
    pci.ids
)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    echo "setup: all ${#packages[@]} packages are installed"
    exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then
    sudo="sudo"
fi

echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq "${missing[@]}" >/dev/null
echo "setup: done"
