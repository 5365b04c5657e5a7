# shellcheck shell=bash
# What the scripts share. A script that sources this file is then in the project's root folder.
#
# Messages about progress go to standard error, so that standard output has only results.

set -euo pipefail

# What tools print is read here, by their English words and with a point in numbers.
export LC_ALL=C.UTF-8

# shellcheck disable=SC2034 # for scripts that take file names from their caller
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

# For an invalid command line: exit status 2.
misused() {
    say "$(basename "$script_file"): $*"
    say "Try '$0 --help'."
    exit 2
}

# Prints the comment at the start of the calling script as its help, and exits.
show_help() {
    sed -e '1d' -e '/^#/!Q' -e 's/^# \{0,1\}//' "$script_file"
    exit 0
}

# Makes a folder below build/, where the scripts put all that they make.
make_folder() {
    if ! mkdir -p "$1" 2>/dev/null || [[ ! -w $1 ]]; then
        fail "cannot write to $PWD/$1, where the scripts build. Copy the project to a folder that" \
            "is yours to write to, or make this one so."
    fi
}

# Fails when the file system of a folder has less free space than this.
#   need_space FOLDER MEGABYTES
need_space() {
    local free
    free=$(df --output=avail --block-size=1MB "$1" | tail -n 1)
    ((free >= $2)) || fail "about $2 MB are needed in $1, where $((free)) MB are free"
}

# The progress lines of ninja, of apt on its status descriptor, and of debootstrap.
ninja_step='^\[([0-9]+)/([0-9]+)\] (.*)'
apt_step='^(dl|pm)status:[^:]*:([0-9]+)[^:]*:(.*)'
bootstrap_step='^I: (.*)'

# Reads the output of a tool and shows its progress: on a terminal in one line, which is cleared at
# the end, and elsewhere in a new line every ten seconds.
show_progress() {
    local line text next shown='' columns=80 pause=10
    if [[ -t 2 && ${TERM-dumb} != dumb ]]; then
        pause=1
        read -r _ columns < <(stty size <&2) || true
        ((columns > 0)) || columns=80 # a terminal that does not know its size
    fi
    next=$((SECONDS + pause))
    while IFS= read -r line; do
        if [[ $line =~ $ninja_step ]]; then
            text="$((100 * BASH_REMATCH[1] / BASH_REMATCH[2])) % ${BASH_REMATCH[3]%% *}"
            text+=" ${BASH_REMATCH[3]##*/}"
            text=${text%.o}
        elif [[ $line =~ $apt_step ]]; then
            text="${BASH_REMATCH[2]} % ${BASH_REMATCH[3]}"
        elif [[ $line =~ $bootstrap_step ]]; then
            text=${BASH_REMATCH[1]}
        else
            continue
        fi
        ((SECONDS >= next)) || continue
        next=$((SECONDS + pause))
        text="  $text"
        text=${text:0:columns-1}
        if ((pause == 1)); then
            printf '\r\033[K%s' "$text" >&2
            shown=yes
        else
            say "$text"
        fi
    done
    [[ -z $shown ]] || printf '\r\033[K' >&2
}

# Runs a command and shows its progress. Shows its output only when it failed.
#   quietly LOG-FILE COMMAND...
quietly() {
    local log=$1 status
    shift
    make_folder "$(dirname "$log")"
    # Not in a condition, where bash would not stop at a failing command of a function.
    set +e
    (
        set -e
        "$@"
    ) 2>&1 | tee "$log" | show_progress
    status=$?
    set -e
    if ((status != 0)); then
        grep -vE -e "$ninja_step" -e "$apt_step" "$log" >&2 || true
        fail "this failed, its output is above and in $log: $*"
    fi
}

# Prints a number of seconds, rounded, with a unit.
duration() {
    if (($1 < 100)); then
        echo "$(($1 + 1)) s"
    else
        echo "$((($1 + 30) / 60)) min"
    fi
}

# Announces the time and disk space of a build. Measured with g++ 12 and no compiler cache, a step
# takes about three seconds on one processor and 2.5 MB, with sanitizers four seconds and 4 MB.
announce_build() {
    local preset=$1 steps seconds_a_step=3 kilobytes_a_step=2500 megabytes seconds
    shift
    steps=$(cmake --build --preset "$preset" "$@" -- -n | grep -cE "$ninja_step" || true)
    ((steps > 0)) || return 0
    case $preset in asan | tsan | fuzz | coverage) seconds_a_step=4 kilobytes_a_step=4000 ;; esac
    seconds=$((steps * seconds_a_step / $(nproc)))
    megabytes=$((steps * kilobytes_a_step / 1000))
    say "Building preset '$preset' in build/$preset: steps: $steps, time: about" \
        "$(duration "$seconds") on $(nproc) processors, disk: up to $megabytes MB."
    need_space "build/$preset" "$megabytes"
}

# Configures a preset of CMakePresets.json. Warnings are errors if the preset or VELK_WERROR=ON in
# the environment asks for it. A build folder of a source tree that has moved is cleared first,
# because CMake would refuse it.
#   configure_preset PRESET [ARGUMENT OF cmake...]
configure_preset() {
    local preset=$1 folder=build/$1 made_for options=()
    shift
    make_folder "$folder"
    made_for=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$folder/CMakeCache.txt" 2>/dev/null || true)
    if [[ -n $made_for && ! $made_for -ef . ]]; then
        say "$folder was made for the project in $made_for, and is rebuilt for $PWD."
        options=(--fresh)
    fi
    [[ -z ${VELK_WERROR-} ]] || options+=("-DVELK_WERROR=$VELK_WERROR")
    quietly "$folder/configure.log" cmake --preset "$preset" "${options[@]}" "$@"
}

# Configures and builds targets of a preset, by default all.
#   build_preset PRESET [TARGET...]
build_preset() {
    local preset=$1 folder=build/$1 targets=() warnings build_lock
    shift
    [[ $# -eq 0 ]] || targets=(--target "$@")
    make_folder "$folder"
    exec {build_lock}>"$folder/lock"
    if ! flock --nonblock "$build_lock"; then
        say "Waiting for another build in $folder ..."
        flock "$build_lock"
    fi
    configure_preset "$preset"
    announce_build "$preset" "${targets[@]}"
    quietly "$folder/build.log" "${without_randomisation[@]}" \
        cmake --build --preset "$preset" "${targets[@]}"
    warnings=$(grep -cE '(: |^)warning: ' "$folder/build.log" || true)
    ((warnings == 0)) || say "Warnings of the compiler: $warnings, see $folder/build.log."
    exec {build_lock}>&-
}

# Whether a tool has the major version with which the project's reference figures or texts were
# made. If not, says so: they cannot be compared then.
#   has_version TOOL VERSION WHAT
has_version() {
    local version
    version=$("$1" --version | grep -oE '[0-9]+(\.[0-9]+)+' | head -n 1)
    if [[ ${version%%.*} != "$2" ]]; then
        say "Not compared: $3 are those of $1 $2, and this is $1 $version."
        return 1
    fi
}

# A command that runs another one without address randomisation, empty where the system does not
# allow that. ThreadSanitizer needs it on kernels that randomise more bits than it supports.
without_randomisation=()
avoid_address_randomisation() {
    if setarch --addr-no-randomize true 2>/dev/null; then
        without_randomisation=(setarch --addr-no-randomize)
    fi
}
