#!/usr/bin/env bash
# Runs the popup's test on an X server with a window manager: desktop_test.sh PROGRAM
# libxkbcommon-x11 takes names without a terminator out of replies, within their lengths.
export ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}strict_string_checks=0

set -u
for tool in xvfb-run openbox xdotool; do
    command -v "$tool" >/dev/null || exit 77
done
# shellcheck disable=SC2016  # expanded by the inner shell
QT_QPA_PLATFORM=xcb exec xvfb-run -a -s '-screen 0 1280x900x24' bash -c '
    openbox >/dev/null 2>&1 &
    manager=$!
    for _ in {1..100}; do
        xdotool get_num_desktops >/dev/null 2>&1 && break
        sleep 0.1
    done
    "$1" takesNoFocus growsStaysShrinksAndCloses opensTheEventAndStillCloses
    status=$?
    kill "$manager"
    exit "$status"' - "$1"
