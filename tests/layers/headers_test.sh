#!/usr/bin/env bash
# That each header of src compiles on its own, with what its library may include:
# headers_test.sh COMPILER INCLUDE_DIRECTORIES
set -eu
compiler=$1 directories=$2

# compiles HEADER DIRECTORY...
compiles() {
    local header=$1
    shift
    printf '#include "%s"\n' "$header" |
        "$compiler" "${@/#/-I}" -x c++ -std=c++20 -fPIC -fsyntax-only - ||
        { echo "FAILED: $header does not compile on its own" && return 1; }
}
# is_first HEADER FILE: whether the source beside it includes it before all others, so that whoever builds
# has compiled it on its own.
is_first() {
    local source
    source=$(readlink -f -- "$2")
    source=${source%.h}.cpp
    [ -f "$source" ] && [ "$(grep -m 1 '^#include' "$source")" = "#include \"$1\"" ]
}
export compiler
export -f compiles

# "HEADER DIRECTORY..." for each of them; a library's own headers are in the folder of its name.
jobs=$(
    while read -r library rest; do
        for directory in $rest; do
            [[ $directory == */include/$library ]] || continue
            while read -r header; do
                is_first "$header" "$directory/$header" || echo "$header $rest"
            done < <(cd "$directory" && find . -name '*.h' -printf '%P\n')
        done
    done <"$directories"
)
count=$(grep -c . <<<"$jobs")
[ "$count" -gt 0 ] || { echo "FAILED: there are no headers" && exit 1; }
# shellcheck disable=SC2016  # the inner shell's
xargs -d '\n' -P "$(nproc)" -I{} bash -c 'compiles $1' - {} <<<"$jobs" || exit 1
echo "$count headers that no source begins with: as they should be."
