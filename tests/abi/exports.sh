#!/bin/bash
# Compares the names that a shared library exports with those that the project promises: all that
# abi/libvelkperfctrl.abi describes are there, and there are no others than the functions with
# VELK_API in the public headers and the names that velkperfctrl.map.txt lists in full.
# Usage: exports.sh NM LIBRARY
set -euo pipefail

nm=$1 library=$2
cd "$(dirname "$0")/../.."

exported=$("$nm" -D --defined-only "$library" |
    grep -v ' A ' | cut -d' ' -f3- | sed 's/@.*//' | LC_ALL=C sort -u)
described=$(sed -n "s/.*<elf-symbol name='\([^']*\)'.*/\1/p" abi/libvelkperfctrl.abi | LC_ALL=C sort)
if lost=$(LC_ALL=C comm -13 <(echo "$exported") <(echo "$described") | grep .); then
    printf 'not exported any more:\n%s\n' "$lost"
    exit 1
fi

# Overloads have a line each.
names_without_parameters() { sed 's/(.*//' | LC_ALL=C sort; }
declared() {
    awk '
        /^class / { scope = $2 "::" }
        /^};/ { scope = "" }
        sub(/^.*VELK_API (static )?int /, "") { print scope $0 }' include/*.h
    sed -n -e 's/^ *"\(VELKRes.*\|ErrorHandle.*\)";/\1/p' \
        -e 's/^ *\(VELKRes.*\)\*;/\1/p' velkperfctrl.map.txt
}
diff -u <(declared | names_without_parameters) \
    <(c++filt <<<"$exported" | LC_ALL=C sort -u | names_without_parameters)
