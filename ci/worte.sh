# Sourced by the scripts for what stands behind their names.
# shellcheck shell=sh

# nur_worte HILFE ERLAUBTE WORT…: prints HILFE and ends with 0 on --hilfe; ends with 2 on a word that is not allowed.
nur_worte() {
    worte_hilfe=$1 worte_erlaubt=$2
    shift 2
    for wort in "$@"; do
        case $wort in
        -h | --hilfe | --help)
            printf '%s\n' "$worte_hilfe"
            exit 0
            ;;
        esac
        case " $worte_erlaubt " in
        *" $wort "*) ;;
        *) unbekannt "$wort" ;;
        esac
    done
}

unbekannt() {
    printf '%s: Unbekannt: %s (%s --hilfe)\n' "${0##*/}" "$1" "$0" >&2
    exit 2
}
