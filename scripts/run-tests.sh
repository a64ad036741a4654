#!/usr/bin/env bash
# Installs what is needed, builds everything and runs every test headless.
# With --sanitize the same runs in a separate AddressSanitizer and
# UndefinedBehaviorSanitizer build (build-sanitize/).
set -euo pipefail
cd "$(dirname "$0")/.."

build_dir=build
options=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
if [ "${1:-}" = "--sanitize" ]; then
    build_dir=build-sanitize
    options=(-DCMAKE_BUILD_TYPE=Debug -DQVKIT_SANITIZE=ON -DQVKIT_BUILD_BENCHMARKS=OFF)
fi

bash scripts/setup.sh
cmake -S . -B "$build_dir" -G Ninja "${options[@]}" >/dev/null
cmake --build "$build_dir"

export QT_QPA_PLATFORM=offscreen
# A failed allocation must reach the library as std::bad_alloc, as it does
# without the sanitizer: requests no buffer can hold are refused, not fatal.
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1:strict_string_checks=1:allocator_may_return_null=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
export LSAN_OPTIONS="${LSAN_OPTIONS:-suppressions=$PWD/tests/lsan.supp:print_suppressions=0}"
ctest --test-dir "$build_dir" --output-on-failure -j2
