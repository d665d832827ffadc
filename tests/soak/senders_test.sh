#!/usr/bin/env bash
# Real senders, a few messages of each: senders_test.sh BUILD-FOLDER. Ends with 77 when those of other
# makers cannot be downloaded here.
# shellcheck source=tools/common.sh
source "$(dirname -- "$0")/../../tools/common.sh"
# shellcheck source=tools/syslog_tools.sh
source tools/syslog_tools.sh

bin=$1
tools=$PWD/build/syslog-tools
short=200
scratch=$(mktemp -d)
trap 'rm -rf -- "$scratch"' EXIT
export bin tools short scratch

parts=(logger_sends tls_streams)
status=0
if unpack_rsyslog "$tools" && unpack_loggen "$tools-loggen"; then
    parts+=("rsyslog_forwards udp" "rsyslog_forwards tcp" "rsyslog_forwards tcp-counted"
        "rsyslog_forwards tcp-5424" "rsyslog_forwards tls" "loggen_sends dgram"
        "loggen_sends stream")
else
    echo "Skipped: rsyslog and loggen cannot be downloaded here."
    status=77
fi
for part in "${parts[@]}"; do
    # shellcheck disable=SC2086  # its name and its form
    timeout 120 tests/soak/part $part >"$scratch/log" 2>&1 || {
        cat -- "$scratch/log"
        die "Failed: $part"
    }
    say "$part: $(sed -n 's/^FIGURE //p' "$scratch/log")"
done
exit "$status"
