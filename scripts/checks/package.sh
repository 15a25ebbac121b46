#!/usr/bin/env bash
# Checks the installed package, static and shared: a fresh program outside the tree builds and runs against it through
# find_package(znGeom) and through pkg-config. The package is moved after the installation: nothing in it may depend on
# where it was put first. A fresh project can also take the sources in with add_subdirectory.
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
    configure release
    build release
}

# install_package KIND BUILD_FOLDER: leaves the package in $scratch/KIND, moved there from where it was installed.
install_package() {
    cmake --install "$2" --prefix "$scratch/first" >"$scratch/log" || { cat "$scratch/log"; fail "cmake --install ($1)"; }
    mv "$scratch/first" "$scratch/$1"
}

use_through_cmake() {
    local folder=$scratch/$1-cmake
    {
        cmake -S "$scratch/program" -B "$folder" -G Ninja -DCMAKE_CXX_COMPILER=g++ -DCMAKE_PREFIX_PATH="$scratch/$1" &&
            cmake --build "$folder" && "$folder/fresh_program"
    } >"$scratch/log" 2>&1 || { cat "$scratch/log"; fail "a program through find_package ($1)"; }
}

use_through_pkg_config() {
    local library_folder flags
    library_folder=$(dirname "$(find "$scratch/$1" -name 'libznGeom.*' -print -quit)")
    {
        flags=$(PKG_CONFIG_PATH="$library_folder/pkgconfig" pkg-config --cflags --libs znGeom) &&
            g++ -std=c++20 "$scratch/program/main.cpp" $flags -o "$scratch/$1-pkg-config" &&
            LD_LIBRARY_PATH="$library_folder" "$scratch/$1-pkg-config"
    } >"$scratch/log" 2>&1 || { cat "$scratch/log"; fail "a program through pkg-config ($1)"; }
}

# Only configured: what it would build is the library as before.
use_through_add_subdirectory() {
    cmake -S "$scratch/program" -B "$scratch/subdirectory" -G Ninja -DCMAKE_CXX_COMPILER=g++ -DZNGEOM_SOURCES="$PWD" \
        >"$scratch/log" 2>&1 || { cat "$scratch/log"; fail "a project with add_subdirectory"; }
    if [ -e "$scratch/subdirectory/compile_commands.json" ] &&
        grep -q '"file":.*/\(tests\|apps\|examples\|bench\)/' "$scratch/subdirectory/compile_commands.json"; then
        fail "add_subdirectory brings in more than the library"
    fi
}

build_static_library
build_shared_library
cp -r tests/package "$scratch/program"
install_package static build/release
install_package shared build/checks/shared
for kind in static shared; do
    use_through_cmake "$kind"
    use_through_pkg_config "$kind"
done
use_through_add_subdirectory
echo "package: fresh programs build and run through find_package and pkg-config, static and shared"
