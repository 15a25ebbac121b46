#!/usr/bin/env bash
# Checks that all C++ files, tracked or new, are formatted as .clang-format asks.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

list_sources() {
    if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
        git ls-files -z --cached --others --exclude-standard -- '*.h' '*.cpp'
    else
        find . -path './build*' -prune -o \( -name '*.h' -o -name '*.cpp' \) -print0
    fi
}

# A file that is deleted but still in git's index is left out.
files=()
while IFS= read -r -d '' file; do
    if [ -e "$file" ]; then files+=("$file"); fi
done < <(list_sources)

if [ ${#files[@]} -gt 0 ] && ! clang-format --dry-run --Werror "${files[@]}"; then
    echo "format: FAILED, run clang-format -i on the files above"
    exit 1
fi
echo "format: ${#files[@]} files are clean"
