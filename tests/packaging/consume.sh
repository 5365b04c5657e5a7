#!/usr/bin/env bash
# Installs a build into a folder, moves the folder, and builds and runs a C and a C++ consumer from
# there.
#
# Usage: consume.sh BUILD-FOLDER WORK-FOLDER LIBRARY-FOLDER-OF-AN-INSTALLATION
set -euo pipefail

build=$1
work=$2
library_dir=$3
consumer=$(dirname "$(realpath "$0")")/consumer

rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/staged" >"$work/install.log"
mv "$work/staged" "$work/installed"

export PKG_CONFIG_PATH=$work/installed/$library_dir/pkgconfig
export LD_LIBRARY_PATH=$work/installed/$library_dir
read -r -a flags <<<"$(pkg-config --cflags --libs velkperfctrl)"
read -r -a extra_flags <<<"$CFLAGS"
# The node answers in place of the driver, and refers to nothing that its user calls.
"$CC" -std=c11 -Wall -Wextra -pedantic -Werror "${extra_flags[@]}" "$consumer/consumer.c" \
    -o "$work/c-consumer" -Wl,--no-as-needed -lvelknode "${flags[@]}"
"$work/c-consumer"

cmake -S "$consumer" -B "$work/cxx" -DCMAKE_PREFIX_PATH="$work/installed" >"$work/configure.log"
cmake --build "$work/cxx" >"$work/build.log"
unset LD_LIBRARY_PATH
"$work/cxx/cxx-consumer"
