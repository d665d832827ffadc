#!/usr/bin/env bash
# What a bash offers for quorbelctl, and that the program takes it:
# completion_test.sh COMPLETION QUORBELCTL MAN_PAGE
set -eu
# shellcheck source=tests/support/checks.sh
source "$(dirname -- "$0")/../support/checks.sh"
completion=$1 program=$2 page=$3
scratch=$(mktemp -d)
trap 'rm -rf -- "$scratch"' EXIT
export QUORBEL_LIBRARY=$scratch

# shellcheck source=packaging/quorbelctl.bash
source "$completion"
# shellcheck disable=SC2317  # _quorbelctl calls it, which bash allows only while it completes
compopt() { COMPREPLY=("files: $*"); }

# offered WORD...: what is offered for the last of the words, in one line.
offered() {
    COMP_WORDS=(quorbelctl "$@")
    COMP_CWORD=$#
    _quorbelctl
    echo "${COMPREPLY[*]-}"
}

check_equal "commands" "status tail find stats test-message check-settings --help --version" \
    "$(offered '')"
check_equal "a command that has begun" "status stats" "$(offered st)"
check_equal "severities, however they are written" Error "$(offered find --severity eR)"
check_equal "behind an equals sign" "Emergency Error" "$(offered find --severity = e)"
check_equal "right behind it" "udp tcp" "$(offered test-message --protocol =)"
check_equal "a short option's value" tcp "$(offered test-message -P t)"
check_equal "what has blanks in it" 'last\ hour last\ 24\ hours' "$(offered tail --time last)"
check_equal "and has begun with a mark" 'last hour' "$(offered tail --time "'last h")"
check_equal "or has begun with one of them" 'last\ hour' "$(offered tail --time 'last\ h')"
check_equal "ratings" Severe "$(offered stats --rating s)"
check_equal "facilities" "Local0 Local1 Local2 Local3 Local4 Local5 Local6 Local7" \
    "$(offered find --facility loc)"
check_equal "options" "--lacks --lacks-case --lines" "$(offered tail --l | tr ' ' '\n' | sort | xargs)"
check_equal "no options where a text may stand" "" "$(offered find '')"
check_equal "nothing for a text of an option" "" "$(offered find --contains x)"
check_equal "the settings' file" "files: -o default" "$(offered check-settings x)"
check_equal "a configuration's file" "files: -o default" "$(offered check-settings --config x)"
check_equal "its option" "files: -o default --config" "$(offered check-settings --)"
check_equal "nothing for what there is not" "" "$(offered nonsense x)"

# What is offered is what the program takes, and what its page tells of.
takes() {
    local status=0
    "$program" "$@" >/dev/null 2>&1 || status=$?
    [ "$status" -ne 2 ]
}
# value_of OPTION: one that it takes.
value_of() {
    COMPREPLY=()
    _quorbelctl_values "$1" '' || return 0
    local value=${COMPREPLY[0]-5}
    [ "$1" != --host ] || value=127.0.0.1
    echo "${value//\\/}"
}
for command in status tail find stats test-message; do
    for option in $(offered "$command" --); do
        value=$(value_of "$option")
        if [ "$option" = --follow ]; then
            # It does not end by itself, unless there is nothing to follow.
            QUORBEL_LIBRARY=$scratch/none check "$command takes $option" takes "$command" "$option"
        else
            check "$command takes $option" takes "$command" "$option${value:+=$value}"
        fi
    done
done
for option in --severity --rating --facility --time; do
    COMPREPLY=()
    _quorbelctl_values "$option" ''
    for value in "${COMPREPLY[@]}"; do
        check "find takes $option $value" takes find "$option" "${value//\\/}"
    done
done
check_equal "what the program does not take is noticed" 1 "$(takes find --nonsense || echo 1)"
told=$(sed -e 's/\\-/-/g' "$page" | grep -o -e '--[a-z-]*' | sed 's/-$//' | sort -u)
check "check-settings takes --config" takes check-settings --config "$scratch/none"
known=$(for command in status tail find stats test-message check-settings; do offered "$command" --; done |
    tr ' ' '\n' | grep -e '^--' | sort -u)
check_equal "the page tells of these options and no others" \
    "$(printf '%s\n' "$known" --help --version | sort -u)" "$told"
helped=$("$program" --help | grep -o -e '--[a-z]*-*[a-z]*' | sort -u)
for option in $helped; do
    check "the help's $option is there" grep -q -x -e "$option" <<<"$told"
done

# A bash that is asked for it by a user's keys.
cat >"$scratch/ask" <<END
source $(printf %q "$completion")
bind 'set bell-style none' 'set show-all-if-ambiguous on' 'set completion-query-items 0' 2>/dev/null
END
typed() {
    {
        printf '%b' "$1"
        printf '\n'
        echo exit
    } | PS1='' bash --noprofile --rcfile "$scratch/ask" -i 2>&1 || true
}
# shellcheck disable=SC2317  # the user's bash calls it
quorbelctl() { printf '<%s>' "$@"; }
export -f quorbelctl
check "a user's Tab completes" grep -q -F '<find><--severity><Critical>' \
    <(typed 'quorbelctl fi\t--sev\tcrit\t')
check "within marks" grep -q -F '<find><--time><last hour>' \
    <(typed 'quorbelctl find --time "last h\t')
check "behind an equals sign" grep -q -F '<find><--rating=Severe>' \
    <(typed 'quorbelctl find --rating=s\t')

end_checks
