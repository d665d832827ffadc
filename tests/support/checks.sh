# shellcheck shell=bash
# Checks of which each is made, whatever became of the ones before. Sourced; end_checks is the last
# line of the script.
failures=0

# check WHAT COMMAND...
check() {
    local what=$1
    shift
    "$@" || fail "$what"
}

# check_equal WHAT WANTED GOT
check_equal() {
    [ "$2" = "$3" ] || fail "$1: wanted \"$2\", got \"$3\""
}

fail() {
    echo "FAILED: $1"
    failures=$((failures + 1))
}

# quietly COMMAND...: its output only when it fails.
quietly() {
    local output
    output=$("$@" 2>&1) || { echo "$output"; return 1; }
}

end_checks() {
    [ "$failures" -eq 0 ] && echo "All checks passed."
    exit "$((failures > 0))"
}
