# shellcheck shell=bash
# An X server with a window manager, for tests of what only a desktop shows. Sourced; ends with 77
# where a tool for it is missing.

# libxkbcommon-x11 takes names without a terminator out of replies, within their lengths.
export ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}strict_string_checks=0

# needs TOOL...
needs() {
    local tool
    for tool in "$@"; do
        command -v "$tool" >/dev/null || { echo "Skipped: there is no $tool here."; exit 77; }
    done
}
needs xvfb-run openbox xdotool
desktop_folder=$(mktemp -d)
trap 'rm -rf -- "$desktop_folder"' EXIT

# on_desktop SIZE LEFT BOTTOM COMMAND...: with panels of so many pixels at two edges, as far as
# windows are concerned. Their titles have $QUORBEL_TEST_TITLE_SIZE points.
on_desktop() {
    local size=$1 title="<name>sans</name><size>${QUORBEL_TEST_TITLE_SIZE:-9}</size>"
    cat >"$desktop_folder/openbox.xml" <<END
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <theme>
    <font place="ActiveWindow">$title</font>
    <font place="InactiveWindow">$title</font>
  </theme>
  <margins><top>0</top><bottom>$3</bottom><left>$2</left><right>0</right></margins>
</openbox_config>
END
    shift 3
    # shellcheck disable=SC2016  # expanded by the inner shell
    QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 ${size}x24" bash -c '
        openbox --config-file "$1" >/dev/null 2>&1 &
        manager=$!
        shift
        for _ in {1..100}; do
            xdotool get_num_desktops >/dev/null 2>&1 && break
            sleep 0.1
        done
        "$@"
        status=$?
        kill "$manager"
        exit "$status"' - "$desktop_folder/openbox.xml" "$@"
}
