#!/usr/bin/env bash
# Checks that the library, built shared, needs nothing but the C and C++ runtime and threads.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
source scripts/common.sh

allowed='^(libstdc\+\+|libm|libgcc_s|libc|libpthread|ld-linux[-a-z0-9_]*)\.so(\.[0-9]+)*$'

build_shared_library
library=$(find build/checks/shared/znGeom -name 'libznGeom.so' -print -quit)
needed=$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
foreign=$(grep -Ev "$allowed" <<<"$needed" || true)
if [ -n "$foreign" ]; then
    echo "links: FAILED, the library needs" $foreign
    exit 1
fi
echo "links: the library needs only" $needed
