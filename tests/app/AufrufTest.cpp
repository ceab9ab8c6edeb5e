// The shipped program without a phone: what it says to one option (the clean-up by hand, the self-test, the
// words), and a run without adb.

#include "kabel/Zustand.hpp"
#include "plattform/Orte.hpp"
#include "tests/hilfe/Fahrtbank.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace testing;

namespace {

/// What is wrong with the words, stands in the way, or was left: what is done to the simulated Mac before,
/// what is asked, what is said — of wrong words on standard error — and with which status. proxy, merke and
/// skript stand for the Mac's settings, our own, and a tool's stand-in. Each begins with a fresh Mac, without
/// adb unless told otherwise, and a fresh home.
const std::tuple<std::string, std::string, const char*, int> lagen[] = {
    {"", "--aufraeumen", "Weiterleitungen … adb ist nicht da, also gibt es keine\nNichts zu tun: ", 0},
    {"proxy Wi-Fi 127.0.0.1 1080; echo '{ kaputt' >$unsere", "--aufraeumen", "„Wi-Fi“ … ausgeschaltet\n", 0},
    {"proxy Wi-Fi 127.0.0.1 1080; proxy 'USB 10/100/1000 LAN' 127.0.0.1 1080", "--aufraeumen",
     "LAN“ … ausgeschaltet\nSystem-Proxy „Thunderbolt Bridge“ … zeigt nicht auf 127.0.0.1:1080\n"
     "System-Proxy „Wi-Fi“ … ausgeschaltet\n",
     0},
    {"proxy Wi-Fi 127.0.0.1 1080; merke Wi-Fi; touch zustand/ohne-admin", "--aufraeumen",
     "„Wi-Fi“ … nicht ausgeschaltet: ** Error: Command requires admin privileges.\nSystem-Proxy „Firmen", 1},
    {"merke Wi-Fi; rm $ns", "--aufraeumen", "„Wi-Fi“ … nicht ausgeschaltet: ", 1},
    {"skript $ns 'kill -TERM $$'", "--aufraeumen",
     "Netzwerkdienste … lassen sich nicht befragen: networksetup: Rückgabe 15\nVolltunnel", 1},
    {R"(mv $ns $ns.echt; skript $ns 'case $* in -getsocks*Wi-Fi) exit 4 ;; esac; exec "$0.echt" "$@"')",
     "--aufraeumen", "„Wi-Fi“ … lässt sich nicht befragen\n", 1},
    {"merke Alt", "--aufraeumen", "„Alt“ … den Netzwerkdienst gibt es nicht mehr, vergessen\n", 0},
    {"proxy Wi-Fi 10.0.0.5 1080", "--aufraeumen", "Nichts zu tun", 0},
    {"skript $adb 'echo kein Server >&2; exit 4'", "--aufraeumen",
     "Weiterleitungen … lassen sich nicht befragen: kein Server\n", 1},
    {"skript $adb 'exec sleep 60'", "--aufraeumen", "nicht befragen: adb antwortet nicht\n", 1},
    {"skript $adb :", "--aufraeumen", "Weiterleitungen … keine gefunden\nNichts zu tun: ", 0},
    {"skript $adb 'echo A tcp:1080 tcp:1080; echo A tcp:8080 tcp:8080'", "--aufraeumen",
     "Weiterleitungen … 2 entfernt\nAufgeräumt: ", 0},
    {R"(skript $adb 'case $* in
            *list) printf "A tcp:1080 tcp:1080\nB tcp:18080 tcp:8080\nC tcp:9 tcp:8080\nC tcp:1080 tcp:8080\nC x\n" ;;
            "-s B forward --remove tcp:18080") ;; *) echo "fort $*" >&2; exit 1 ;; esac')",
     "--aufraeumen",
     "Weiterleitungen … 1 entfernt; tcp:1080 nicht entfernt: fort -s A forward --remove tcp:1080\nNicht alles",
     1},
    {"chmod -x ../Resources/*; echo '{\"volltunnel\":true}' >$unsere", "--selbsttest",
     "✗ Volltunnel       der Helfer fehlt — ", 1},
    {"", "--selbsttest", "✗ adb              fehlt — brew install", 1},
    {"skript $adb 'kill -TERM $$'", "--selbsttest", "adb antwortet nicht — ", 1},
    {"skript $adb 'echo List'", "--selbsttest", "✗ Handy            keines — Kabel einstecken", 1},
    {"skript usr/sbin/lsof 'echo y 2 x:18080 \\(LISTEN\\); echo x 1 u x:8080; echo nginx 77 x:8080 \\(LISTEN\\)'",
     "--selbsttest", "✓ Port 8080        belegt von nginx (Prozess 77); der Bordlotse nimmt 18080\n", 1},
    {"", "--hilfe", "Internet weg?", 0},
    {"", "--version", "mobilsteg-bordlotse 1.", 0},
    {"", "--anmelden aus", "Startet nicht mehr", 0},
    {"touch ../heim/.config", "--anmelden aus", "Startet nicht mehr", 0},
    {"touch ../heim/.config", "--anmelden an", "desktop lässt sich nicht schreiben: ", 1},
    {"mkdir -p ../heim/.config/autostart/de.mobilsteg.bordlotse.desktop/x", "--anmelden aus",
     "desktop lässt sich nicht entfernen: ", 1},
    {"", "--anmelden vielleicht", "So geht die Option: --anmelden an|aus", 2},
    {"", "--json", "--json gilt nur neben --stand", 2},
    {"", "--unsinn", "Unbekannte Option: --unsinn", 2},
    {"", "--heim", "--heim braucht einen Ordner", 2},
    {"", "--heim=", "--heim braucht einen Ordner", 2},
    {"", "--hilfe=ja", "--hilfe nimmt keinen Wert", 2},
    {"", "--terminal --version", "--terminal und --version schließen sich aus", 2},
    {"rm -r ../heim; mkdir ../heim; echo x >../heim/Library", "--selbsttest", "✗ Protokoll", 1},
    {"", "--stand", "Läuft nicht\n", 1},
};
const char* const vorbereitung = R"(
    cd "${0%/mac}"; rm -rf mac heim; mkdir -p mac heim/Library/Preferences; cd mac; "$1" . >/dev/null
    unsere=$2 app=$3 ns=usr/sbin/networksetup adb=opt/homebrew/bin/adb; rm -f $adb
    proxy() { $ns -setsocksfirewallproxy "$@"; }
    merke() { echo "{\"proxy.dienst\":\"$1\"}" >"$unsere"; }
    skript() { printf '#!/bin/sh\n%s\n' "$2" >$1; chmod +x $1; }
    handy() { skript $adb 'echo List; echo R1 device model:SM_S911B'; }
    echo '{"profil":"reise"}' >"$unsere"
)";

/// The whole self-test where all is well, and what another Mac has instead; "~": the trip's folder.
const std::pair<std::string, std::string> selbsttests[] = {
    {R"(handy; mkdir -p 'Applications/Google Chrome.app/Contents'
        touch 'Applications/Google Chrome.app/Contents/Info.plist')",
     R"(✓ Programm         Mobilsteg Bordlotse 1.0.0 (1) · de.mobilsteg.bordlotse
✓ Rechnername      RECHNER
✓ Bordlotse        läuft nicht
✓ Beim Anmelden    startet nichts
✓ Einstellungen    ~/heim/Library/Preferences/de.mobilsteg.bordlotse.json
✓ Protokoll        ~/heim/Library/Logs/MobilstegBordlotse.log
✓ Ordner           ~/heim/Library/Application Support/Mobilsteg Bordlotse
✓ adb              ~/mac/opt/homebrew/bin/adb
✓ Handy            R1 · Samsung Galaxy S23 · device
✓ Port 1080        frei
✓ Port 8080        belegt von einem anderen Programm; der Bordlotse nimmt 18080
✓ Port 1081        frei
✓ Netzwerkdienst   Wi-Fi
✓ System-Proxy     „Wi-Fi“: aus
✓ Volltunnel       ~/Resources/mobilsteg-volltunnel
✓ Werkzeuge        /sbin/route /usr/sbin/networksetup /usr/sbin/scutil /usr/sbin/lsof /usr/sbin/netstat )"
     R"(/usr/bin/pgrep /usr/bin/mdfind /usr/bin/open /usr/bin/osascript
✓ Browser          Chrome ohne fahrtwind · ~/mac/Applications/Google Chrome.app

Nichts steht im Weg.
)"},
    {R"(skript $adb 'echo List; echo R9 unauthorized; echo R8 offline model:X; echo L tcp:8080 tcp:8080'
        proxy 'USB 10/100/1000 LAN' 127.0.0.1 1080; proxy Wi-Fi 10.0.0.5 80; merke Wi-Fi; rm usr/bin/open
        cd ../heim; mkdir -p .config/autostart Library/Logs/MobilstegBordlotse.log "$app"
        touch "$app/volltunnel.stopp.laeuft" .config/autostart/de.mobilsteg.bordlotse.desktop
        chmod 666 "$unsere"; chmod 777 ../Resources/*)",
     R"(✗ Beim Anmelden    startet ein anderes Programm: ~/heim/.config/autostart/de.mobilsteg.bordlotse.desktop )"
     R"(— --anmelden an setzt dieses ein, --anmelden aus keines
✗ Protokoll        ~/heim/Library/Logs/MobilstegBordlotse.log )"
     R"(— nicht zu schreiben: Besitzer und Rechte der Ordner prüfen
✗ Handy            R9 ·  · unauthorized — am Handy „USB-Debugging zulassen“ bestätigen
✗ Handy            R8 · X · offline — Kabel ab- und wieder anstecken
✗ Handy            L ·  · tcp:8080 — Kabel ab- und wieder anstecken
✓ Port 8080        Weiterleitung zum Handy
✗ System-Proxy     „USB 10/100/1000 LAN“: 127.0.0.1:1080 — das war ein früherer Lauf: --aufraeumen
✗ System-Proxy     „Wi-Fi“: 10.0.0.5:80 — der Bordlotse ersetzt ihn und schaltet ihn am Ende aus
✓ Gemerkt          Netzwerkdienst „Wi-Fi“
✗ Volltunnel       ~/Resources/mobilsteg-volltunnel — andere könnten ihn verändern: Rechte prüfen
✗ Volltunnel       läuft — das war ein früherer Lauf: --aufraeumen
✗ Werkzeug         ~/mac/usr/bin/open fehlt — es gehört zu macOS
✓ Werkzeuge        /sbin/route /usr/sbin/networksetup /usr/sbin/scutil /usr/sbin/lsof /usr/sbin/netstat )"
     R"(/usr/bin/pgrep /usr/bin/mdfind /usr/bin/osascript
10 Dinge stehen im Weg: siehe ✗.
)"}};

struct FremderAn8080 {
    FremderAn8080() {
        const auto gastseite = loopback(8080);
        EXPECT_EQ(::bind(horcher.nummer(), reinterpret_cast<const sockaddr*>(&gastseite), sizeof gastseite),
                  0);
        EXPECT_EQ(::listen(horcher.nummer(), 99), 0);
    }
    Deskriptor horcher{::socket(AF_INET, SOCK_STREAM, 0)};
};

std::string ersetzt(std::string text, const std::string& was, const std::string& wodurch) {
    for (auto stelle = text.find(was); stelle != std::string::npos; stelle = text.find(was, stelle))
        text.replace(stelle, was.size(), wodurch);
    return text;
}

/// A fresh Mac and home, with that done to them.
void bereite(const Fahrtbank& bank, const std::string& davor) {
    const auto ergebnis =
        lauf("/bin/sh",
             {"-c", vorbereitung + davor, bank.ordner.pfad() + "/mac", QUELL_ORDNER "/probe/mac/aufbauen",
              bank.ordner.pfad() + einstellungsdatei, "Library/Application Support/Mobilsteg Bordlotse"},
             60);
    EXPECT_EQ(ergebnis.fehler, "") << davor;
}

TEST(Aufruf, sagtWasBliebUndWasImWegSteht) {
    const Fahrtbank bank;
    const FremderAn8080 fremder;
    for (const auto& [davor, option, gesagt, status] : lagen) {
        bereite(bank, davor);
        const auto vorher = bank.ordner.lies(einstellungsdatei);
        const auto worte = teile(option, ' ');
        const auto ergebnis = bank.rufe({worte.begin(), worte.end()});
        SCOPED_TRACE(option + " nach " + davor + ergebnis.ausgabe);
        EXPECT_EQ(ergebnis.status, status);
        EXPECT_THAT(status == 2 ? ergebnis.fehler : ergebnis.ausgabe, HasSubstr(gesagt));
        const auto hatte = [&davor = davor](const char* stueck) {
            return davor.find(stueck) != std::string::npos;
        };
        const auto unsere = bank.ordner.lies(einstellungsdatei);
        EXPECT_TRUE(unsere == vorher || hatte("merke")) << "not even what nobody understands is overwritten";
        if (option != "--aufraeumen")
            continue;
        EXPECT_EQ(ergebnis.ausgabe.find("\nVon Hand: ") != std::string::npos, status == 1);
        EXPECT_EQ(bank.ordner.lies("/mac/zustand/socks").find("on\t127.") != std::string::npos,
                  hatte("ohne-admin"));
        EXPECT_EQ(unsere.find("Wi-Fi") != std::string::npos, status == 1 && hatte("merke Wi-Fi"))
            << "the next one can try again, but not for ever";
    }
}

TEST(Aufruf, sagtAllesWasSieSieht) {
    Fahrtbank bank;
    bank.helfer = attrappe;
    const FremderAn8080 fremder;
    std::string gutes;
    for (const auto& [davor, soll] : selbsttests) {
        bereite(bank, davor);
        auto gesagt = ersetzt(bank.rufe({"--selbsttest"}).ausgabe, bank.ordner.pfad(), "~");
        if (gutes.empty())
            gutes = gesagt;
        else
            for (const auto zeile : teile(gutes, '\n'))
                gesagt = ersetzt(gesagt, std::string(zeile) + "\n", "");
        EXPECT_EQ(ersetzt(gesagt, "\n\n", "\n"),
                  ersetzt(ersetzt(soll, "RECHNER", rechnername()), "\n\n", "\n"));
    }
}

TEST(Aufruf, sagtWasSieSiehtUndAendertNichts) {
    const Fahrtbank bank;
    const auto vorher = bank.ordner.lies(einstellungsdatei);
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        ::unsetenv(variable);
    const auto ohneFenster = bank.rufe({});
    EXPECT_EQ(ohneFenster.status, 1);
    EXPECT_THAT(ohneFenster.fehler, HasSubstr("Im Terminal läuft das Programm mit --terminal"));
    const auto hilfe = bank.rufe({"--hilfe"}).ausgabe;
    for (const auto zeile : teile(hilfe, '\n'))
        EXPECT_LE(zeichenzahl(zeile), 80U) << zeile;
    const std::string anderswo = bank.ordner.pfad() + "/anderswo";
    EXPECT_EQ(bank.rufe({"--heim=" + anderswo, "--anmelden", "an"}).status, 0);
    EXPECT_THAT(bank.ordner.lies("/anderswo/.config/autostart/de.mobilsteg.bordlotse.desktop"),
                HasSubstr("\nExec=\"" + bank.ordner.pfad() + "/bin/mobilsteg-bordlotse\"\n"));
    EXPECT_EQ(bank.rufe({"--heim=" + anderswo, "--anmelden", "aus"}).status, 0);
    EXPECT_TRUE(std::filesystem::is_empty(anderswo + "/.config/autostart"));
    (void)bank.rufe({"--selbsttest"});
    const auto helfer = programmpfad("mobilsteg-volltunnel");
    EXPECT_THAT(lauf(helfer, {"--hilfe"}, 60).ausgabe, StartsWith("Aufruf: mobilsteg-volltunnel -proxy "));
    EXPECT_THAT(lauf(helfer, {}, 60).fehler, StartsWith("mobilsteg-volltunnel: -proxy braucht "));
    EXPECT_EQ(bank.ordner.lies(einstellungsdatei), vorher);
    EXPECT_TRUE(portFrei(5643)) << "an adb server that was not there before";
    EXPECT_FALSE(existiert(bank.ordner.pfad() + "/heim/Library/Logs"));
}

TEST(Aufruf, ergaenztInDerBashWasPasst) {
    const Ordner ordner;
    ordner.lege("/mit blank/datei", "");
    const std::pair<std::string, std::string> faelle[] = {
        {"--te", "--terminal;"},
        {"--waech", ""}, // the program's own are shown to nobody
        {"--terminal --", "--heim;--wurzel;"},
        {"--aufraeumen --t", "--trotzdem;"},
        {"--anmelden a", "an;aus;"},
        {"--heim " + ordner.pfad() + "/m", ordner.pfad() + "/mit blank;"},
        {"--heim = " + ordner.pfad() + "/m", ordner.pfad() + "/mit blank;"}, // "--heim=…": three words to it
    };
    for (const auto& [getippt, soll] : faelle) {
        const auto ergebnis =
            lauf("/bin/bash",
                 {"-c",
                  R"(. "$0"; COMP_WORDS=(x $1); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _mobilsteg_bordlotse
                     printf '%s' "${COMPREPLY[@]/%/;}")",
                  BIN_ORDNER "/../anleitung/mobilsteg-bordlotse.bash", getippt},
                 60);
        EXPECT_EQ(ergebnis.ausgabe, soll) << getippt << ergebnis.fehler;
    }
}

TEST(Aufruf, laeuftOhneAdbBisZuSeinemEnde) {
    Fahrtbank bank;
    std::filesystem::remove(bank.ordner.pfad() + "/mac/opt/homebrew/bin/adb");
    bank.starte();
    bank.erwartePhase("adb nicht gefunden");
    const std::string wer = " (Prozess " + std::to_string(bank.programm->nummer()) + ")";
    // What is asked beside it, the status, what is said on which stream.
    const std::tuple<std::vector<std::string>, int, std::string, std::string> faelle[] = {
        {{"--terminal"}, 1, "", "mobilsteg-bordlotse: läuft schon" + wer + "\n"},
        {{"--stand"}, 0, Phase(Phase::Art::keinAdb).text() + "\n", ""},
        {{"--aufraeumen"},
         1,
         "Ein Bordlotse läuft" + wer + ", deshalb bleibt alles, wie es ist: erst beenden, oder --trotzdem.\n",
         ""},
    };
    for (const auto& [worte, status, ausgabe, fehler] : faelle) {
        const auto ergebnis = bank.rufe(worte);
        EXPECT_EQ(ergebnis.status, status);
        EXPECT_EQ(ergebnis.ausgabe, ausgabe);
        EXPECT_EQ(ergebnis.fehler, fehler);
    }
    EXPECT_THAT(bank.rufe({"--stand", "--json"}).ausgabe, HasSubstr("\"proxy_gesetzt\": false,"));
    EXPECT_THAT(bank.rufe({"--aufraeumen", "--trotzdem"}).ausgabe,
                StartsWith("Achtung: Ein Bordlotse läuft" + wer + " und setzt alles wieder, sobald"));
    EXPECT_THAT(bank.rufe({"--selbsttest"}).ausgabe,
                AllOf(HasSubstr("läuft: Prozess "), HasSubstr(" · Wächter "),
                      HasSubstr("1081        der Bordlotse selbst")));
    bank.programm->tippe("unfug\n \nexperte an");
    EXPECT_TRUE(bank.zeigt("Unbekannter Befehl: „unfug“\n") && bank.zeigt("[x] Expertenmodus"));
    bank.programm->tippe("beenden");
    EXPECT_EQ(bank.programm->warteAufEnde(), 0);
    EXPECT_TRUE(warteBis([&] { return bank.verlassen(); })) << "no watchman is left";
    bank.starte();
    bank.erwartePhase("adb nicht gefunden");
    bank.programm->sende(SIGTERM);
    EXPECT_EQ(bank.programm->warteAufEnde(), 0);
    EXPECT_TRUE(warteBis([&] { return bank.verlassen(); }));
    EXPECT_THAT(bank.protokoll(), ContainsRegex("Signal 15 -- räume auf und beende\n[^\n]*  Beendet\n$"));
    bank.starte();
    bank.erwartePhase("adb nicht gefunden");
    bank.programm->sende(SIGKILL);
    EXPECT_TRUE(bank.kommt(protokolldatei, "unerwartet beendet worden — aufgeräumt\n") &&
                bank.imStand("\"phase\": \"Beendet\""));
    EXPECT_TRUE(warteBis([&] { return bank.verlassen(); }));
}

} // namespace
