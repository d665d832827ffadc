# shellcheck shell=bash
# The commands and files of docs/operations.md, for the tests that run them. Sourced; set document first.
#
# In front of each block of commands stands "<!-- block NAME: PLACES -->", in front of each file
# "<!-- file NAME: PLACES PATH -->". PLACES are test (./test runs it), system (system_test does), or
# "not run, because REASON".
: "${document:?}"
blocks_run=()

# block NAME: its text.
block() {
    awk -v name="$1" '
        text && /^```/ { exit }
        text { print }
        found { text = 1 }
        { found = 0 }
        $1 == "<!--" && ($2 == "block" || $2 == "file") && $3 == name ":" { found = 1 }
    ' "$document"
}
# note_run NAME
note_run() { blocks_run+=("$1"); }

# places_of_blocks: one line each, "NAME PLACES".
places_of_blocks() {
    sed -nE -e 's/^<!-- block ([a-z-]+): (.*) -->$/\1 \2/p' \
        -e 's|^<!-- file ([a-z-]+): (.*) /[^ ]* -->$|\1 \2|p' "$document"
}
# path_of NAME: of a file.
path_of() { sed -nE "s|^<!-- file $1: .* (/[^ ]*) -->\$|\\1|p" "$document"; }

# blocks_not_run PLACE: what should have been run there and was not.
blocks_not_run() {
    local name places
    while read -r name places; do
        [[ " ${places//,/} " != *" $1 "* || $places == "not run"* ]] ||
            printf '%s\n' "${blocks_run[@]}" | grep -qx -- "$name" || echo "$name"
    done < <(places_of_blocks)
}

# block_problems: what has no line in front of it, one of another form, or no reason; names that
# stand twice; commands within the text that no block has.
block_problems() {
    awk '
        /^```/ && inside { inside = 0; next }
        /^```/ { inside = 1 }
        /^```sh/ && before !~ /^<!-- block [a-z-]+: ((test|system|test, system)|not run, because .+) -->$/ {
            print FILENAME ":" NR ": no test is named for these commands"
        }
        /^<!-- (block|file)/ { marked = NR }
        /^```/ { marked = 0 }
        marked && NR > marked { print FILENAME ":" marked ": no block follows"; marked = 0 }
        { before = $0 }
    ' "$document"
    places_of_blocks | cut -d' ' -f1 | sort | uniq -d
    commands_in_text
}
all_blocks() { awk '/^```/ { inside = !inside && /^```sh/; next } inside' "$document"; }
commands_in_text() {
    local known text
    known=$(all_blocks | awk '{ print $1 }' | sort -u)
    # Opens an editor, or is a person's own shell.
    local -a passed_over=("systemctl edit quorbelsrv" "sudo -i")
    # shellcheck disable=SC2016  # the marks of code
    awk '/^```/ { inside = !inside } !inside' "$document" | grep -o '`[^`]* [^`]*`' | tr -d '`' |
        while read -r text; do
            grep -qxF -- "${text%% *}" <<<"$known" || continue
            printf '%s\n' "${passed_over[@]}" | grep -qxF -- "$text" ||
                grep -qF -- "$text" <(all_blocks) || echo "no block has the command: $text"
        done
}
