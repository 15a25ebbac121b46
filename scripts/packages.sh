#!/usr/bin/env bash
# Finds out which packages are missing and installs them where it is allowed to: scripts/packages.sh GROUP...
#
# It installs Debian and Ubuntu packages, as root or through a sudo that asks for no password. Anywhere else it names
# what is needed and stops. When nothing is missing it does nothing at all.
set -euo pipefail

# The only list of what this repository uses: group, probe, Debian package, what it is.
#   command:NAME  a program on the PATH
#   header:FILE   a header in the system's include folders
#   clang-rt      the sanitizer and fuzzer runtimes that belong to Clang
all_needs() {
    cat <<'LIST'
build  command:g++                        g++                   a C++20 compiler
build  command:cmake                      cmake                 CMake 3.22 or later
build  command:ninja                      ninja-build           the Ninja build tool
tool   header:CLI/CLI.hpp                 libcli11-dev          CLI11, the command line
tool   header:nlohmann/json.hpp           nlohmann-json3-dev    nlohmann-json, JSON in and out
tool   header:png.h                       libpng-dev            libpng, pictures
test   header:gtest/gtest.h               libgtest-dev          GoogleTest
test   command:python3                    python3               Python, for the test runner
clang  command:clang++                    clang                 Clang, for the sanitizers and the fuzz targets
clang  clang-rt                           libclang-rt-dev       the sanitizer and fuzzer runtimes of Clang
check  command:clang-format               clang-format          the source formatter
check  command:pkg-config                 pkg-config            pkg-config
check  command:readelf                    binutils              readelf
bench  header:benchmark/benchmark.h       libbenchmark-dev      Google Benchmark
peers  header:CGAL/version.h              libcgal-dev           CGAL, to compare with
peers  header:OpenMesh/Core/System/config.h libopenmesh-dev     OpenMesh, to compare with
peers  header:meshoptimizer.h             libmeshoptimizer-dev  meshoptimizer, to compare with
peers  header:eigen3/Eigen/Core           libeigen3-dev         Eigen, to compare with; CGAL uses it
peers  header:tbb/version.h               libtbb-dev            TBB, which CGAL uses
peers  header:embree3/rtcore.h           libembree-dev         Embree, to compare with
peers  header:assimp/Importer.hpp         libassimp-dev         Assimp, to compare with
peers  header:zlib.h                      zlib1g-dev            zlib, which Assimp's package links
peers  header:minizip/unzip.h             libminizip-dev        minizip, which Assimp's package links
peers  header:tiny_obj_loader.h           libtinyobjloader-dev  tinyobjloader, to compare with
peers  header:nanoflann.hpp               libnanoflann-dev      nanoflann, to compare with
peers  header:boost/geometry.hpp          libboost-dev          Boost.Geometry, to compare with; CGAL uses Boost
peers  header:stb/stb_rect_pack.h         libstb-dev            stb's packer of rectangles, to compare with
LIST
}

has_header() {
    local folder
    for folder in ${CPATH//:/ } /usr/local/include /usr/include /usr/include/"$(uname -m)"-linux-gnu; do
        if [ -e "$folder/$1" ]; then return 0; fi
    done
    return 1
}

has_clang_runtimes() {
    command -v clang++ >/dev/null || return 1
    [ -n "$(find -L "$(clang++ -print-resource-dir)" -name 'libclang_rt.fuzzer*.a' -print -quit 2>/dev/null)" ]
}

is_there() {
    case $1 in
        command:*) command -v "${1#command:}" >/dev/null ;;
        header:*) has_header "${1#header:}" ;;
        clang-rt) has_clang_runtimes ;;
        *) echo "packages.sh: unknown probe $1" >&2; exit 2 ;;
    esac
}

# Prints "package<tab>what it is" for all that is missing in the groups.
missing_in() {
    local group probe package what
    while read -r group probe package what; do
        [[ " $* " == *" $group "* ]] || continue
        is_there "$probe" || printf '%s\t%s\n' "$package" "$what"
    done < <(all_needs)
}

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo -n "$@"; fi
}

may_install() {
    command -v apt-get >/dev/null || return 1
    [ "$(id -u)" = 0 ] || sudo -n true 2>/dev/null
}

install_packages() {
    local apt=(env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=300)
    echo "Installing: $*"
    as_root "${apt[@]}" update || echo "The package lists could not be refreshed; trying with those that are there." >&2
    as_root "${apt[@]}" install -y --no-install-recommends "$@" >/dev/null
}

main() {
    CPATH=${CPATH:-}
    local missing
    missing=$(missing_in "$@")
    if [ -z "$missing" ]; then return 0; fi

    if may_install; then
        # shellcheck disable=SC2046
        install_packages $(cut -f1 <<<"$missing")
        missing=$(missing_in "$@")
        if [ -z "$missing" ]; then return 0; fi
        echo "Still missing after the installation:" >&2
    else
        echo "These are missing, and this account can't install them:" >&2
    fi
    sed 's/^\([^\t]*\)\t\(.*\)$/  \2 (Debian package \1)/' <<<"$missing" >&2
    # shellcheck disable=SC2046
    echo "On Debian and Ubuntu: apt-get install $(cut -f1 <<<"$missing" | paste -sd' ')" >&2
    return 1
}

main "$@"
