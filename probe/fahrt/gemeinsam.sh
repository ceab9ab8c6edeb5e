# Shared by the two ways to take the trip: simulated Mac, simulated phone, an adb server of the trip's own.
# shellcheck shell=sh

hier=${hier:-$(cd "$(dirname "$0")/../.." && pwd)}
bin=$hier/bau/release/bin
fahrt=$hier/bau/fahrt
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
    export ANDROID_ADB_SERVER_PORT=5640 # a server of our own leaves the user's devices alone
    "$bin/mobilsteg-probehandy" --port 5641 --steuerport 5642 --ordner "$fahrt/handy" --ohne-debugging \
        --weitergabe-aus --adb-server $ANDROID_ADB_SERVER_PORT </dev/null >"$fahrt/handy.log" 2>&1 &
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

raeume_auf() {
    [ -n "$handy_pid" ] || return 0
    kill "$handy_pid" 2>/dev/null
    "$adb" kill-server 2>/dev/null
    return 0
}
