# Shared by the two ways to take the trip: simulated Mac, simulated phone, an adb server of the trip's own.
# shellcheck shell=sh

hier=$(cd "$(dirname "$0")/../.." && pwd)
bin=$hier/bau/release/bin
fahrt=$hier/bau/fahrt
mac=$fahrt/mac
heim=$fahrt/heim
stand="$heim/Library/Application Support/Mobilsteg Bordlotse/stand.json"
programm=$bin/mobilsteg-${AUSGABE:=bordlotse}
stopp="$heim/Library/Application Support/Mobilsteg Bordlotse/volltunnel.stopp"
handy_pid=""

meldung() { printf '» %s\n' "$*"; }
fehler() {
    printf 'Fehler: %s\n' "$*" >&2
    exit 1
}

bereite_vor() {
    rm -rf "$fahrt"
    mkdir -p "$heim/Library/Preferences" "$fahrt/handy"
    "$hier/probe/mac/aufbauen" "$mac"
    # The exit address from the simulated phone instead of the internet; the travel edition asks nothing at the start.
    [ "$AUSGABE" = bordlotse ] && profil='"profil": "reise", ' || profil=""
    [ "${GERAET:-nein}" = ja ] && dienst='' || dienst='"austritt.dienst": "http://austritt.probe/", '
    echo "{ $profil$dienst\"proxy.automatisch\": true }" >"$heim/Library/Preferences/de.mobilsteg.$AUSGABE.json"
    # A VPN that the tunnel's helper takes along, if one runs.
    mkdir -p "$(dirname "$stopp")"
    echo '{"vpns": [{"dienst": "Werk Nord", "server": "198.51.100.20"}]}' >"$stopp.vpns.vorlage"
    [ -x "$mac/opt/homebrew/bin/adb" ] || fehler "adb ist nicht installiert"
    adb=$mac/opt/homebrew/bin/adb
    if [ "${GERAET:-nein}" = nein ]; then
        # A server of our own, so that neither the user's devices nor ours get in each other's way.
        ANDROID_ADB_SERVER_PORT=${FAHRT_ADB_PORT:-5640}
        export ANDROID_ADB_SERVER_PORT
        starte_handy
    fi
}

starte_handy() {
    "$bin/mobilsteg-probehandy" --port "${FAHRT_HANDY_PORT:-5641}" --steuerport "${FAHRT_STEUERPORT:-5642}" \
        --ordner "$fahrt/handy" --ohne-debugging --weitergabe-aus --adb-server "$ANDROID_ADB_SERVER_PORT" \
        </dev/null >"$fahrt/handy.log" 2>&1 &
    handy_pid=$!
    warte_bis 5 "das simulierte Handy" grep -q steuerung "$fahrt/handy.log"
}

sage() { "$bin/mobilsteg-probehandy" --sage "${FAHRT_STEUERPORT:-5642}" "$@"; }

# warte_bis SEKUNDEN WORAUF BEFEHL…
warte_bis() {
    rest=$(($1 * 5))
    worauf=$2
    shift 2
    until "$@" >/dev/null 2>&1; do
        rest=$((rest - 1))
        [ $rest -gt 0 ] || fehler "vergeblich gewartet auf $worauf"
        sleep 0.2
    done
}

raeume_auf() {
    [ -n "$handy_pid" ] && kill "$handy_pid" 2>/dev/null
    [ "${GERAET:-nein}" = nein ] && [ -n "${adb:-}" ] && "$adb" kill-server 2>/dev/null
    return 0
}
