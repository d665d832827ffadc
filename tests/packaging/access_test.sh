#!/usr/bin/env bash
# Who can do what on a system bus with the policy that we install:
# access_test.sh POLICY QUORBELSRV BUS_PROBE. Needs root, because it becomes other users; 77 says
# that it was skipped.
set -eu
# shellcheck source=tests/support/checks.sh
source "$(dirname -- "$0")/../support/checks.sh"
policy=$1 server=$2 probe=$3
[ "$(id -u)" -eq 0 ] || { echo "Skipped: only root can act as other users."; exit 77; }
command -v setpriv >/dev/null || { echo "Skipped: there is no setpriv here."; exit 77; }

scratch=$(mktemp -d)
processes=()
# shellcheck disable=SC2317  # the trap calls it
clean_up() {
    ((${#processes[@]} == 0)) || kill "${processes[@]}" 2>/dev/null || true
    wait
    rm -rf -- "$scratch"
}
trap clean_up EXIT
chmod 755 "$scratch"
cp -- "$server" "$scratch/QuorbelSrv"
cp -- "$probe" "$scratch/bus_probe"

# Users and groups that every Debian system has take the places of our own.
service_user=daemon group=games readers=tape
member=(setpriv --reuid nobody --regid nogroup --groups "$group")
reader=(setpriv --reuid nobody --regid nogroup --groups "$readers")
outsider=(setpriv --reuid nobody --regid nogroup --clear-groups)
root=(env)

# wait_for FILE PATTERN: until a line of the file matches, at most 20 seconds.
wait_for() {
    local i
    for ((i = 0; i < 2000; ++i)); do
        ! grep -q -- "$2" "$1" 2>/dev/null || return 0
        sleep 0.01
    done
    echo "No \"$2\" in $1:"
    cat -- "$1"
    return 1
}

# start_bus POLICY: with the defaults of a system bus, and then the service.
start_bus() {
    rm -rf -- "$scratch/bus" "$scratch/library" "$scratch/journal"
    mkdir -m 755 "$scratch/bus"
    mkdir -m 750 "$scratch/library"
    chown "$service_user:" "$scratch/library"
    sed -e "s/user=\"quorbel\"/user=\"$service_user\"/" -e "s/group=\"quorbel\"/group=\"$group\"/" \
        -e "s/group=\"quorbel-readers\"/group=\"$readers\"/" "$1" >"$scratch/bus/policy.conf"
    cat >"$scratch/bus/bus.conf" <<END
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:path=$scratch/bus/socket</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <deny own="*"/>
    <deny send_type="method_call"/>
    <allow send_type="signal"/>
    <allow send_requested_reply="true" send_type="method_return"/>
    <allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/>
    <allow receive_type="method_return"/>
    <allow receive_type="error"/>
    <allow receive_type="signal"/>
    <allow send_destination="org.freedesktop.DBus" send_interface="org.freedesktop.DBus"/>
  </policy>
  <include>$scratch/bus/policy.conf</include>
</busconfig>
END
    dbus-daemon --config-file="$scratch/bus/bus.conf" --nofork --nopidfile --nosyslog \
        --print-address=1 >"$scratch/bus/address" 2>"$scratch/bus/log" &
    processes=($!)
    wait_for "$scratch/bus/address" unix:
    export DBUS_SYSTEM_BUS_ADDRESS=unix:path=$scratch/bus/socket
    QUORBEL_LIBRARY=$scratch/library setpriv --reuid "$service_user" --regid "$service_user" \
        --clear-groups "$scratch/QuorbelSrv" --port 0 2>"$scratch/journal" &
    processes+=($!)
    wait_for "$scratch/journal" "Connected to the system bus"
    port=$(sed -n 's/.*Listening on port //p' "$scratch/journal")
}

stop_bus() {
    kill "${processes[@]}"
    wait "${processes[@]}" || true
    processes=()
}

# listen NAME: starts a listener as the user in the array of that name.
listen() {
    local -n user=$1
    mkfifo "$scratch/$1.end"
    "${user[@]}" "$scratch/bus_probe" listen <"$scratch/$1.end" >"$scratch/$1.out" &
    processes+=($!)
    exec {end}>"$scratch/$1.end"
    ends+=("$end")
    wait_for "$scratch/$1.out" listening
}

# hear: prints how often outsider, reader, member and root hear of one message.
hear() {
    local user end ends=()
    for user in outsider reader member root; do listen "$user"; done
    echo "<13>for the group" >"/dev/udp/127.0.0.1/$port"
    # The bus hands a signal to all who may hear it in one go.
    wait_for "$scratch/root.out" heard
    for end in "${ends[@]}"; do exec {end}>&-; done
    for user in outsider reader member root; do
        wait_for "$scratch/$user.out" '^[0-9]'
        printf '%s ' "$user" "$(tail -n 1 "$scratch/$user.out")"
        rm -- "$scratch/$user.end" "$scratch/$user.out"
    done
}

denied=org.freedesktop.DBus.Error.AccessDenied
reply='There is no such command'

start_bus "$policy"
answer=$("${root[@]}" "$scratch/bus_probe" command) || true
check_equal "root is answered" "$reply" "$answer"
check_equal "a member sends commands" "$reply" "$("${member[@]}" "$scratch/bus_probe" command || true)"
check_equal "others send none" "$denied" "$("${outsider[@]}" "$scratch/bus_probe" command || true)"
check_equal "readers send none" "$denied" "$("${reader[@]}" "$scratch/bus_probe" command || true)"
for user in root member reader; do
    declare -n who=$user
    check_equal "$user asks for the status" counted "$("${who[@]}" "$scratch/bus_probe" status || true)"
done
for user in root member reader; do
    declare -n who=$user
    check_equal "$user takes batches" taken "$("${who[@]}" "$scratch/bus_probe" batches || true)"
done
check_equal "others take no batches" "$denied" \
    "$("${outsider[@]}" "$scratch/bus_probe" batches || true)"
check_equal "others ask for none" "$denied" "$("${outsider[@]}" "$scratch/bus_probe" status || true)"
check_equal "readers set no property" "$denied" "$("${reader[@]}" "$scratch/bus_probe" set || true)"
for user in member reader outsider root; do
    declare -n who=$user
    check_equal "$user takes no name" "$denied" "$("${who[@]}" "$scratch/bus_probe" own || true)"
done
check_equal "only members, readers and root hear notifications" \
    "outsider 0 reader 1 member 1 root 1 " "$(hear)"
stop_bus

# The same checks notice a policy that is open.
sed -e 's/<deny send_destination/<allow send_destination/' \
    -e 's/<deny receive_sender/<allow receive_sender/' "$policy" >"$scratch/open.conf"
start_bus "$scratch/open.conf"
check_equal "others send with an open policy" "$reply" \
    "$("${outsider[@]}" "$scratch/bus_probe" command || true)"
check_equal "others ask for the status with an open policy" counted \
    "$("${outsider[@]}" "$scratch/bus_probe" status || true)"
check_equal "others take batches with an open policy" taken \
    "$("${outsider[@]}" "$scratch/bus_probe" batches || true)"
check_equal "others hear with an open policy" "outsider 1 reader 1 member 1 root 1 " "$(hear)"
stop_bus

end_checks
