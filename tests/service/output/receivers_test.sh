#!/usr/bin/env bash
# Forwarding to real programs: receivers_test.sh TEST-PROGRAM. Ends with 77 when rsyslog cannot be
# downloaded here; the rest was run then.
# shellcheck source=tools/common.sh
source "$(dirname -- "$0")/../../../tools/common.sh"
# shellcheck source=tools/syslog_tools.sh
source tools/syslog_tools.sh

tools=$PWD/build/syslog-tools
status=0
if unpack_rsyslog "$tools"; then
    export QUORBEL_RSYSLOG=$tools
else
    echo "Skipped: rsyslog cannot be downloaded here."
    status=77
fi
"$1" || exit 1
exit "$status"
