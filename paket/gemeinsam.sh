# Shared by the commands of this folder, each of which does one thing with one edition's bundle.
# shellcheck shell=bash

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

. ci/worte.sh
nur_worte "Aufruf: paket/${0##*/} bordlotse|vpnlotse${dazu:+ [$dazu]}
$tut" "bordlotse vpnlotse ${dazu:-}" "$@"
case ${1:-} in
bordlotse) anzeigename="Mobilsteg Bordlotse" ;;
vpnlotse) anzeigename="Mobilsteg VPN-Lotse" ;;
*)
    echo "${0##*/}: Welche Ausgabe? ($0 --hilfe)" >&2
    exit 2
    ;;
esac
# shellcheck disable=SC2034 # used by those that read this
{
    programm=mobilsteg-$1
    kennung=de.mobilsteg.$1
    ziel=bau/paket
    app="$ziel/$anzeigename.app"
    version=$(sed -n 's/^project(MobilstegBordlotse VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
    abbild="$ziel/$programm-$version.dmg"
}

nur_auf_dem_mac() {
    [ "$(uname)" = Darwin ] || { echo "$0: Das geht nur auf einem Mac." >&2; exit 1; }
}

fuelle() { # a template, its gaps filled in
    sed -e "s|@KENNUNG@|$kennung|g" -e "s|@NAME@|$anzeigename|g" -e "s|@PROGRAMM@|$programm|g" \
        -e "s|@VERSION@|$version|g" -e "s|@SUMME@|${summe:-}|g" "$1"
}

maengel() { # says what keeps a bundle from running on other Macs; the tool complains about all that is no program
    local rand
    rand=$({ find "$1/Contents" -type f -exec otool -L {} + 2>/dev/null || true; } |
        awk '/^\t/ && $1 !~ "^(@|/usr/lib/|/System/)" { print $1 }' | sort -u)
    [ -z "$rand" ] || printf 'Achtung, das Bündel braucht Bibliotheken von außerhalb:\n%s\n' "$rand" >&2
    rand=$({ find "$1/Contents" -type f -exec otool -l {} + 2>/dev/null || true; } |
        awk '$1 == "minos" && $2 > 13 { print $2 }' | sort -un | tail -n 1)
    [ -z "$rand" ] || echo "Achtung, Teile des Bündels verlangen macOS $rand" >&2
}
