#!/usr/bin/env bash
# Installs a build into a folder with a blank in its path, moves the folder, and uses what is there as
# its users do, with nothing of it in the environment: builds and runs a C and a C++ consumer, runs
# the tools, reads their pages, completes their arguments.
#
# Usage: consume.sh BUILD-FOLDER LIBRARY-FOLDER-OF-AN-INSTALLATION HAS-PAGES
set -euo pipefail

build=$1
library_dir=$2
has_pages=$3
consumer=$(dirname "$(realpath "$0")")/consumer
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
work="$folder/with a blank"
mkdir "$work"

fail() {
    echo "$*"
    exit 1
}

# Runs a command, and shows what it printed only when it failed.
quietly() {
    "$@" >"$work/log" 2>&1 || {
        cat "$work/log"
        exit 1
    }
}

quietly cmake --install "$build" --prefix "$work/staged"
mv "$work/staged" "$work/installed"
samples=$work/installed/share/velkperfctrl/samples
unset LD_LIBRARY_PATH

export PKG_CONFIG_PATH=$work/installed/$library_dir/pkgconfig
read -r -a extra_flags <<<"$CFLAGS"
# The library alone starts, and with the desk its model answers in place of the driver.
for package in velkperfctrl velkdesk; do
    # pkg-config quotes spaces, which xargs undoes.
    mapfile -t flags < <(pkg-config --cflags --libs "$package" | xargs -n 1)
    "$CC" -std=c11 -Wall -Wextra -pedantic -Werror "${extra_flags[@]}" "$consumer/consumer.c" \
        -o "$work/$package-consumer" "${flags[@]}"
done
"$work/velkdesk-consumer"
status=0
"$work/velkperfctrl-consumer" 2>"$work/log" || status=$?
[[ $status -eq 1 && $(<"$work/log") == "unsetCriticalTaskCus() returned -1,"* ]] ||
    fail "without a driver, only what needs one fails: status $status, $(<"$work/log")"

quietly cmake -S "$consumer" -B "$work/cxx" -DCMAKE_PREFIX_PATH="$work/installed"
quietly cmake --build "$work/cxx"
"$work/cxx/cxx-consumer" "$samples/tuning"

# The examples build from a copy of their folder, in both ways.
cp -r "$work/installed/share/doc/velkperfctrl/examples" "$work/examples"
quietly make -C "$work/examples"
quietly cmake -S "$work/examples" -B "$work/examples/build" -DCMAKE_PREFIX_PATH="$work/installed"
quietly cmake --build "$work/examples/build"
# Nothing but what an address sanitizer needs to come behind a preloaded library.
clean=(env -i "ASAN_OPTIONS=${ASAN_OPTIONS-}")
for program in "$work"/examples/{,build/}{camera-service,customer-module}; do
    [[ $("$program" 2>&1) == *velk-run* ]] || fail "$program does not say what it lacks"
    quietly "${clean[@]}" "$work/installed/bin/velk-run" --quiet -- "$program"
done

quietly "${clean[@]}" "$work/installed/bin/velk-replay" "$samples/capture-5s.jsonl" \
    --tuning "$samples/tuning" --quiet
# Every option of the help stands in the page, as a term of its own or beside another.
for tool in "$work"/installed/bin/velk-*; do
    "$tool" --help | grep -oE '^ +(-., ?)?--[a-z]+' | grep -oE -e '--.*' >"$work/options"
    page=$work/installed/share/man/man1/${tool##*/}.1
    while [[ $has_pages == yes ]] && read -r option; do
        grep -qE "^\.B .*${option//-/'\\-'}\b" "$page" || fail "$page: lacks $option"
    done <"$work/options"
done

# Prints what is offered for the last of the words of a command line.
completions() {
    local COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY
    (
        set +e
        # shellcheck source=cmake/completion.bash
        source "$work/installed/share/bash-completion/completions/$1"
        PATH=$work/installed/bin:$PATH
        _velk "$1" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
        echo "${COMPREPLY[*]}"
    )
}

cd "$work/installed"
while IFS='|' read -r line expected; do
    read -r -a words <<<"$line"
    [[ $line != *" " ]] || words+=("")
    offered=$(completions "${words[@]}")
    [[ $offered == "$expected" ]] || fail "completion of '$line': '$offered', expected '$expected'"
done <<'END'
velk-replay --fo|--format
velk-replay --format |table jsonl
velk-replay --format = js|jsonl
velk-replay -q --speed |max
velk-replay --tuning sha|share
velk-replay sh|share
velk-node-check --st|--strict
velk-run -- velk-tun|velk-tuning
velk-tuning |check compare suggest
velk-tuning check --s|--strict
END
