#!/usr/bin/env bash
# Runs the test of what fits on X servers with a window manager, which draws frames around windows:
# desktop_test.sh PROGRAM
set -u
# shellcheck source=tests/support/desktop.sh
source "$(dirname -- "$0")/../support/desktop.sh"

program=$1
on_desktop 800x572 0 40 "$program" || exit
on_desktop 1024x768 0 40 "$program" || exit
on_desktop 1280x720 0 40 "$program" || exit
# Titles much higher than a window can expect before it has one.
QUORBEL_TEST_TITLE_SIZE=40 on_desktop 800x640 0 40 "$program" || exit
QUORBEL_TEST_TITLE_SIZE=40 on_desktop 1366x768 0 40 "$program" || exit
on_desktop 1366x768 0 40 env QT_FONT_DPI=144 QT_ENABLE_HIGHDPI_SCALING=0 "$program" || exit
on_desktop 1920x1080 0 40 env QT_SCALE_FACTOR=1.5 "$program"
