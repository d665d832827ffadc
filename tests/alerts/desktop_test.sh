#!/usr/bin/env bash
# Runs the popup's tests on an X server with a window manager: desktop_test.sh PROGRAM USER_PROGRAM
set -u
# shellcheck source=tests/support/desktop.sh
source "$(dirname -- "$0")/../support/desktop.sh"
needs xprop

program=$1
user_program=$2
QUORBEL_TEST_AREA="0 0 1280 900" on_desktop 1280x900 0 0 "$program" \
    takesNoFocus isANotificationToTheDesktop growsStaysShrinksAndCloses opensTheEventAndStillCloses \
    theEventsSheetStandsAboveThePopup theEventsSheetIsModalToAllWindows || exit
on_desktop 1280x900 0 0 "$user_program" thePointerOverItHoldsItOpen \
    aPointerParkedWhereItComesUpHoldsNothing whileItGoesItComesUpAgain itsTimeGoesOnBelowTheEventsSheet || exit
# Without a window manager.
QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1280x900x24" "$user_program" aClickClosesIt escapeClosesIt \
    thePointerOverItHoldsItOpen || exit
QUORBEL_TEST_AREA="70 0 1210 860" on_desktop 1280x900 70 40 "$program" growsStaysShrinksAndCloses
