#!/usr/bin/env bash
# Unpacks ClickHouse for the tests that run one: unpack_test.sh FOLDER. Ends with 77 when it cannot be
# downloaded here; those tests are skipped then.
# shellcheck source=tools/common.sh
source "$(dirname -- "$0")/../../tools/common.sh"
# shellcheck source=tools/syslog_tools.sh
source tools/syslog_tools.sh

unpack_clickhouse "$1" || {
    echo "Skipped: ClickHouse cannot be downloaded here."
    exit 77
}
