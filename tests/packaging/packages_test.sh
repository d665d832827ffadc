#!/usr/bin/env bash
# The Debian packages that are made of a build: packages_test.sh PROJECT BUILD
set -eu
# shellcheck source=tests/support/checks.sh
source "$(dirname -- "$0")/../support/checks.sh"
project=$1 build=$2
scratch=$(mktemp -d)
trap 'rm -rf -- "$scratch"' EXIT

check "they are made, and twice the same" quietly "$project/tools/packages" --from "$build" \
    --twice --version 7.5 --output "$scratch"
service=$(echo "$scratch"/quorbel-service_7.5_*.deb)
window=$(echo "$scratch"/quorbel_7.5_*.deb)
check "both are there" test -f "$service" -a -f "$window"

depends() { dpkg-deb --field "$1" Pre-Depends Depends Recommends; }
check "a server needs neither Qt nor a display" test -z "$(depends "$service" |
    grep -E -i 'qt|x11|xcb|wayland')"
check "what the service calls is brought along" test "$(depends "$service" |
    grep -o -e libsystemd0 -e libcurl4 -e libsqlite3-0 -e libssl3 -e 'libicu[0-9]*' | wc -l)" = 5
check "the window comes with its service" grep -q 'quorbel-service (= 7.5)' <(depends "$window")
check "the window can draw its images" grep -q libqt6svg6 <(depends "$window")

# Together they hold what an installation puts in place, and nothing twice.
dpkg-deb --extract "$service" "$scratch/service"
dpkg-deb --extract "$window" "$scratch/window"
DESTDIR=$scratch/all cmake --install "$build" --prefix /usr >/dev/null
files() {
    (cd -- "$1" && find . \( -type f -o -type l \) ! -path './usr/share/doc/*' |
        sed -e 's/^\.\/lib\//.\/usr\/lib\//' -e 's/\(man[0-9]\/.*\)\.gz$/\1/')
}
check "the packages hold what is installed" diff <(files "$scratch/all" | sort) \
    <({ files "$scratch/service"; files "$scratch/window"; } | sort)
check "a server's administrator finds what there is to do" cmp "$project/docs/operations.md" \
    "$scratch/service/usr/share/doc/quorbel-service/operations.md"
check "nothing stands where an administrator's own settings are" test ! -e "$scratch/service/etc"
check "a server's terminal has its program" test -x "$scratch/service/usr/bin/quorbelctl" -a \
    -f "$scratch/service/usr/share/bash-completion/completions/quorbelctl" -a \
    -f "$scratch/service/usr/share/man/man1/quorbelctl.1.gz"
check "what was collected is no part of a package" test ! -e "$scratch/service/Library"
check "the programs are stripped" test -z "$(readelf -S "$scratch/service/usr/sbin/QuorbelSrv" \
    "$scratch/service/usr/bin/quorbelctl" "$scratch/window/usr/bin/Quorbel" | grep -F .debug_info)"

# shellcheck disable=SC2317  # check() calls it
examine() {
    quietly lintian --fail-on error,warning "$@"
}
check "lintian finds neither errors nor warnings" examine "$service" "$window"
# The same check notices what is wrong.
dpkg-deb --raw-extract "$window" "$scratch/wrong"
rm -- "$scratch/wrong/usr/share/doc/quorbel/copyright"
dpkg-deb --build "$scratch/wrong" "$scratch/wrong.deb" >/dev/null
# shellcheck disable=SC2317  # check() calls it
notices() { ! examine "$scratch/wrong.deb" >/dev/null; }
check "lintian finds what is wrong" notices

# What lintian is told to pass over has its reason in the line above.
unexplained() {
    awk 'FNR == 1 { said = 0 } /^#/ { said = 1; next } NF && !said { print FILENAME ": " $0 } { said = 0 }' \
        /dev/null "$project"/debian/*lintian-overrides
}
overrides=("$project"/debian/*lintian-overrides)
if [ -e "${overrides[0]}" ]; then
    check "each exception is explained" test -z "$(unexplained)"
fi

end_checks
