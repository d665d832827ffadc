# shellcheck shell=bash
# What ./run, ./test and .ci/run share. Sourced; goes to the project's folder.

set -euo pipefail
unset CDPATH
# shellcheck disable=SC2034  # for the scripts that take file names
called_from=$PWD
cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.."

say() { printf '%s\n' "$*" >&2; }

die() {
    say "$*"
    exit 1
}

# Runs a command without its output, unless it fails.
quietly() {
    local log status=0
    log=$(mktemp)
    "$@" >"$log" 2>&1 || status=$?
    [ "$status" -eq 0 ] || cat -- "$log" >&2
    rm -f -- "$log"
    return "$status"
}

# packages_for PURPOSE...: their names, one a line.
packages_for() {
    awk -v purposes=" $* " '!/^#/ && NF == 2 && index(purposes, " " $2 " ") { print $1 }' packages.txt
}

# install_missing PURPOSE...: asks apt only for what dpkg does not have.
install_missing() {
    local -a missing as_root=()
    if ! command -v apt-get >/dev/null; then
        say "This is not a Debian system; packages.txt lists what is needed."
        return
    fi
    mapfile -t missing < <(comm -23 <(packages_for "$@" | sort -u) <(
        # shellcheck disable=SC2046  # one name a word
        dpkg-query -W -f='${db:Status-Status} ${Package}\n' $(packages_for "$@") 2>/dev/null |
            sed -n 's/^installed //p' | sort -u))
    [ "${#missing[@]}" -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            die "Only root can install what is missing: apt-get install ${missing[*]}"
        as_root=(sudo)
    fi
    as_root+=(env DEBIAN_FRONTEND=noninteractive apt-get -qy -o DPkg::Lock::Timeout=600)
    say "Installing: ${missing[*]}"
    quietly "${as_root[@]}" update || say "The package lists could not be updated; trying with the old ones."
    quietly "${as_root[@]}" install --no-install-recommends "${missing[@]}" ||
        die "The packages could not be installed."
}

# build PRESET [TARGET...]: into build/PRESET; prints what goes wrong, and on a terminal how far it is.
build() {
    local preset=$1 quiet=()
    shift
    [ -t 1 ] || quiet=(-- --quiet)
    quietly cmake --preset "$preset" || die "Configuring build/$preset failed."
    cmake --build --preset "$preset" ${1:+--target "$@"} "${quiet[@]}" ||
        die "Building build/$preset failed."
}

# skipped_tests LOG: what ctest's log says was skipped, one a line: "NAME: REASON".
skipped_tests() {
    awk '
        /^[0-9]+\/[0-9]+ Testing: / { program = $3; reason = "" }
        /^SKIP   : / {
            name = $3
            sub(/^SKIP   : [^ ]+ */, "")
            print name ": " $0
        }
        /: Skipped$/ { reason = " "; next }
        reason == " " { reason = $0; next }
        /^\[  SKIPPED \] .* \([0-9]+ ms\)$/ {
            print $4 ": " reason
            reason = ""
        }
        /^Skipped: / {
            sub(/^Skipped: /, "")
            print program ": " $0
        }
    ' "$1"
}
