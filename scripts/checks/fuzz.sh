#!/usr/bin/env bash
# Runs each fuzz target for a minute, as many at a time as there are cores: scripts/checks/fuzz.sh [SECONDS]
#
# Seeds come from tests/fuzz/corpus/NAME. What a run finds stays in build/fuzz/findings, its own corpus in
# build/fuzz/corpus.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
source scripts/common.sh

seconds=${1:-60}

run_target() {
    local name=$1 corpus=build/fuzz/corpus/$1 log=build/fuzz/logs/$1.log
    local folders=("$corpus")
    mkdir -p "$corpus" build/fuzz/findings build/fuzz/logs
    if [ -d "tests/fuzz/corpus/$name" ]; then folders+=("tests/fuzz/corpus/$name"); fi
    if ! "build/fuzz/bin/$name" -max_total_time="$seconds" -rss_limit_mb=1024 -timeout=20 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/findings/$name-" "${folders[@]}" >"$log" 2>&1; then
        tail -n 60 "$log"
        echo "-- fuzz: $name failed (all of it in $log)"
        return 1
    fi
}

export_sanitizer_options
if compgen -G 'tests/fuzz/*.cpp' >/dev/null; then
    configure fuzz
    build fuzz
fi
targets=()
for program in build/fuzz/bin/fuzz_*; do
    if [ -x "$program" ]; then targets+=("$(basename "$program")"); fi
done
if [ ${#targets[@]} = 0 ]; then
    if compgen -G 'tests/fuzz/*.cpp' >/dev/null; then echo "fuzz: FAILED, no target was built"; exit 1; fi
    echo "fuzz: there are no targets"
    exit 0
fi

export seconds
export -f run_target
if ! printf '%s\n' "${targets[@]}" | unrandomised xargs -P "$(jobs_to_run)" -I{} bash -euo pipefail -c 'run_target {}'; then
    echo "fuzz: FAILED"
    exit 1
fi
echo "fuzz: ${#targets[@]} targets ran $seconds seconds each and found nothing"
