#!/usr/bin/env bash
# Builds the libFuzzer targets with clang into build-fuzz and runs each one
# for SECONDS (default 30) on a copy of its seed corpus, so the committed
# corpus never grows. Prints the executions and findings per target; exits
# non-zero when any target crashed, leaked, hung or tripped a sanitizer.
# Findings and logs stay in build-fuzz/run/<target>/.
#   scripts/fuzz.sh [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-30}
[[ "$seconds" =~ ^[0-9]+$ ]] || { echo "usage: scripts/fuzz.sh [SECONDS]" >&2; exit 2; }

scripts/install-deps.sh --fuzz

targets=()
for src in fuzz/fuzz_*.cpp; do
    name=$(basename "$src" .cpp)
    targets+=("$name")
done

echo "== fuzz build (clang, libFuzzer, ASan + UBSan) =="
cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_COMPILER=clang++ -DNAKOS_BUILD_FUZZ=ON \
    -DNAKOS_BUILD_TESTS=OFF -DNAKOS_BUILD_BENCH=OFF >/dev/null
cmake --build build-fuzz -j "$(nproc)" --target "${targets[@]}"

# Seeds beyond fuzz/corpus/<name>: the tests' data files, and targets that
# read the same format share their seeds.
extra_seeds() {
    case "$1" in
    fuzz_files_datafile) echo tests/data/files/*.txt ;;
    fuzz_settings_filekey) echo fuzz/corpus/settings_registryfile/* ;;
    esac
}

symbolizer=$(command -v llvm-symbolizer || echo /usr/lib/llvm-14/bin/llvm-symbolizer)
export ASAN_SYMBOLIZER_PATH=$symbolizer
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1

failed=0
summary=()
for name in "${targets[@]}"; do
    run=build-fuzz/run/${name#fuzz_}
    rm -rf "$run"
    mkdir -p "$run/corpus"
    corpus=fuzz/corpus/${name#fuzz_}
    if [[ -d "$corpus" ]]; then
        cp "$corpus"/* "$run/corpus/" 2>/dev/null || true
    fi
    for seed in $(extra_seeds "$name"); do
        [[ -f "$seed" ]] && cp "$seed" "$run/corpus/"
    done
    echo "== $name: ${seconds} s =="
    status=0
    # -timeout: one input running this long counts as a hang.
    "build-fuzz/fuzz/$name" -max_total_time="$seconds" -timeout=25 -print_final_stats=1 \
        -artifact_prefix="$run/" "$run/corpus" >"$run/log.txt" 2>&1 || status=$?
    execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$run/log.txt" | tail -n 1)
    findings=$(find "$run" -maxdepth 1 -type f \
        \( -name 'crash-*' -o -name 'leak-*' -o -name 'timeout-*' -o -name 'oom-*' \) | sort)
    if [[ $status -ne 0 || -n "$findings" ]]; then
        failed=1
        summary+=("$name: ${execs:-?} executions, FOUND (exit $status): ${findings:-see $run/log.txt}")
        echo "--- $run/log.txt (end) ---"
        tail -n 60 "$run/log.txt"
    else
        summary+=("$name: ${execs:-?} executions, nothing found")
    fi
done

echo "== fuzz summary (${seconds} s per target) =="
printf '%s\n' "${summary[@]}"
exit $failed
