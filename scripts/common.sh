# shellcheck shell=bash
# Shared by ./demo, ./test and scripts/checks; sourced from the root of the repository.

jobs_to_run() { echo "${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}"; }

# Runs a command under a title. On a terminal its output is shown; elsewhere it goes to a log, whose end is shown if the
# command fails.
run_step() {
    local title=$1
    shift
    echo "-- $title"
    if [ -t 1 ]; then
        "$@"
        return
    fi
    local log="build/logs/${title//[^A-Za-z0-9]/_}.log"
    mkdir -p build/logs
    if ! "$@" >"$log" 2>&1; then
        tail -n 100 "$log"
        echo "-- failed: $title (all of it in $log)"
        return 1
    fi
}

# configure PRESET [CMAKE-ARGUMENT...]
configure() {
    local preset=$1
    shift
    run_step "$preset: configuring" cmake --preset "$preset" "$@"
}

# Runs a command without randomising the layout of memory, where that is allowed: sanitizers keep their tables at fixed
# addresses, and some kernels put other things in their way.
unrandomised() {
    if setarch -R true 2>/dev/null; then setarch -R "$@"; else "$@"; fi
}

# build PRESET [TARGET...]: building also asks the test programs for their tests.
build() {
    local preset=$1
    shift
    run_step "$preset: building${*:+ $*}" unrandomised cmake --build --preset "$preset" --parallel "$(jobs_to_run)" ${*:+--target "$@"}
}

# The library alone as a shared library, in build/checks/shared, quickly compiled. It leaves no symbol undefined.
build_shared_library() {
    run_step "shared library: configuring" cmake -S . -B build/checks/shared -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_CXX_COMPILER=g++ -DCMAKE_CXX_FLAGS_RELEASE=-O1 -DBUILD_SHARED_LIBS=ON -DCMAKE_SHARED_LINKER_FLAGS=-Wl,-z,defs \
        -DZNGEOM_TESTS=OFF -DZNGEOM_TOOL=OFF -DZNGEOM_EXAMPLES=OFF
    run_step "shared library: building" cmake --build build/checks/shared --parallel "$(jobs_to_run)"
}

# True if the leak checker of the address sanitizer may trace its process here.
leak_checker_works() {
    local probe=build/checks/leak_probe
    mkdir -p build/checks
    if [ ! -x "$probe" ]; then
        echo 'int main() {}' | clang++ -fsanitize=address -x c++ - -o "$probe" || return 1
    fi
    ASAN_OPTIONS=detect_leaks=1 "$probe" 2>/dev/null
}

# Sets the options of the sanitizers for builds (test discovery runs the test program) and runs.
export_sanitizer_options() {
    export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1"
    export TSAN_OPTIONS="halt_on_error=1:second_deadlock_stack=1"
    export ASAN_OPTIONS="halt_on_error=1:detect_stack_use_after_return=1:strict_string_checks=1"
    if command -v clang++ >/dev/null && leak_checker_works; then
        ASAN_OPTIONS+=":detect_leaks=1"
    else
        ASAN_OPTIONS+=":detect_leaks=0"
    fi
}
