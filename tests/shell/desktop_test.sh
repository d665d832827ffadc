#!/usr/bin/env bash
# Runs the test of what fits on X servers with a window manager, which draws frames around windows:
# desktop_test.sh PROGRAM
# libxkbcommon-x11 takes names without a terminator out of replies, within their lengths.
export ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}strict_string_checks=0

set -u
for tool in xvfb-run openbox xdotool; do
    command -v "$tool" >/dev/null || { echo "Skipped: there is no $tool here."; exit 77; }
done
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
# A panel at the bottom, as far as windows are concerned.
cat >"$folder/panel.xml" <<'END'
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <margins><top>0</top><bottom>40</bottom><left>0</left><right>0</right></margins>
</openbox_config>
END

# on_desktop SIZE [VARIABLE=VALUE...]
on_desktop() {
    # shellcheck disable=SC2016  # expanded by the inner shell
    env QT_QPA_PLATFORM=xcb "${@:2}" xvfb-run -a -s "-screen 0 $1x24" bash -c '
        openbox --config-file "$1" >/dev/null 2>&1 &
        manager=$!
        for _ in {1..100}; do
            xdotool get_num_desktops >/dev/null 2>&1 && break
            sleep 0.1
        done
        "$2"
        status=$?
        kill "$manager"
        exit "$status"' - "$folder/panel.xml" "$program"
}

program=$1
on_desktop 800x572 || exit
on_desktop 1024x768 || exit
on_desktop 1280x720 || exit
on_desktop 1366x768 QT_FONT_DPI=144 QT_ENABLE_HIGHDPI_SCALING=0 || exit
on_desktop 1920x1080 QT_SCALE_FACTOR=1.5
