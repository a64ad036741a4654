#!/usr/bin/env bash
# Builds the libFuzzer targets with Clang (build-fuzz/) and runs each one for a
# fixed time over its corpus, so that the fuzz build cannot rot and the seed
# inputs keep passing. Usage: scripts/run-fuzz.sh [SECONDS_PER_TARGET] (30 by default).
#
# A target QVFooBarFuzzer reads fuzz/corpus/foo_bar/. New inputs it finds go to
# a scratch folder, never into the repository; a crash leaves its input in
# build-fuzz/artifacts/ and fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds="${1:-30}"

bash scripts/setup.sh
CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQVKIT_FUZZ=ON \
    -DQVKIT_BUILD_TESTS=OFF -DQVKIT_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build build-fuzz

export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:allocator_may_return_null=1}"
export LSAN_OPTIONS="${LSAN_OPTIONS:-suppressions=$PWD/tests/lsan.supp:print_suppressions=0}"
mkdir -p build-fuzz/artifacts
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

status=0
for target in build-fuzz/fuzz/QV*Fuzzer; do
    name="$(basename "$target")"
    stem="${name#QV}"
    stem="${stem%Fuzzer}"
    corpus="fuzz/corpus/$(echo "$stem" | sed -E 's/([a-z0-9])([A-Z])/\1_\2/g' | tr '[:upper:]' '[:lower:]')"
    if [ ! -d "$corpus" ]; then
        echo "run-fuzz: $name has no corpus folder $corpus" >&2
        status=1
        continue
    fi
    mkdir -p "$scratch/$name"
    echo "== $name: ${seconds} s over $corpus =="
    if ! "$target" -max_total_time="$seconds" -print_final_stats=1 \
        -artifact_prefix="build-fuzz/artifacts/$name-" "$scratch/$name" "$corpus" 2>"$scratch/$name.log"; then
        tail -n 60 "$scratch/$name.log" >&2
        echo "run-fuzz: $name failed; its input is in build-fuzz/artifacts/" >&2
        status=1
        continue
    fi
    grep -E "^stat::number_of_executed_units|^#[0-9]+.*DONE" "$scratch/$name.log" | tail -n 2
done
exit "$status"
