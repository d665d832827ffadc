# shellcheck shell=bash
# What bash offers for quorbelctl.

# _quorbelctl_offer WORD CHOICE...: those that begin with the word, however its letters are written.
_quorbelctl_offer() {
    local word=${1#[\"\']} choice
    # Within quotation marks blanks are no matter.
    local form=%q
    [ "$word" = "$1" ] || form=%s
    word=${word//\\/}
    shift
    for choice in "$@"; do
        # shellcheck disable=SC2059  # one of the two
        [[ ${choice,,} != "${word,,}"* ]] || COMPREPLY+=("$(printf "$form" "$choice")")
    done
}

_quorbelctl_values() { # _quorbelctl_values OPTION WORD: false when the option takes no value
    case $1 in
        --rating) _quorbelctl_offer "$2" Normal Moderate Severe Unrated ;;
        --severity | --class)
            _quorbelctl_offer "$2" Emergency Alert Critical Error Warning Notice Informational \
                Debug Unknown
            ;;
        --facility)
            _quorbelctl_offer "$2" Kern User Mail Daemon Auth Syslog Lpr News Uucp Cron Authpriv \
                Ftp Ntp Audit Console Clock Local{0..7}
            ;;
        --time) _quorbelctl_offer "$2" 'last hour' today yesterday 'last 24 hours' ;;
        --protocol | -P) _quorbelctl_offer "$2" udp tcp ;;
        --contains* | --lacks* | --matches* | --host | --from | --until | --lines | --port | \
            --cluster-name | -[cvenHp]) ;;
        --config) compopt -o default ;;
        *) return 1 ;;
    esac
}

_quorbelctl() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    # "--option=value" is three words here.
    if [ "$word" = = ]; then
        word=
    elif [ "$before" = = ]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    if [ "$COMP_CWORD" -eq 1 ]; then
        _quorbelctl_offer "$word" status tail find stats test-message check-settings --help --version
        return
    fi
    if _quorbelctl_values "$before" "$word"; then
        return
    fi
    local filter=(--contains --contains-case --lacks --lacks-case --matches --matches-case
        --matches-not --matches-not-case --rating --severity --class --facility --host --from --until
        --time --json)
    case ${COMP_WORDS[1]} in
        status) _quorbelctl_offer "$word" --json ;;
        tail) [[ $word != -* ]] || _quorbelctl_offer "$word" --follow --lines "${filter[@]}" ;;
        find | stats)
            [[ $word != -* ]] ||
                _quorbelctl_offer "$word" --cluster --cluster-name --config "${filter[@]}"
            ;;
        test-message) _quorbelctl_offer "$word" --host --port --protocol ;;
        check-settings)
            compopt -o default
            [[ $word != -* ]] || _quorbelctl_offer "$word" --config
            ;;
    esac
}

complete -F _quorbelctl quorbelctl
