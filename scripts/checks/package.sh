#!/usr/bin/env bash
# Checks the installed package, static and shared: a fresh program outside the tree builds and runs against it through
# find_package(znGeom) and through pkg-config. The package is moved after the installation: nothing in it may depend on
# where it was first put. A fresh project can also take in the sources with add_subdirectory.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
source scripts/common.sh

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

fail() {
    echo "package: FAILED, $1"
    exit 1
}

build_static_library() {
    configure release -DZNGEOM_TOOL=ON
    build release znGeom zngeom
}

# install_package KIND BUILD_FOLDER: leaves the package in $scratch/KIND, moved there from where it was installed.
install_package() {
    cmake --install "$2" --prefix "$scratch/first" >"$scratch/log" || { cat "$scratch/log"; fail "cmake --install ($1)"; }
    mv "$scratch/first" "$scratch/$1"
}

# run_logged WHAT COMMAND...: the output is shown if the command fails, and then the check has failed.
run_logged() {
    local what=$1
    shift
    "$@" >"$scratch/log" 2>&1 || { cat "$scratch/log"; fail "$what"; }
}

configure_fresh() { cmake -G Ninja -DCMAKE_CXX_COMPILER=g++ "$@"; }

# The programs of a fresh project, and a program that uses what that project has installed.
use_through_cmake() {
    local folder=$scratch/$1-cmake installed=$scratch/$1-installed user=$scratch/$1-user
    run_logged "configuring with find_package ($1)" \
        configure_fresh -S "$scratch/fresh" -B "$folder" -DCMAKE_PREFIX_PATH="$scratch/$1"
    run_logged "building with find_package ($1)" cmake --build "$folder"
    run_logged "a program through find_package ($1)" "$folder/fresh_program"
    run_logged "installing a library that links znGeom ($1)" cmake --install "$folder" --prefix "$installed"
    run_logged "finding a library that links znGeom ($1)" \
        configure_fresh -S "$scratch/fresh/user" -B "$user" -DCMAKE_PREFIX_PATH="$scratch/$1;$installed"
    run_logged "linking a library that links znGeom ($1)" cmake --build "$user"
    run_logged "a program through a library that links znGeom ($1)" "$user/user_program"
}

flags_of() {
    PKG_CONFIG_PATH="$(dirname "$(find "$scratch/$1" -name 'libznGeom.*' -print -quit)")/pkgconfig" \
        pkg-config --cflags --libs znGeom
}

use_through_pkg_config() {
    local library_folder flags program=$scratch/$1-pkg-config
    library_folder=$(dirname "$(find "$scratch/$1" -name 'libznGeom.*' -print -quit)")
    flags=$(flags_of "$1") || fail "pkg-config ($1)"
    run_logged "building through pkg-config ($1)" g++ -std=c++20 "$scratch/fresh/main.cpp" $flags -o "$program"
    run_logged "a program through pkg-config ($1)" env LD_LIBRARY_PATH="$library_folder" "$program"
}

# Conversions in headers, with a user's flags.
narrow_as_a_user() {
    local flags options
    flags=$(flags_of static)
    for options in "g++ -O2" "g++ -O3" "g++ -O3 -march=x86-64-v3 -ffast-math" "clang++ -O3"; do
        run_logged "building narrowing.cpp with $options" \
            $options -std=c++20 "$scratch/fresh/narrowing.cpp" $flags -o "$scratch/narrowing"
        case $options in *-march=*) grep -qw avx2 /proc/cpuinfo || continue ;; esac
        run_logged "narrowing with $options" "$scratch/narrowing"
    done
}

refuse_older_language() {
    if g++ -std=c++17 -fsyntax-only "$scratch/fresh/main.cpp" $(flags_of static) 2>"$scratch/log"; then
        fail "C++17 is taken"
    fi
    grep -m1 'error:' "$scratch/log" | grep -q 'znGeom needs C++20' || { head "$scratch/log"; fail "C++17 gives another message"; }
}

# Only configured: it would build the same library as before. Without a build type the library is optimised, and says
# so.
use_through_add_subdirectory() {
    local folder=$scratch/subdirectory
    run_logged "configuring with add_subdirectory" \
        configure_fresh -S "$scratch/fresh" -B "$folder" -DZNGEOM_SOURCES="$PWD"
    grep -q 'znGeom: CMAKE_BUILD_TYPE is not set' "$scratch/log" || fail "add_subdirectory says nothing of the build type"
    grep '"command":.*/weld\.cpp' "$folder/compile_commands.json" | grep -q -- ' -O2 ' || fail "add_subdirectory builds without optimisation"
    grep -q '"file":.*/\(tests\|apps\|examples\|bench\)/' "$folder/compile_commands.json" &&
        fail "add_subdirectory brings in more than the library"
    return 0
}

build_static_library
build_shared_library
cp -r tests/package "$scratch/fresh"
install_package static build/release
install_package shared build/checks/shared
for kind in static shared; do
    use_through_cmake "$kind"
    use_through_pkg_config "$kind"
done
narrow_as_a_user
refuse_older_language
use_through_add_subdirectory
echo "package: fresh programs and libraries build and run through find_package and pkg-config, static and shared"
