# shellcheck shell=bash
# What the scripts share. Each sources this file, and is in the root folder of the project then.
#
# Messages about progress go to standard error, so that standard output carries results alone.

set -euo pipefail

# shellcheck disable=SC2034 # for those that take file names from their caller
called_from=$PWD
script_file=$(realpath "$0")
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() {
    printf '%s\n' "$*" >&2
}

fail() {
    say "$(basename "$script_file"): $*"
    exit 1
}

# A command line that makes no sense: exit status 2.
misused() {
    say "$(basename "$script_file"): $*"
    say "Try '$0 --help'."
    exit 2
}

# Prints the comment at the head of the calling script as its help, and ends it.
show_help() {
    sed -e '1d' -e '/^#/!Q' -e 's/^# \{0,1\}//' "$script_file"
    exit 0
}

# Runs a command, and shows what it printed only when it failed.
#   quietly LOG-FILE COMMAND...
quietly() {
    local log=$1
    shift
    mkdir -p "$(dirname "$log")"
    if ! "$@" >"$log" 2>&1; then
        cat "$log" >&2
        fail "this failed, its output is above and in $log: $*"
    fi
}

# Configures and builds a preset of CMakePresets.json; without targets everything in it.
#   build_preset PRESET [TARGET...]
build_preset() {
    local preset=$1 targets=()
    shift
    [[ $# -eq 0 ]] || targets=(--target "$@")
    say "Building preset '$preset' in build/$preset ..."
    quietly "build/$preset/configure.log" cmake --preset "$preset"
    quietly "build/$preset/build.log" "${without_randomisation[@]}" \
        cmake --build --preset "$preset" "${targets[@]}" -- --quiet
}

# A command that runs another one without address randomisation. ThreadSanitizer needs it where the
# kernel randomises more bits than it can bear. Empty where the system does not allow it.
without_randomisation=()
avoid_address_randomisation() {
    if setarch --addr-no-randomize true 2>/dev/null; then
        without_randomisation=(setarch --addr-no-randomize)
    fi
}
