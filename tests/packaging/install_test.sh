#!/usr/bin/env bash
# What an installation puts in place, and whether the system's own tools take it:
# install_test.sh BUILD
set -eu
# shellcheck source=tests/support/checks.sh
source "$(dirname -- "$0")/../support/checks.sh"
build=$1
root=$(mktemp -d)
trap 'rm -rf -- "$root"' EXIT

prefix=$(sed -n 's/^CMAKE_INSTALL_PREFIX:PATH=//p' "$build/CMakeCache.txt")
policies=/etc/dbus-1/system.d
[ "$prefix" != /usr ] || policies=/usr/share/dbus-1/system.d
DESTDIR=$root cmake --install "$build" >/dev/null
expected="\
$policies/com.Halvern.QuorbelSrv.conf 644
$prefix/bin/Quorbel 755
$prefix/bin/quorbelctl 755
$prefix/lib/systemd/system/quorbelsrv-tcp.socket 644
$prefix/lib/systemd/system/quorbelsrv-udp.socket 644
$prefix/lib/systemd/system/quorbelsrv.service 644
$prefix/lib/sysusers.d/quorbel.conf 644
$prefix/lib/tmpfiles.d/quorbel.conf 644
$prefix/sbin/QuorbelSrv 755
$prefix/share/applications/com.Halvern.Quorbel.desktop 644
$prefix/share/bash-completion/completions/quorbelctl 644
$prefix/share/dbus-1/system-services/com.Halvern.QuorbelSrv.service 644
$prefix/share/man/man1/Quorbel.1 644
$prefix/share/man/man1/quorbelctl.1 644
$prefix/share/doc/quorbel-service/examples/quorbelsrv.conf 644
$prefix/share/man/man5/quorbel-files.5 644
$prefix/share/man/man5/quorbelsrv.conf.5 644
$prefix/share/man/man8/QuorbelSrv.8 644
$prefix/share/metainfo/com.halvern.Quorbel.metainfo.xml 644"
icons=$prefix/share/icons/hicolor
for size in 16 22 24 32 48 64 128 256 512; do
    expected+="
$icons/${size}x$size/apps/com.Halvern.Quorbel.png 644"
done
expected+="
$icons/scalable/apps/com.Halvern.Quorbel.svg 644"
installed=$(cd "$root" && find . -type f -printf '/%P %m\n' | sort)
check "exactly our files are installed" diff <(sort <<<"$expected") <(echo "$installed")

# A library must be found where the system looks for it, or not at all.
for program in bin/Quorbel bin/quorbelctl sbin/QuorbelSrv; do
    check "$program has no search path of its own" test -z \
        "$(readelf -d "$root$prefix/$program" | grep -E 'RUNPATH|RPATH')"
done

example=$root$prefix/share/doc/quorbel-service/examples/quorbelsrv.conf
control=$root$prefix/bin/quorbelctl
check "nothing is on in the example" test -z "$(grep -v '^[#;]' "$example" | tr -d '\n')"
check "the example is right" quietly "$control" check-settings --config "$example"
sed 's/^;//' "$example" >"$root/everything.conf"
check "and with everything on" quietly "$control" check-settings --config "$root/everything.conf"
told=$(sed -n 's/^\.BR\{0,1\} *//p' "$root$prefix/share/man/man5/quorbelsrv.conf.5" | grep -o '[A-Z][A-Za-z]*=' | sort -u)
check_equal "the page tells of each key" "$(grep -o '^[A-Z][A-Za-z]*=' "$root/everything.conf" | sort -u)" "$told"

unit=$root$prefix/lib/systemd/system/quorbelsrv.service
bus_unit=$root$prefix/share/dbus-1/system-services/com.Halvern.QuorbelSrv.service
policy=$root$policies/com.Halvern.QuorbelSrv.conf
check "the unit starts what was installed" grep -qx "ExecStart=$prefix/sbin/QuorbelSrv" "$unit"
check "the bus starts the unit" grep -qx "SystemdService=$(basename "$unit")" "$bus_unit"
check "the bus starts it for our name" \
    grep -qx "Name=$(basename "$bus_unit" .service)" "$bus_unit"
bus_names=$(sed -nE 's/.*(own|send_destination|receive_sender)="([^"]*)".*/\2/p' "$policy" | sort -u)
check_equal "the policy is about our name only" "$(basename "$bus_unit" .service)" "$bus_names"
check "it has no capability" grep -qx CapabilityBoundingSet= "$unit"
check "and is given none" test "$(grep -c Capabilities= "$unit")" = 0

# The program that it starts has to be there.
mkdir "$root/verified"
sed "s|^ExecStart=|&$root|" "$unit" >"$root/verified/quorbelsrv.service"
cp -- "${unit%/*}"/*.socket "$root/verified/"
check "the unit holds nothing that is unknown" quietly systemd-analyze verify --man=no \
    --recursive-errors=no "$root/verified/quorbelsrv.service"
for socket in "$root"/verified/*.socket; do
    check "${socket##*/} holds nothing that is unknown" quietly systemd-analyze verify --man=no \
        --recursive-errors=no "$socket"
done
check "the unit exposes at most 1.4" quietly systemd-analyze security --no-pager \
    --offline=true --threshold=14 "$unit"

desktop=$root$prefix/share/applications/com.Halvern.Quorbel.desktop
check "the desktop takes the entry" quietly desktop-file-validate "$desktop"
check "software centres take the description" quietly appstreamcli validate --no-net \
    "$root$prefix/share/metainfo/com.halvern.Quorbel.metainfo.xml"
check "it says how to start what is described" grep -q \
    "<launchable type=\"desktop-id\">$(basename "$desktop")</launchable>" \
    "$root$prefix/share/metainfo/com.halvern.Quorbel.metainfo.xml"
for size in 16 22 24 32 48 64 128 256 512; do
    check "the icon of $size pixels has them" test "$(identify -format %wx%h \
        "$root$icons/${size}x$size/apps/com.Halvern.Quorbel.png")" = "${size}x$size"
done

# Where the pictures are to be published; they are those of the documentation.
shown=$(sed -n 's|.*<image>https://www.halvern.example/quorbel/screenshots/\(.*\)</image>|\1|p' \
    "$root$prefix/share/metainfo/com.halvern.Quorbel.metainfo.xml")
check "software centres are shown pictures" test "$(wc -l <<<"$shown")" -ge 3
for picture in $shown; do
    check "$picture is one that there is" test -f "$(dirname -- "$0")/../../docs/screenshots/$picture"
done

# formats PAGE: neither groff nor man has anything to say about it.
# shellcheck disable=SC2317  # check() calls it
formats() {
    local said
    said=$(groff -ww -man -Kutf8 -Tutf8 "$1" 2>&1 >/dev/null
        LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings --local-file "$1" 2>&1 >/dev/null)
    [ -z "$said" ] || { echo "$said"; return 1; }
}
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
for page in "$root$prefix"/share/man/man?/*; do
    check "${page##*/} is well-formed" formats "$page"
    check "${page##*/} can be found" quietly lexgrog "$page"
    check "${page##*/} is of this version" grep -q "^\.TH .* \"Quorbel $version\" " "$page"
done
# Every option that the service knows stands on its page, and no other.
options=$("$root$prefix/sbin/QuorbelSrv" --help | grep -o -e '--[a-z-]*' | sort -u)
check "the page of QuorbelSrv tells of its options" test "$(
    sed -n '/^\.SH OPTIONS/,/^\.SH SIGNALS/s/^\.BI\? \(\\-\\-[a-z\\-]*\).*/\1/p' \
        "$root$prefix/share/man/man8/QuorbelSrv.8" | sed -e 's/\\//g' -e '/help\|version/d' |
        sort)" = "$options"

# The same checks notice what is wrong.
# with_mistake FILE SED: the name of a copy that has one, beside the other units.
with_mistake() {
    local folder
    folder=$(mktemp -d -p "$root")
    cp -- "$root"/verified/* "$folder"
    sed "$2" "$1" >"$folder/${1##*/}"
    echo "$folder/${1##*/}"
}
# shellcheck disable=SC2317  # check() calls them
refuses() { ! "$@" >/dev/null 2>&1; }
# shellcheck disable=SC2317
verify() { systemd-analyze verify --man=no --recursive-errors=no "$1"; }
check "an unknown setting is noticed" refuses verify \
    "$(with_mistake "$root/verified/quorbelsrv.service" 's/^User=/Users=/')"
check "a program that is missing is noticed" refuses verify \
    "$(with_mistake "$root/verified/quorbelsrv.service" 's/^ExecStart=.*/&x/')"
check "a socket without a port is noticed" refuses verify \
    "$(with_mistake "$root/verified/quorbelsrv-tcp.socket" 's/^ListenStream=/Listen=/')"
check "a unit that exposes more is noticed" refuses systemd-analyze security --no-pager --offline=true \
    --threshold=14 "$(with_mistake "$unit" '/^SystemCallFilter=@/d')"
check "a wrong desktop entry is noticed" refuses desktop-file-validate \
    "$(with_mistake "$desktop" 's/^Categories=.*/Categories=Frob;/')"
check "a wrong description is noticed" refuses appstreamcli validate --no-net \
    "$(with_mistake "$root$prefix/share/metainfo/com.halvern.Quorbel.metainfo.xml" '/<summary>/d')"
page=$root$prefix/share/man/man8/QuorbelSrv.8
check "a wrong page is noticed" refuses formats "$(with_mistake "$page" 's/^\.SH OPTIONS/.FROB/')"
check "a page that cannot be found is noticed" refuses lexgrog "$(with_mistake "$page" '/^\.SH NAME/,/^\.SH SYN/d')"

# The prefix of an installation counts, not that of the configuration.
DESTDIR=$root/moved cmake --install "$build" --prefix /usr >/dev/null
check "the unit starts what was installed elsewhere" grep -qx "ExecStart=/usr/sbin/QuorbelSrv" \
    "$root/moved/usr/lib/systemd/system/quorbelsrv.service"
check "the policy of /usr stands in /usr" \
    test -f "$root/moved/usr/share/dbus-1/system.d/com.Halvern.QuorbelSrv.conf"

mkdir -p "$root/etc"
check "the user can be made" quietly \
    systemd-sysusers --root="$root" "$root$prefix/lib/sysusers.d/quorbel.conf"
check "the user owns the folder" grep -q '^quorbel:.*:/Library/Quorbel:' "$root/etc/passwd"
check "the user cannot log in" grep -q '^quorbel:.*/nologin$' "$root/etc/passwd"
check "the group is there" grep -q '^quorbel:' "$root/etc/group"
check "and that of the readers" grep -q '^quorbel-readers:' "$root/etc/group"
if [ "$(id -u)" -eq 0 ]; then
    # Names in access lists are looked up on this machine, which need not have the group.
    sed -i 's/group:quorbel-readers:/group:games:/' "$root$prefix/lib/tmpfiles.d/quorbel.conf"
    check "the folder can be made" quietly \
        systemd-tmpfiles --root="$root" --create "$root$prefix/lib/tmpfiles.d/quorbel.conf"
    id=$(awk -F: '$1 == "quorbel" { print $3 }' "$root/etc/passwd")
    gid=$(awk -F: '$1 == "quorbel" { print $3 }' "$root/etc/group")
    check "the folder is the service's own" \
        test "$(stat -c '%a %u %g' "$root/Library/Quorbel")" = "750 $id $gid"
    check "the folder above it is root's" test "$(stat -c '%a %u' "$root/Library")" = "755 0"
fi

end_checks
