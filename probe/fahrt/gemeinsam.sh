# Shared by the two ways to take the trip: simulated Mac, simulated phone, an adb server of the trip's own.
# shellcheck shell=sh

[ -n "${GERAET:-}" ] || { echo "${0##*/}: Ein Teil von ./starten, siehe ./starten --hilfe" >&2; exit 2; }

hier=${hier:-$(cd "$(dirname "$0")/../.." && pwd)}
bin=$hier/bau/release/bin
# Two trips at once leave each other alone.
FAHRT=1
while kill -0 "$(cat "$hier/bau/fahrt$FAHRT/pid" 2>/dev/null || echo x)" 2>/dev/null; do FAHRT=$((FAHRT + 1)); done
fahrt=$hier/bau/fahrt$FAHRT
steuerung="$([ $FAHRT = 1 ] || echo "FAHRT=$FAHRT ")probe/fahrt/handy"
mac=$fahrt/mac
heim=$fahrt/heim
adb=$mac/opt/homebrew/bin/adb
stand="$heim/Library/Application Support/Mobilsteg Bordlotse/stand.json"
stopp="$heim/Library/Application Support/Mobilsteg Bordlotse/volltunnel.stopp"
protokoll=$heim/Library/Logs/MobilstegBordlotse.log
handy_pid=""

fehler() {
    printf 'Fehler: %s\n' "$*" >&2
    exit 1
}

bereite_vor() {
    rm -rf "$fahrt"
    mkdir -p "$heim/Library/Preferences" "$(dirname "$stopp")"
    echo $$ >"$fahrt/pid"
    "$hier/probe/mac/aufbauen" "$mac"
    [ -x "$adb" ] || fehler "adb ist nicht installiert"
    # The travel edition asks nothing at the start.
    [ "$AUSGABE" = bordlotse ] && vorgaben='"profil": "reise", ' || vorgaben=""
    # The exit address from the simulated phone instead of the internet.
    [ "$GERAET" = ja ] || vorgaben=$vorgaben'"austritt.dienst": "http://austritt.probe/", '
    echo "{ $vorgaben\"proxy.automatisch\": true }" >"$heim/Library/Preferences/de.mobilsteg.$AUSGABE.json"
    # A VPN that the tunnel's helper takes along, if one runs.
    echo '{"vpns": [{"dienst": "Heimnetz", "server": "198.51.100.20"}]}' >"$stopp.vpns.vorlage"
    [ "$GERAET" = nein ] || return 0
    export FAHRT ANDROID_ADB_SERVER_PORT=$((5630 + 10 * FAHRT)) # a server of our own leaves the user's devices alone
    "$bin/mobilsteg-probehandy" --port $((5631 + 10 * FAHRT)) --steuerport $((5632 + 10 * FAHRT)) \
        --ordner "$fahrt/handy" --ohne-debugging --weitergabe-aus --adb-server $ANDROID_ADB_SERVER_PORT </dev/null >"$fahrt/handy.log" 2>&1 &
    handy_pid=$!
    [ -z "$NETZ" ] || echo /proc/$handy_pid/ns/net >"$fahrt/netz"
    warte_bis "das simulierte Handy" grep -q steuerung "$fahrt/handy.log"
}

# warte_bis WORAUF BEFEHL…
warte_bis() {
    rest=300
    worauf=$1
    shift
    until "$@" >/dev/null 2>&1; do
        rest=$((rest - 1))
        [ $rest -gt 0 ] || fehler "vergeblich gewartet auf $worauf"
        sleep 0.2
    done
}

# For ten seconds. The program goes on searching.
suche_handy() {
    printf 'Das Programm sucht das Handy am Kabel dieses Rechners.\n'
    for _ in 1 2 3 4 5 6 7 8 9 10; do
        "$adb" devices 2>/dev/null | grep -q "[[:space:]]device$" && return 0
        sleep 1
    done
    printf 'Noch keines da: USB-Debugging einschalten, Kabel einstecken, am Handy den Rechner zulassen.\n'
    "$adb" devices 2>/dev/null | sed -n '1d; s/^\(..*\)[[:space:]]\(..*\)/  \1: \2/p'
}

raeume_auf() {
    rm -f "$fahrt/pid"
    [ -n "$handy_pid" ] || return 0
    kill "$handy_pid" 2>/dev/null
    "$adb" kill-server 2>/dev/null
    return 0
}
