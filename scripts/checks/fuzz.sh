#!/usr/bin/env bash
# Runs all fuzz targets, as many at a time as there are cores: scripts/checks/fuzz.sh [SECONDS]
#
# They share the seconds, three minutes by default; each gets at least twenty. Seeds come from tests/fuzz/corpus/NAME.
# What a run finds stays in build/fuzz/findings, its own corpus in build/fuzz/corpus.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
source scripts/common.sh

total=${1:-180}
at_least=20

run_target() {
    local name=$1 corpus=build/fuzz/corpus/$1 log=build/fuzz/logs/$1.log
    local folders=("$corpus")
    mkdir -p "$corpus" build/fuzz/findings build/fuzz/logs
    if [ -d "tests/fuzz/corpus/$name" ]; then folders+=("tests/fuzz/corpus/$name"); fi
    if ! "build/asan/bin/$name" -max_total_time="$seconds" -rss_limit_mb=1024 -timeout=20 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/findings/$name-" "${folders[@]}" >"$log" 2>&1; then
        tail -n 60 "$log"
        echo "-- fuzz: $name failed (all of it in $log)"
        return 1
    fi
}

export_sanitizer_options
configure asan
rm -f build/asan/bin/fuzz_* # those that no longer exist
build asan zngeom_fuzz_targets
names=()
for program in build/asan/bin/fuzz_*; do names+=("$(basename "$program")"); done

seconds=$((total / ${#names[@]} > at_least ? total / ${#names[@]} : at_least))
export seconds
export -f run_target
if ! printf '%s\n' "${names[@]}" | unrandomised xargs -P "$(jobs_to_run)" -I{} bash -euo pipefail -c 'run_target {}'; then
    echo "fuzz: FAILED"
    exit 1
fi
echo "fuzz: ${#names[@]} targets ran $seconds seconds each and found nothing"
