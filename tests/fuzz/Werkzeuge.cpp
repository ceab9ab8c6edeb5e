// What the tools print: adb, route, networksetup, scutil, lsof, osascript, and the tunnel's helper.

#include "handy/Adb.hpp"
#include "netz/Erhebung.hpp"
#include "netz/SystemProxy.hpp"
#include "netz/Volltunnel.hpp"
#include "plattform/Adapter.hpp"
#include "plattform/Text.hpp"
#include "tests/fuzz/Pruefungen.hpp"

#include <algorithm>

namespace mobilsteg::fuzz {

namespace {

constexpr const char* wieder = "printed and read again it is the same";

/// The text that an AppleScript literal at the beginning of `quelle` stands for.
std::string ausLiteral(const std::string& quelle) {
    std::string text;
    std::size_t i = 0;
    for (i = 1; i < quelle.size() && quelle[i] != '"'; ++i)
        text += quelle[i] == '\\' ? quelle[++i] : quelle[i];
    verlange(quelle.substr(i).starts_with("\" with prompt"), "the literal ends");
    return text;
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
}

void netzdienste(std::string_view bytes) {
    const auto [route, liste] = geteilt(alsUtf8(bytes));
    const auto schnittstelle = SystemProxy::schnittstelle(route);
    verlangeEinzeilig(schnittstelle.value_or("en0"));
    const auto gedruckt = [](const std::vector<Netzwerkdienst>& dienste) {
        std::string text;
        for (const auto& dienst : dienste) {
            verlangeEinzeilig(dienst.name);
            text += (dienst.eingeschaltet ? "(1) " : "(*) ") + dienst.name + "\n" + dienst.anschluss + "\n";
        }
        return text;
    };
    const auto dienste = SystemProxy::liesDienste(liste);
    const auto einmal = gedruckt(dienste);
    verlange(gedruckt(SystemProxy::liesDienste(einmal)) == einmal, wieder);
    verlangeEinzeilig(SystemProxy::dienstFuer(schnittstelle, dienste).value_or("Wi-Fi"));
}

/// An answer of `-getsocksfirewallproxy`.
void proxyziel(std::string_view bytes) {
    const bool unserer = SystemProxy::zeigtAufUns(bytes);
    for (const auto* teil : {"Enabled: Yes", "Server: 127.0.0.1", "Port: 1080"})
        verlange(!unserer || bytes.find(teil) != std::string_view::npos,
                 "a proxy of the user's own is not ours");
}

void vpnliste(std::string_view bytes) {
    const auto [liste, bekanntes] = geteilt(alsUtf8(bytes));
    const auto zeilen = teile(bekanntes, '\n');
    const std::vector<std::string> bekannte(zeilen.begin(), zeilen.end());
    const auto namen = Erhebung::liesDienste(liste, bekannte);
    std::string gedruckt;
    for (const auto& name : namen) {
        verlangeEinzeilig(name);
        verlange(std::ranges::find(bekannte, name) == bekannte.end(), "a name that is not known");
        gedruckt += "* (Connected)   2B1E4C5D VPN (x) \"" + name + "\"   [VPN:x]\n";
    }
    verlange(Erhebung::liesDienste(gedruckt, {}) == namen, wieder);
}

void verbindungen(std::string_view bytes) {
    const std::string lsof = alsUtf8(bytes);
    const auto einmal = Erhebung::liesVerbindungen(lsof);
    const auto zweimal = Erhebung::liesVerbindungen(lsof + "\n" + lsof);
    for (const auto liste : {&Erhebung::Verbindungen::durch, &Erhebung::Verbindungen::vorbei}) {
        auto soll = einmal.*liste;
        for (auto& eintrag : soll) { // "name (count)"
            verlangeEinzeilig(eintrag);
            const auto zahl = eintrag.rfind('(') + 1;
            eintrag.replace(zahl, eintrag.npos, std::to_string(2 * std::stol(eintrag.substr(zahl))) + ")");
        }
        verlange(zweimal.*liste == soll && soll.size() <= 8, "twice the rows, twice the number");
    }
}

void tunnelbericht(std::string_view bytes) {
    const auto bericht = Erhebung::liesTunnelbericht(bytes);
    verlange(bericht.eintraege.size() == bericht.namen.size(), "a name for each entry");
    for (std::size_t i = 0; i < bericht.namen.size(); ++i) {
        verlangeUtf8(bericht.eintraege[i]);
        verlange(bericht.eintraege[i].starts_with(bericht.namen[i]), "an entry begins with its name");
    }
    for (const auto& ziel : Erhebung::liste_ips(bericht.eintraege))
        verlange(!ziel.empty() && ziel.find_first_not_of("0123456789.") == std::string::npos, "an address");
}

void skriptfehler(std::string_view bytes) {
    const auto fehler = liesSkriptfehler(alsUtf8(bytes));
    if (!fehler.meldung)
        return;
    verlangeEinzeilig(*fehler.meldung);
    const auto gelesen = liesSkriptfehler("0:9: execution error: " + *fehler.meldung + " (" +
                                          std::to_string(fehler.nummer) + ")\n");
    verlange(gelesen.meldung == fehler.meldung && gelesen.nummer == fehler.nummer, wieder);
}

void skriptquelle(std::string_view bytes) {
    const auto befehlFuer = [](const std::string& dienst) {
        const std::string ordner = "/Users/" + dienst;
        return tunnelbefehl(ordner + "/h", ordner + "/s", ordner + "/p", 1, {dienst, false, true});
    };
    std::string dienst = alsUtf8(bytes);
    std::erase(dienst, '\''); // the one character that is trusted not to be there
    const auto befehl = befehlFuer(dienst);
    std::string soll;
    for (const char c : befehlFuer("\x01"))
        soll += c == '\x01' ? dienst : std::string(1, c);
    verlange(befehl == soll && soll.find(" '" + dienst + "' ") != std::string::npos,
             "a name is one word, never a command of root's");
    const auto quelle = mobilsteg::skriptquelle(befehl, "Grund");
    verlange(quelle.starts_with("do shell script ") && ausLiteral(quelle.substr(16)) == befehl,
             "AppleScript hands on the very command");
}

} // namespace mobilsteg::fuzz
