#!/usr/bin/env bash
# Runs the popup's test on an X server with a window manager: desktop_test.sh PROGRAM
set -u
# shellcheck source=tests/support/desktop.sh
source "$(dirname -- "$0")/../support/desktop.sh"
needs xprop

program=$1
QUORBEL_TEST_AREA="0 0 1280 900" on_desktop 1280x900 0 0 "$program" \
    takesNoFocus isANotificationToTheDesktop growsStaysShrinksAndCloses opensTheEventAndStillCloses \
    theEventsSheetStandsAboveThePopup theEventsSheetIsModalToAllWindows || exit
QUORBEL_TEST_AREA="70 0 1210 860" on_desktop 1280x900 70 40 "$program" growsStaysShrinksAndCloses
