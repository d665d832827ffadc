#!/usr/bin/env bash
# That a folder of src can include the headers of the folders that it may use, and of no other:
# layers_test.sh COMPILER SRC INCLUDE_DIRECTORIES. It includes one header of every folder in the place
# of every library.
set -eu
# shellcheck source=tests/support/checks.sh
source "$(dirname -- "$0")/../support/checks.sh"
compiler=$1 src=$2 directories=$3

# A library, its own folder, and what else it may use. Whoever adds an arrow adds it here, too.
platform="platform"
bus="platform/bus $platform"
gui="platform/gui $platform"
common="common $platform"
cluster="cluster $common"
core="core $common $bus"
page="$core $gui"
events_find="events/find $page"
events_questions="events/questions $events_find"
events_timeline="events/timeline $page"
events="events events/timeline $events_questions"
settings="settings $page"
service_base="service/base $common"
service_hosts="service/hosts $service_base"
service_message="service/message $service_base"
service_store="service/store $service_base"
service_mail="service/mail $service_base"
service_actions="service/actions $service_message service/mail"
service_bus="service/bus $service_message service/mail service/store $bus"
service_collect="service/collect service/hosts service/actions $service_bus"
service_input="service/input $service_collect"
control="control cluster $core $service_message"
allowed=(
    "quorbel_platform $platform"
    "quorbel_bus $bus"
    "quorbel_gui $gui"
    "quorbel_common $common"
    "quorbel_cluster $cluster"
    "quorbel_core $core"
    "quorbel_control $control"
    "quorbel_settings $settings"
    "quorbel_hosts hosts $settings"
    "quorbel_home home $page"
    "quorbel_events_find $events_find"
    "quorbel_events_questions $events_questions"
    "quorbel_events_timeline $events_timeline"
    "quorbel_events $events"
    "quorbel_reports reports $page"
    "quorbel_alerts alerts $page"
    "quorbel_about about $gui"
    "quorbel_help help $gui"
    "quorbel_options options $settings"
    "quorbel_actions actions $settings"
    "quorbel_export export $settings"
    "quorbel_shell shell home hosts reports alerts about help options actions export $events $settings"
    "quorbel_service_base $service_base"
    "quorbel_service_hosts $service_hosts"
    "quorbel_service_message $service_message"
    "quorbel_service_store $service_store"
    "quorbel_service_mail $service_mail"
    "quorbel_service_actions $service_actions"
    "quorbel_service_export service/export $service_store"
    "quorbel_service_output service/output cluster service/message $service_store"
    "quorbel_service_bus $service_bus"
    "quorbel_service_collect $service_collect"
    "quorbel_service_input $service_input"
    "quorbel_service service service/export service/output cluster $service_input"
)

# found LIBRARY HEADER: whether the compiler finds the header in the library's place.
found() {
    local line
    line=$(grep -- "^$1 " "$directories")
    local -a options=()
    local directory
    for directory in ${line#"$1"}; do
        options+=("-I$directory")
    done
    printf '#include "%s"\n' "$2" |
        "$compiler" "${options[@]}" -x c++ -std=c++20 -fPIC -M - 2>&1 >/dev/null |
        grep -q -F "$2: No such file" && return 1
    return 0
}

mapfile -t folders < <(cd -- "$src" && find . -name '*.h' -printf '%h\n' | sort -u | sed 's|^\./||')
known=" $(printf '%s ' "${allowed[@]%% *}")"
while read -r library _; do
    [[ $known == *" $library "* ]] || fail "$library is not in this test's table"
done <"$directories"

for row in "${allowed[@]}"; do
    library=${row%% *}
    for folder in "${folders[@]}"; do
        header=$folder/$(cd -- "$src/$folder" && printf '%s\n' *.h | head -n 1)
        if [[ " ${row#* } " == *" $folder "* ]]; then
            found "$library" "$header" || fail "$library cannot include $header"
        elif found "$library" "$header"; then
            fail "$library can include $header"
        fi
    done
done
echo "${#allowed[@]} libraries and ${#folders[@]} folders were tried."
end_checks
