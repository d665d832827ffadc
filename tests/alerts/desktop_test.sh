#!/usr/bin/env bash
# Runs the popup's test on an X server with a window manager: desktop_test.sh PROGRAM
# libxkbcommon-x11 takes names without a terminator out of replies, within their lengths.
export ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}strict_string_checks=0

set -u
for tool in xvfb-run openbox xdotool xprop; do
    command -v "$tool" >/dev/null || { echo "Skipped: there is no $tool here."; exit 77; }
done
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
# Panels on the left and at the bottom, as far as windows are concerned.
cat >"$folder/panels.xml" <<'END'
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <margins><top>0</top><bottom>40</bottom><left>70</left><right>0</right></margins>
</openbox_config>
END
echo '<openbox_config xmlns="http://openbox.org/3.4/rc"/>' >"$folder/plain.xml"

# on_desktop CONFIGURATION VISIBLE-AREA TEST...
on_desktop() {
    # shellcheck disable=SC2016  # expanded by the inner shell
    QT_QPA_PLATFORM=xcb QUORBEL_TEST_AREA=$2 xvfb-run -a -s '-screen 0 1280x900x24' bash -c '
        openbox --config-file "$1" >/dev/null 2>&1 &
        manager=$!
        shift 2
        for _ in {1..100}; do
            xdotool get_num_desktops >/dev/null 2>&1 && break
            sleep 0.1
        done
        "$@"
        status=$?
        kill "$manager"
        exit "$status"' - "$1" "$2" "$program" "${@:3}"
}

program=$1
on_desktop "$folder/plain.xml" "0 0 1280 900" \
    takesNoFocus isANotificationToTheDesktop growsStaysShrinksAndCloses opensTheEventAndStillCloses \
    theEventsSheetStandsAboveThePopup theEventsSheetIsModalToAllWindows || exit
on_desktop "$folder/panels.xml" "70 0 1210 860" growsStaysShrinksAndCloses
