#!/bin/bash
# Compares the names that a shared library exports with the list beside this script.
# Usage: exports.sh NM LIBRARY
set -euo pipefail

nm=$1 library=$2
exported=$("$nm" -D --defined-only "$library" |
    grep -v ' A ' | cut -d' ' -f3- | sed 's/@.*//' | c++filt | LC_ALL=C sort -u)
diff -u "$(dirname "$0")/exports.txt" <(echo "$exported")
