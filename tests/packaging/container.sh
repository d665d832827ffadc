# shellcheck shell=bash
# The container of tests/packaging/system_test: booting it, and asking what is in it. Sourced after
# tools/common.sh and tests/operations/blocks.sh; set root, the folder of a Debian, and scratch.
# What is in single quotes is for shells in the container.
# shellcheck disable=SC2016
: "${root:?}" "${scratch:?}"

# --- The container -------------------------------------------------------------------------------

# boot: until the system has started everything.
boot() {
    systemd-nspawn --quiet --boot --register=no --keep-unit --private-network --console=pipe \
        --directory="$root" </dev/null >"$scratch/console" 2>&1 &
    container=$!
    wait_until 60 find_leader || die "The container does not start: $(<"$scratch/console")"
    wait_until 120 is_up || die "The system does not come up: $(inside systemctl --failed --no-pager)"
}
# The first process of the container, once it is the system's own and not yet what prepares it.
find_leader() {
    leader=$(pgrep -P "$container") && [ "$(cat "/proc/$leader/comm" 2>/dev/null)" = systemd ]
}
is_up() { inside systemctl is-system-running 2>/dev/null | grep -qx running; }

power_off() {
    # What systemd takes as the wish to power off.
    kill -s RTMIN+4 "$leader"
    wait "$container" || true
    container=''
}

# inside COMMAND...: as root of the container.
inside() {
    nsenter --target "$leader" --mount --uts --ipc --net --pid --root --wd -- \
        env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive "$@"
}
# as USER COMMAND...
as() {
    local user=$1
    shift
    inside runuser -u "$user" -- "$@"
}

# end_inside PID: ends what "inside ... &" started, with all that this has started.
end_inside() {
    local all=("$1") next=("$1")
    while mapfile -t next < <(pgrep -P "$(IFS=,; echo "${next[*]}")"); [ "${#next[@]}" -gt 0 ]; do
        all+=("${next[@]}")
    done
    # Some of them may have ended by themselves.
    kill -KILL "${all[@]}" 2>/dev/null || true
    wait "$1" 2>/dev/null || true
}

wait_until() { # wait_until SECONDS COMMAND...
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        [ "$SECONDS" -lt "$end" ] || return 1
        sleep 0.1
    done
}

# --- What is asked -------------------------------------------------------------------------------

failures=0
check() { # check WHAT COMMAND...
    local what=$1
    shift
    if "$@"; then
        say "ok      $what"
    else
        say "FAILED  $what"
        failures=$((failures + 1))
    fi
}
# documented NAME [FOLDER]: runs these commands of docs/operations.md, in that folder of the container.
documented() {
    note_run "$1"
    inside env SUDO_USER=alice bash -euo pipefail -c "cd -- '${2:-/root}'
$(block "$1")" >"$scratch/output" 2>&1 || { cat -- "$scratch/output" >&2; return 1; }
}
# help_command COMMAND: as the help book tells alice, with the folder of the packages at hand.
help_command() {
    local status=0
    inside env USER=alice bash -euo pipefail -c "cd /packages; $1" >"$scratch/output" 2>&1 </dev/null || status=$?
    # A journal without such lines.
    [[ $status != 1 || $1 != *--grep* ]] || status=0
    [ "$status" -eq 0 ] || { cat -- "$scratch/output" >&2; return 1; }
}
# put_file NAME: where the document says.
put_file() {
    note_run "$1"
    local file
    file=$root$(path_of "$1")
    mkdir -p -- "$(dirname -- "$file")"
    block "$1" >"$file"
}
printed() { grep -q -- "$1" "$scratch/output"; }

main_pid() { inside systemctl show --property=MainPID --value quorbelsrv.service; }
state() { inside systemctl show --property=ActiveState --value "$1"; }
runs() { [ "$(state quorbelsrv.service)" = active ]; }
is_newly_started() { runs && [ "$(main_pid)" != "$1" ]; }
stored() { inside sh -c 'cat /Library/Quorbel/*.log 2>/dev/null' | grep -c -F -- "$1" || true; }
is_stored() { [ "$(stored "$1")" -ge "${2:-1}" ]; }
by_udp() { inside bash -c 'echo "<13>$1" >/dev/udp/127.0.0.1/514' - "$1"; }
by_tcp() { inside bash -c 'echo "<13>$1" >/dev/tcp/127.0.0.1/514' - "$1"; }
by_tls() { # by_tls TEXT [OPTION...]
    inside sh -c 'text=$1; shift; { echo "<13>$text"; sleep 1; } |
        openssl s_client -quiet -no_ign_eof -connect 127.0.0.1:6514 "$@" 2>/dev/null >/dev/null' - "$@"
}
# command [VALUE...]: what busctl is to send, as the user in $asker; prints the reply or the error.
asker=root
bus_command() {
    as "$asker" busctl call com.Halvern.QuorbelSrv /com/Halvern/QuorbelSrv \
        com.Halvern.QuorbelSrv.MyXPCProtocol setCommand 'a{sv}' "$@" 2>&1 || true
}
answers() { bus_command 1 command s nonsense | grep -q 'There is no such command'; }
is_refused() { bus_command 1 command s nonsense | grep -q -i 'denied'; }
