#!/usr/bin/env bash
# Installs a Debian package into a root folder that holds nothing but what the package depends on,
# uses it there, and removes it without a trace. Needs to be root, if only of a user namespace, in a
# mount namespace of its own.
#
# Usage: empty-root.sh PACKAGE FOLDER-FOR-DOWNLOADS-AND-ROOT
set -euo pipefail

# dpkg's own programs, which users may lack.
PATH=$PATH:/usr/sbin:/sbin
package=$(realpath "$1")
mkdir -p "$2/archives/partial"
work=$(realpath "$2")
root=$work/root
samples=/usr/share/velkperfctrl/samples

fail() {
    echo "$(basename "$0"): $*" >&2
    exit 1
}

# Fetches all that the package needs on a system where nothing is installed.
download_dependencies() {
    : >"$work/nothing-installed"
    apt-get --quiet=2 --option Dir::State::status="$work/nothing-installed" \
        --option Dir::Cache::archives="$work/archives" --option Debug::NoLocking=true \
        --option APT::Sandbox::User=root --no-install-recommends --download-only --yes \
        install "$package"
}

# Unpacks the dependencies, and lists them as installed. Their scripts would need more of a system.
unpack_dependencies() {
    local archive
    rm -rf "$root"
    mkdir -p "$root"/var/lib/dpkg/{info,updates} "$root"/{dev,proc,tmp}
    for archive in "$work"/archives/*.deb; do
        dpkg-deb --extract "$archive" "$root"
        {
            dpkg-deb --field "$archive"
            printf 'Status: install ok installed\n\n'
        } >>"$root/var/lib/dpkg/status"
    done
}

# Prints every file but dpkg's own notes.
files() {
    find "$root" -xdev -path "$root/var/lib/dpkg" -prune -o -path "$root/var/log" -prune -o -print | sort
}

inside() {
    env -i PATH=/usr/sbin:/usr/bin chroot "$root" "$@"
}

use_tools() {
    local tool
    for tool in "$root"/usr/bin/velk-*; do
        inside "${tool##*/}" --version
    done
    inside velk-replay "$samples/capture-5s.jsonl" --tuning "$samples/tuning" --quiet >"$work/replay"
    inside velk-tuning check "$samples/tuning" "$samples/capture-5s.jsonl"
}

# Builds the examples against the package from outside, where the compiler is; runs, records and
# replays them.
use_examples() {
    local status program
    rm -rf "$work/examples"
    cp -r "$root/usr/share/doc/velkperfctrl/examples" "$work/examples"
    # In /usr the linker finds the library's own libraries without being told.
    PKG_CONFIG_PATH=$root/usr/lib/pkgconfig make --quiet -C "$work/examples" \
        C{,XX}FLAGS="-Wl,-rpath-link,'$root/usr/lib'"
    cp "$work"/examples/{camera-service,customer-module} "$root/tmp"
    # Without a driver both say so.
    for program in camera-service customer-module; do
        status=0
        inside "/tmp/$program" >"$work/said" 2>&1 || status=$?
        [[ $status -eq 1 && $(<"$work/said") == *velk-run* ]] ||
            fail "$program ended with $status: $(<"$work/said")"
        inside velk-run --quiet --record "/tmp/$program.jsonl" -- "/tmp/$program" >"$work/said"
    done
    inside velk-replay /tmp/camera-service.jsonl --tuning "$samples/tuning" --quiet >"$work/replay"
    rm "$root"/tmp/*
}

download_dependencies
unpack_dependencies
# Every system has these. The loader asks there for the folder that run paths begin with.
mount --rbind /proc "$root/proc"
mount --rbind /dev "$root/dev"
files >"$work/before"
dpkg --root="$root" --install "$package"
use_tools
use_examples
dpkg --root="$root" --purge velkperfctrl
files | diff --unified=0 "$work/before" - || fail "what was removed left the files above"
