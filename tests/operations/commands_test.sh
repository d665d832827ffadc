#!/usr/bin/env bash
# Runs the commands of docs/operations.md that need no installed system:
# commands_test.sh DOCUMENT QUORBELSRV. They stand there for root, port 514 and /Library/Quorbel; here
# they get other places, and a systemctl that knows one service.
set -eu
# shellcheck source=tests/support/checks.sh
source "$(dirname -- "$0")/../support/checks.sh"
document=$1 server=$(realpath -- "$2")
# shellcheck source=tests/operations/blocks.sh
source "$(dirname -- "$0")/blocks.sh"
here=$(dirname -- "$(realpath -- "$0")")

scratch=$(mktemp -d)
root=$scratch/machine
library=$root/Library/Quorbel
mkdir -p -- "$library" "$scratch/work" "$scratch/backups" "$scratch/bin"
load=''
# shellcheck disable=SC2317  # the trap calls it
clean_up() {
    "$scratch/bin/systemctl" stop quorbelsrv.service || true
    [ -z "$load" ] || kill -- "$load" 2>/dev/null || true
    wait
    rm -rf -- "$scratch"
}
trap clean_up EXIT

# What systemctl does for the one service that there is.
cat >"$scratch/bin/systemctl" <<END
#!/usr/bin/env bash
set -eu
case "\$1 \${*: -1}" in
    "start quorbelsrv.service")
        QUORBEL_LIBRARY=$library DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent \\
            setsid $server --port "\$(cat $scratch/port 2>/dev/null || echo 0)" --tls-port 0 \\
            2>>$scratch/journal </dev/null >/dev/null &
        echo "\$!" >$scratch/pid
        ;;
    "stop quorbelsrv.service")
        [ -e $scratch/pid ] || exit 0
        kill "\$(cat $scratch/pid)" 2>/dev/null || true
        rm -f $scratch/pid
        # It holds this lock to its end.
        flock --timeout 30 $library true
        ;;
    "reload quorbelsrv") kill -HUP "\$(cat $scratch/pid)" ;;
    *) echo "no such thing here: systemctl \$*" >&2; exit 1 ;;
esac
END
chmod +x "$scratch/bin/systemctl"

# wait_for COMMAND...: until it succeeds, at most 30 seconds; goes no further otherwise.
wait_for() {
    local end=$((SECONDS + 30))
    until "$@"; do
        [ "$SECONDS" -lt "$end" ] || { echo "Waited in vain: $*"; cat -- "$scratch/journal"; exit 1; }
        sleep 0.02
    done
}
# shellcheck disable=SC2317  # wait_for calls them
said() { grep -q -- "$1" "$scratch/journal"; }
# shellcheck disable=SC2317
is_stored() { grep -q -F -- "$1" "$library"/*.log 2>/dev/null; }

port=0 tls_port=0
# Keeps the port for later starts, as the sockets of the system do.
start() {
    : >"$scratch/journal"
    "$scratch/bin/systemctl" start quorbelsrv.service
    wait_for said "Listening on port"
    port=$(sed -n 's/.*Listening on port //p' "$scratch/journal")
    echo "$port" >"$scratch/port"
}
find_tls_port() { tls_port=$(sed -n 's/.*Listening for TLS on port //p' "$scratch/journal" | tail -n 1); }

# run_block NAME: prints what the commands print. The caller notes that it was run.
run_block() {
    local text
    text=$(block "$1" | sed -e "s|/Library/Quorbel|$library|g" -e "s|--directory /|--directory $root|g" \
        -e "s|/var/backups|$scratch/backups|g" -e "s|--port 514|--port $port|g" \
        -e "s|logs.example.org:6514|127.0.0.1:$tls_port|g" \
        -e "s|--server logs.example.org|--server 127.0.0.1|g" \
        -e "s|-o quorbel -g quorbel|-o $(id -u) -g $(id -g)|g")
    (cd -- "$scratch/work" && PATH=$scratch/bin:$PATH bash -euo pipefail -c "$text") 2>&1
}
# run NAME: the same as a check of its own; leaves in $output what it printed.
output=''
run() {
    note_run "$1"
    output=$(run_block "$1") || fail "the commands \"$1\": $output"
}

problems=$(block_problems)
check "each block names its test, or says why there is none: $problems" test -z "$problems"

# --- A first message, a look, the sizes -----------------------------------------------------------

start
run first
wait_for is_stored "The first message"
run look
check "the first message is seen" grep -q 'Local7.Error,127.0.0.1,.*The first message' <<<"$output"
run logger
wait_for is_stored "finished over UDP"
wait_for is_stored "finished over TCP"
run size
check "sizes are told: $output" grep -qE '^3 events, [1-9][0-9]+ bytes each$' <<<"$output"
# shellcheck disable=SC2016  # for awk
check "35 to 40 bytes come to a message" awk -F, '
    { more = length($1 $2 $3) + 5; bad = bad || more < 35 || more > 40 } END { exit bad || NR != 3 }' \
    "$library"/*.log

# --- TLS ------------------------------------------------------------------------------------------

by_tls() { # by_tls TEXT [OPTION...]
    local text=$1
    shift
    (cd -- "$scratch/work" && { echo "<13>$text"; sleep 0.5; } | timeout 20 openssl s_client -quiet \
        -no_ign_eof -connect "127.0.0.1:$tls_port" -CAfile ca.pem -verify_return_error \
        -verify_hostname logs.example.org "$@") >/dev/null 2>&1
}
check "the authority is made in five commands" test "$(block authority | grep -c .)" = 5
run authority
wait_for said "Listening for TLS on port"
find_tls_port
run tls-look
check "senders can look at it" grep -q 'Verification: OK' <<<"$output"
check "senders send over it" by_tls "over TLS"
wait_for is_stored "over TLS"
run tls-ends
check "the end of a certificate is told" grep -q '^notAfter=' <<<"$output"
run tls-senders
# Senders that have none are refused from some moment on.
# shellcheck disable=SC2317  # wait_for calls it
refuses() { by_tls "refused" || true; said "TLS connection from 127.0.0.1 failed"; }
wait_for refuses
refused=$(grep -c ',refused' "$library"/*.log || true)
by_tls "refused" || true
check "senders with a certificate get in" by_tls "with a certificate" -cert sender.pem -key sender.key
wait_for is_stored "with a certificate"
check_equal "senders without do not" "$refused" "$(grep -c ',refused' "$library"/*.log || true)"

# --- Back up, restore -----------------------------------------------------------------------------

touch -- "$library"/{export.csv,export.db,Quorbel.clock}
echo "settings" >"$library/Quorbel.ini"
while :; do seq -f "load %g" 200; done |
    logger --server 127.0.0.1 --tcp --port "$port" --rfc3164 2>/dev/null &
load=$!
wait_for is_stored "load 200"
run back-up
archive=$output
kill "$load"
wait "$load" 2>/dev/null || true
load=''
check "the back-up holds the events" grep -qE 'Library/Quorbel/[0-9-]{10}\.log$' <<<"$archive"
check "and the settings" grep -q 'Quorbel.ini$' <<<"$archive"
check "and the keys" grep -q 'tls/key.pem$' <<<"$archive"
check "but no exports and no clock" test "$(grep -c -e export -e clock <<<"$archive")" = 0
check_equal "nobody else reads it" 600 "$(stat -c %a "$scratch/backups/quorbel.tar.gz")"

# A new machine: the folder is there, with rights of its own.
"$scratch/bin/systemctl" stop quorbelsrv.service
mv -- "$library" "$scratch/old"
mkdir -m 0751 -- "$library"
start
: >"$scratch/journal"
run restore
wait_for said "Listening on port"
check "a restore brings back the events" is_stored "with a certificate"
restored=$(cat -- "$library"/*.log | wc -l)
check "all of them up to some moment" cmp <(cat -- "$scratch"/old/*.log | head -n "$restored") \
    <(cat -- "$library"/*.log)
check "and the settings" grep -qx settings "$library/Quorbel.ini"
check_equal "keys stay closed" 640 "$(stat -c %a "$library/tls/key.pem")"
check_equal "the folder keeps its own rights" 751 "$(stat -c %a "$library")"
wait_for said "Listening for TLS on port"
find_tls_port
check "TLS goes on" by_tls "after the move" -cert sender.pem -key sender.key
wait_for is_stored "after the move"

# --- Firewall -------------------------------------------------------------------------------------

note_run nftables
note_run nftables-check
if [ "$(id -u)" -eq 0 ] && unshare --net nft list ruleset >/dev/null 2>&1; then
    mkdir -- "$scratch/fence"
    block nftables >"$scratch/fence/quorbel.nft"
    block nftables-check | sed "s|/etc/quorbel.nft|$scratch/fence/quorbel.nft|g" >"$scratch/fence/rules"
    check "the firewall lets devices in, and nobody else" quietly \
        unshare --net "$here/firewall" "$scratch/fence" "$server"
else
    echo "Skipped: only root, with a kernel that filters, can try the firewall's rules."
fi

# --- What was run ---------------------------------------------------------------------------------

not_run=$(blocks_not_run test)
check "every block of this test has been run, but not: $not_run" test -z "$not_run"
echo "Run here: ${blocks_run[*]}"
echo "Run by tests/packaging/system_test:$(places_of_blocks | awk '/ .*system/ { printf " %s", $1 }')"
echo "Not run: $(places_of_blocks | sed -n 's/^\([a-z-]*\) not run,/\1,/p')"
end_checks
