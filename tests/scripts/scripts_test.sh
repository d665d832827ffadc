#!/usr/bin/env bash
# The project's scripts as far as they go without installing or building: scripts_test.sh PROJECT
set -u
# shellcheck source=tests/support/checks.sh
source "$(dirname -- "$0")/../support/checks.sh"
cd /
project=$1

# shellcheck disable=SC2317  # check() calls it
# gives STATUS PATTERN COMMAND...: ends with the status and prints a line that matches.
gives() {
    local wanted=$1 pattern=$2 output status=0
    shift 2
    output=$("$@" 2>&1 </dev/null) || status=$?
    [ "$status" -eq "$wanted" ] && grep -q -- "$pattern" <<<"$output"
}

check "run explains itself" gives 0 "^Usage: ./run" "$project/run" --help
check "run refuses what it does not know" gives 2 "^Usage: ./run" "$project/run" --nonsense
check "run wants a file for a picture" gives 1 "needs a file name" "$project/run" --shot
check "test refuses an unknown preset" gives 1 "^Usage: ./test" "$project/test" release
check "packages explains itself" gives 0 "^Usage: tools/packages" "$project/tools/packages" --help
check "packages refuses what it does not know" gives 2 "^Usage: tools/packages" \
    "$project/tools/packages" --nonsense
check "packages wants a build to pack" gives 1 "no build in" "$project/tools/packages" --from /
check "peers of the service are known by name" gives 2 "^Usage: bench/peers_service" \
    "$project/bench/peers_service" --quick nonsense

purposes="build run display test bench check package system tidy fuzz coverage peers"
duplicates() { grep -v '^#' "$project/packages.txt" | awk 'NF { print $1 }' | sort | uniq -d; }
malformed() {
    awk -v known=" $purposes " '
        !/^#/ && NF && (NF != 2 || !index(known, " " $2 " ")) { print FILENAME ": " $0 }
    ' "$project/packages.txt"
}
check "packages are listed once" test -z "$(duplicates)"
check "packages have one known purpose" test -z "$(malformed)"

# What the scripts make of the list.
listed() { bash -c 'source "$1/tools/common.sh"; shift; packages_for "$@"' - "$project" "$@"; }
check "purposes select packages" test "$(listed run check | grep -cx -e dbus-daemon -e shellcheck)" = 2
check "other purposes stay out" test "$(listed test | grep -cx -e cmake -e xvfb)" = 0
# shellcheck disable=SC2086  # one purpose a word
check "every package has a purpose" \
    test "$(listed $purposes | wc -l)" = "$(grep -cv -e '^#' -e '^$' "$project/packages.txt")"

# What a log of ctest says was skipped: of Qt Test, of GoogleTest, of a script.
log=$(mktemp)
trap 'rm -f -- "$log"' EXIT
cat >"$log" <<'END'
1/3 Testing: home_test
PASS   : quorbel::HomeTest::reads(skip) none
SKIP   : quorbel::HomeTest::asks(row) a service runs on this machine
Totals: 1 passed, 0 failed, 1 skipped, 0 blacklisted, 10ms
2/3 Testing: service_test
[ RUN      ] ServiceTest.HearsIPv6
tests/service/ServiceTest.cpp:116: Skipped
no IPv6 here

[  SKIPPED ] ServiceTest.HearsIPv6 (3 ms)
[  PASSED  ] 4 tests.
[  SKIPPED ] 1 test, listed below:
[  SKIPPED ] ServiceTest.HearsIPv6
3/3 Testing: packaging_access_test
Skipped: only root can act as other users.
END
wanted="quorbel::HomeTest::asks(row): a service runs on this machine
ServiceTest.HearsIPv6: no IPv6 here
packaging_access_test: only root can act as other users."
skipped() { bash -c 'source "$1/tools/common.sh"; skipped_tests "$2"' - "$project" "$log"; }
check "what was skipped is told, with the reason" test "$(skipped)" = "$wanted"

# The tests that docs/behaviour.md names, and that are not there: "name" or "Suite.Name".
missing_tests() {
    local name pattern
    # shellcheck disable=SC2016  # the marks of code
    sed -n 's/^|.*|.*|\(.*\)|$/\1/p' "$project/docs/behaviour.md" | grep -o '`[^`]*`' | tr -d '`' |
        sort -u | while read -r name; do
        pattern="void $name\\(\\)"
        [[ $name != *.* ]] || pattern="^TEST(_[FP])?\\(${name%.*}, *${name##*.}\\)"
        grep -rqE --include='*.cpp' "$pattern" "$project/tests" || echo "$name"
    done
}
check "behaviour that is meant has its tests" test -z "$(missing_tests)"

# The names of tests that CONTRIBUTING.md would have otherwise: "FOLDER NAME", and "SUITE".
odd_programs() {
    local list folder
    find "$project/tests" -mindepth 2 -name CMakeLists.txt | while read -r list; do
        folder=${list#"$project/tests/"}
        folder=${folder%%/*}
        sed -nE 's/^ *(quorbel_test\(|add_test\(NAME )([^ )]+).*/\2/p' "$list" |
            grep -vE "^${folder}(_[a-z0-9_]+|_fit_\\$\{name\}|_mnemonics_\\$\{language\})?_test$" | sed "s/^/$folder /"
    done
}
odd_suites() {
    grep -rhoE --include='*.cpp' '^TEST(_[FP])?\([A-Za-z0-9]+' "$project/tests" | sed 's/.*(//' |
        grep -v 'Test$' | sort -u
}
check "test programs are named after their folder: $(odd_programs)" test -z "$(odd_programs)"
check "suites end in Test: $(odd_suites)" test -z "$(odd_suites)"

end_checks
