#!/usr/bin/env bash
# Installs a build into a folder, moves the folder, and builds and runs a C and a C++ consumer from
# there.
#
# Usage: consume.sh BUILD-FOLDER LIBRARY-FOLDER-OF-AN-INSTALLATION
set -euo pipefail

build=$1
library_dir=$2
consumer=$(dirname "$(realpath "$0")")/consumer
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Runs a command, and shows what it printed only when it failed.
quietly() {
    "$@" >"$work/log" 2>&1 || {
        cat "$work/log"
        exit 1
    }
}

quietly cmake --install "$build" --prefix "$work/staged"
mv "$work/staged" "$work/installed"

export PKG_CONFIG_PATH=$work/installed/$library_dir/pkgconfig
export LD_LIBRARY_PATH=$work/installed/$library_dir
# pkg-config quotes spaces, which xargs undoes.
mapfile -t flags < <(pkg-config --cflags --libs velkperfctrl | xargs -n 1)
read -r -a extra_flags <<<"$CFLAGS"
# The node answers in place of the driver, and refers to nothing that its user calls.
"$CC" -std=c11 -Wall -Wextra -pedantic -Werror "${extra_flags[@]}" "$consumer/consumer.c" \
    -o "$work/c-consumer" -Wl,--no-as-needed -lvelknode "${flags[@]}"
"$work/c-consumer"

quietly cmake -S "$consumer" -B "$work/cxx" -DCMAKE_PREFIX_PATH="$work/installed"
quietly cmake --build "$work/cxx"
unset LD_LIBRARY_PATH
"$work/cxx/cxx-consumer"
