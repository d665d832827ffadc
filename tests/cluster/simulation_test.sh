#!/usr/bin/env bash
# That the tables of docs/beyond.md are those of its script: simulation_test.sh SOURCES.
set -eu
# shellcheck source=tests/support/checks.sh
source "$(dirname -- "$0")/../support/checks.sh"

tables=$("$1/tools/beyond-simulation")
[ "$(grep -c '^| ' <<<"$tables")" -gt 10 ] || fail "the script makes no tables"
while IFS= read -r line; do
    [ -z "$line" ] || grep -q -x -F -e "$line" -- "$1/docs/beyond.md" || fail "not in the text: $line"
done <<<"$tables"
end_checks
