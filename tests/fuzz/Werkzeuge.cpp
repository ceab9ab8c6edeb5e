// What the tools print: adb, route, networksetup, scutil, lsof, osascript, and the tunnel's helper.

#include "ansicht/Inhalt.hpp"
#include "handy/Adb.hpp"
#include "netz/Erhebung.hpp"
#include "netz/SystemProxy.hpp"
#include "netz/Volltunnel.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"
#include "plattform/portabel/OsascriptSkript.hpp"
#include "tests/fuzz/Pruefungen.hpp"
#include "tests/hilfe/Ordner.hpp"

#include <algorithm>
#include <map>
#include <set>

namespace mobilsteg::fuzz {

namespace {

constexpr const char* wieder = "printed and read again it is the same";

/// The entries "name (count)", most first, each name once; a count `mal` that number.
std::map<std::string, long> gezaehlt(const std::vector<std::string>& eintraege, long mal) {
    std::map<std::string, long> zaehlung;
    long vorige = std::numeric_limits<long>::max();
    verlange(eintraege.size() <= 8, "eight entries at most");
    for (const auto& eintrag : eintraege) {
        verlangeEinzeilig(eintrag);
        const auto klammer = eintrag.rfind(" (");
        const std::string name = eintrag.substr(0, klammer);
        const long anzahl = std::stol(eintrag.substr(klammer + 2));
        verlange(anzahl > 0 && anzahl <= vorige, "most first");
        verlange(name != "adb" && !name.starts_with("Mobilsteg"), "our own do not count");
        verlange(zaehlung.emplace(name, mal * anzahl).second, "each program once");
        vorige = anzahl;
    }
    return zaehlung;
}

/// The text that an AppleScript literal at the beginning of `quelle` stands for.
std::string ausLiteral(std::string_view quelle) {
    std::string text;
    std::size_t i = 0;
    for (i = 1; i < quelle.size() && quelle[i] != '"'; ++i)
        text += quelle[i] == '\\' ? quelle[++i] : quelle[i];
    verlange(quelle.substr(i).starts_with("\" with prompt \"Grund\" with administrator"), "the literal ends");
    return text;
}

/// The words of a command as a shell splits it, as far as single quotes and backslashes decide.
std::vector<std::string> shellworte(std::string_view befehl) {
    std::vector<std::string> worte(1);
    bool inHochkomma = false;
    for (std::size_t i = 0; i < befehl.size(); ++i) {
        if (befehl[i] == '\'')
            inHochkomma = !inHochkomma;
        else if (!inHochkomma && befehl[i] == '\\')
            worte.back() += befehl[++i];
        else if (!inHochkomma && befehl[i] == ' ')
            worte.emplace_back();
        else
            worte.back() += befehl[i];
    }
    return worte;
}

} // namespace

void adb(std::string_view bytes) {
    const auto gedruckt = [](std::string_view ausgabe) {
        std::string liste = "List of devices attached\n";
        for (const auto& g : Adb::lies(ausgabe)) {
            verlangeEinzeilig(g.serial);
            verlangeEinzeilig(g.zustand);
            verlangeUtf8(g.modell);
            verlange((g.serial + g.zustand).find(' ') == std::string::npos, "a serial is one argument");
            liste += g.serial + "  " + g.zustand + "\n";
        }
        return liste;
    };
    const std::string einmal = gedruckt(alsUtf8(bytes));
    verlange(gedruckt(einmal) == einmal, wieder);
    (void)Adb::lies(bytes);
}

void netzdienste(std::string_view bytes) {
    const auto teile = abschnitte(alsUtf8(bytes), 2);
    const auto schnittstelle = SystemProxy::schnittstelle(teile[0]);
    verlangeEinzeilig(schnittstelle.value_or("en0"));
    verlange(!schnittstelle || ohneRandblanks(*schnittstelle) == *schnittstelle, "without blanks around it");
    const auto dienste = SystemProxy::dienste(teile[1]);
    const auto gewaehlter = SystemProxy::dienstFuer(schnittstelle, teile[1]);
    verlange(!gewaehlter || std::find(dienste.begin(), dienste.end(), *gewaehlter) != dienste.end(),
             "clean-up finds every service that can be chosen");
    std::string gedruckt;
    int n = 0;
    for (const auto& dienst : dienste) {
        verlangeEinzeilig(dienst);
        const std::string nummer = std::to_string(++n);
        gedruckt += "(" + nummer + ") " + dienst + "\n(Hardware Port: x, Device: en" + nummer + ")\n\n";
    }
    verlange(SystemProxy::dienste(gedruckt) == dienste, wieder);
    verlange(dienste.empty() ||
                 (SystemProxy::dienstFuer("en1", gedruckt) == dienste.front() &&
                  SystemProxy::dienstFuer("en" + std::to_string(n), gedruckt) == dienste.back()),
             "each interface has its own service");
}

void vpnliste(std::string_view bytes) {
    const auto teile = abschnitte(alsUtf8(bytes), 2);
    const auto zeilen = mobilsteg::teile(teile[1], '\n');
    const std::set<std::string> bekannt(zeilen.begin(), zeilen.end());
    const auto namen = Erhebung::liesDienste(teile[0], {zeilen.begin(), zeilen.end()});
    std::string gedruckt;
    for (const auto& name : namen) {
        verlangeEinzeilig(name);
        verlange(name.find('"') == std::string::npos && !bekannt.contains(name), "a name that is not known");
        gedruckt += "* (Connected)   2B1E4C5D VPN (x) \"" + name + "\"   [VPN:x]\n";
    }
    verlange(Erhebung::liesDienste(gedruckt, {}) == namen, wieder);
    Zustand zustand;
    zustand.vpnsOffen = namen;
    std::set<std::string> gezeigt;
    for (const auto& element : vpnBlock(zustand))
        if (const auto* zeile = std::get_if<Symbolzeile>(&element))
            verlange(gezeigt.insert(zeile->text).second, "each VPN is shown once");
    verlange(gezeigt == std::set<std::string>(namen.begin(), namen.end()), "all VPNs are shown");
}

void verbindungen(std::string_view bytes) {
    const std::string lsof = alsUtf8(bytes);
    const auto einmal = Erhebung::liesVerbindungen(lsof);
    const auto zweimal = Erhebung::liesVerbindungen(lsof + "\n" + lsof);
    for (const auto liste : {&Erhebung::Verbindungen::durch, &Erhebung::Verbindungen::vorbei}) {
        verlange(gezaehlt(zweimal.*liste, 1) == gezaehlt(einmal.*liste, 2),
                 "twice the rows, twice the number");
    }
}

void tunnelbericht(std::string_view bytes) {
    static const Ordner ordner;
    const auto bericht = Erhebung::liesTunnelbericht(bytes);
    verlange(bericht.eintraege.size() == bericht.namen.size(), "a name for each entry");
    for (std::size_t i = 0; i < bericht.namen.size(); ++i) {
        verlangeUtf8(bericht.eintraege[i]);
        verlange(bericht.eintraege[i].starts_with(bericht.namen[i]), "an entry begins with its name");
    }
    const Laeufer stumm = [](const auto&, const auto&, double) { return Ergebnis{1, "", ""}; };
    Erhebung erhebung(stumm, {"", ""}, ordner.lege("/x.vpns.json", std::string(bytes)));
    verlange(erhebung.vpns(true).gesichert == bericht.eintraege, "the file is read like its bytes");
    const auto& ziele = erhebung.ziele();
    verlange(std::adjacent_find(ziele.begin(), ziele.end(), std::greater_equal<>()) == ziele.end(),
             "addresses are unique and ascending");
    verlange(erhebung.vpns(false).gesichert.empty() && ziele.empty(), "no tunnel, no report");
}

void skriptfehler(std::string_view bytes) {
    const std::string ausgabe = alsUtf8(bytes);
    const auto fehler = OsascriptSkript::lies(ausgabe);
    verlange(!fehler.nichtGebaut, "it was built");
    if (!fehler.meldung)
        return;
    verlangeEinzeilig(*fehler.meldung);
    verlange(beschnitten(*fehler.meldung) == *fehler.meldung, "a message without white space around it");
    const auto gelesen = OsascriptSkript::lies("0:9: execution error: " + *fehler.meldung + " (" +
                                               std::to_string(fehler.nummer) + ")\n");
    verlange(gelesen.meldung == fehler.meldung && gelesen.nummer == fehler.nummer, wieder);
}

void skriptquelle(std::string_view bytes) {
    std::string dienst = alsUtf8(bytes);
    std::erase(dienst, '\''); // the one character that is trusted not to be there
    const std::string ordner = "/Users/" + dienst;
    const auto befehl = tunnelbefehl(ordner + "/h", ordner + "/s", ordner + "/p", 1, {dienst, false, true});
    const auto quelle = mobilsteg::skriptquelle(befehl, "Grund");
    const std::string_view marke = "do shell script ";
    verlange(quelle.starts_with(marke), "a script");
    verlange(ausLiteral(std::string_view(quelle).substr(marke.size())) == befehl,
             "AppleScript hands on the very command");
    const std::vector<std::string> soll = {
        "(",      ordner + "/h", "-proxy",   "127.0.0.1:1080", "-stopp", ordner + "/s", "-dienst", dienst,
        "-wache", "1",           "-nur-vpn", "</dev/null",     ">>",     ordner + "/p", "2>&1",    "&",
        ")",      ";",           "echo",     "gestartet"};
    verlange(shellworte(befehl) == soll, "a name is one word, never a command of root's");
}

} // namespace mobilsteg::fuzz
