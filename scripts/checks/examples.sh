#!/usr/bin/env bash
# Checks that every example builds and runs, and that the first program in the README is the one in examples/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
source scripts/common.sh

fail() {
    echo "examples: FAILED, $1"
    exit 1
}

readme_program() {
    sed -n '/^```cpp$/,/^```$/p' README.md | sed '1d;/^```$/,$d'
}

configure release -DZNGEOM_EXAMPLES=ON -DZNGEOM_TESTS=ON
sources=(examples/*.cpp)
names=()
for source in "${sources[@]}"; do names+=("$(basename "$source" .cpp)"); done
build release "${names[@]}"

ctest --test-dir build/release -L '^example$' --output-on-failure >build/examples.log 2>&1 ||
    { cat build/examples.log; fail "a program failed"; }
for name in "${names[@]}"; do
    grep -q "example\.$name .*Passed" build/examples.log || fail "$name was not run"
done
diff <(readme_program) examples/first_program.cpp || fail "the README's first program is not examples/first_program.cpp"
echo "examples: ${#names[@]} programs build and run"
