// What must hold of every reader of foreign bytes, whatever these are.

#include "tests/fuzz/Pruefungen.hpp"

#include "ansicht/Inhalt.hpp"
#include "ansicht/terminal/Eingabe.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"
#include "handy/Adb.hpp"
#include "kabel/Anzeige.hpp"
#include "kabel/Berichte.hpp"
#include "kabel/Stand.hpp"
#include "netz/Erhebung.hpp"
#include "netz/SystemProxy.hpp"
#include "netz/Volltunnel.hpp"
#include "plattform/Adapter.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"
#include "standdienst/Standdienst.hpp"
#include "tests/hilfe/Gegenstelle.hpp"
#include "tests/hilfe/Klient.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/volltunnel/Pakete.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cerrno>

namespace mobilsteg::fuzz {

namespace {

using nlohmann::json;

constexpr const char* wieder = "printed and read again it is the same";

void verlange(bool gilt, const char* was) {
    if (!gilt)
        throw std::logic_error(was);
}

void verlangeUtf8(std::string_view text) {
    (void)json(text).dump(); // throws when it is not
}

void verlangeEinzeilig(std::string_view text) {
    verlangeUtf8(text);
    verlange(!text.empty() && text.find('\n') == std::string_view::npos, "one line, and not an empty one");
}

/// An input for two readers: what stands before and behind the first line of "====".
std::pair<std::string, std::string> geteilt(const std::string& bytes) {
    const auto grenze = std::min(bytes.find("\n====\n"), bytes.size());
    return {bytes.substr(0, grenze), bytes.substr(std::min(grenze + 6, bytes.size()))};
}

// --- what the tools print ---------------------------------------------------------------------------------

void adb(std::string_view bytes) {
    auto geraete = Adb::lies(alsUtf8(bytes));
    std::string gedruckt = "List of devices attached\n";
    for (auto& g : geraete) {
        verlangeEinzeilig(g.serial);
        verlangeEinzeilig(g.zustand);
        verlange((g.serial + g.zustand).find(' ') == std::string::npos, "a serial is one argument");
        gedruckt += g.serial + "  " + g.zustand + (g.amKabel ? " usb:1-1\n" : "\n");
        verlangeUtf8(std::exchange(g.modell, ""));
    }
    auto wiedergelesene = Adb::lies(gedruckt);
    for (auto& g : wiedergelesene)
        g.modell.clear(); // a state may look like a model
    verlange(wiedergelesene == geraete, wieder);
}

void netzdienste(std::string_view bytes) {
    const auto [route, liste] = geteilt(alsUtf8(bytes));
    const auto gedruckt = [](const std::vector<Netzwerkdienst>& dienste) {
        std::string text;
        for (const auto& [name, eingeschaltet, anschluss] : dienste) {
            verlangeEinzeilig(name);
            text += (eingeschaltet ? "(1) " : "(*) ") + name + "\n" + anschluss + "\n";
        }
        return text;
    };
    const auto dienste = SystemProxy::liesDienste(liste);
    const auto einmal = gedruckt(dienste);
    verlange(gedruckt(SystemProxy::liesDienste(einmal)) == einmal, wieder);
    const auto schnittstelle = SystemProxy::schnittstelle(route);
    verlangeEinzeilig(schnittstelle.value_or("en0"));
    verlangeEinzeilig(SystemProxy::dienstFuer(schnittstelle, dienste).value_or("Wi-Fi"));
}

void proxyziel(std::string_view bytes) {
    if (SystemProxy::zeigtAufUns(bytes))
        for (const auto* teil : {"Enabled: Yes", "Server: 127.0.0.1", "Port: 1080"})
            verlange(bytes.find(teil) != std::string_view::npos, "a proxy of the user's own is not ours");
}

void vpnliste(std::string_view bytes) {
    const auto [liste, bekanntes] = geteilt(alsUtf8(bytes));
    const auto bekannte = teile(bekanntes, '\n');
    const auto namen = Erhebung::liesDienste(liste, {bekannte.begin(), bekannte.end()});
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
    auto soll = Erhebung::liesVerbindungen(lsof);
    for (auto* liste : {&soll.durch, &soll.vorbei}) {
        verlange(liste->size() <= 8, "the most frequent ones only");
        for (auto& eintrag : *liste) { // "name (count)"
            verlangeEinzeilig(eintrag);
            const auto zahl = eintrag.rfind('(') + 1;
            eintrag.replace(zahl, eintrag.npos, std::to_string(2 * std::stol(eintrag.substr(zahl))) + ")");
        }
    }
    verlange(Erhebung::liesVerbindungen(lsof + "\n" + lsof) == soll, "twice the rows, twice the number");
}

void tunnelbericht(std::string_view bytes) {
    const auto bericht = Erhebung::liesTunnelbericht(bytes);
    verlange(bericht.eintraege.size() == bericht.namen.size(), "a name for each entry");
    for (std::size_t i = 0; i < bericht.namen.size(); ++i) {
        verlangeUtf8(bericht.eintraege[i]);
        verlange(bericht.eintraege[i].starts_with(bericht.namen[i]), "an entry begins with its name");
    }
    for (const auto& ziel : Erhebung::liste_ips(bericht.eintraege))
        verlange(teile(ziel, '.').size() == 4, "what may be an address");
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
    const auto befehlFuer = [](const std::string& d) {
        return tunnelbefehl("/" + d + "/h", "/" + d + "/s", "/" + d + "/p", 1, {d, false, true});
    };
    std::string dienst = alsUtf8(bytes);
    std::erase(dienst, '\''); // the one character that is trusted not to be there
    const auto befehl = befehlFuer(dienst);
    std::string soll;
    for (const char c : befehlFuer("\x01"))
        soll += c == '\x01' ? dienst : std::string(1, c);
    verlange(befehl == soll && soll.find(" '" + dienst + "' ") != std::string::npos,
             "a name is one word, never a command of root's");
    std::string literal = "do shell script \"";
    for (const char c : befehl)
        literal += (c == '"' || c == '\\' ? "\\" : "") + std::string(1, c);
    verlange(mobilsteg::skriptquelle(befehl, "Grund").starts_with(literal + "\" with prompt"),
             "AppleScript hands on the very command");
}

// --- what comes over the wire, from the disk and from the keyboard ----------------------------------------

void antwort(std::string_view bytes) {
    const auto gelesen = Antwort::ausJson(bytes);
    if (!gelesen)
        return;
    if (const auto werte = Anzeige().zeige(*gelesen, "Mac", std::chrono::seconds(1)))
        verlangeUtf8(verbunden(werte->gleise, "") + werte->menge + werte->rettung);
    Standangaben angaben;
    angaben.name = "Mac";
    const auto stand = standDokument(angaben, gelesen);
    verlange(stand == standDokument(angaben, Antwort::ausJson(json::parse(bytes).dump(1))),
             "white space and order of the keys do not count");
    verlange(json::parse(stand).dump(2) == stand, "the state document is JSON");
}

void austritt(std::string_view bytes) {
    Gegenstelle http;
    http.antwort = HttpErgebnis{200, std::string(bytes)};
    const auto ip = Handy(http, "https://austritt.example/").austrittsIP();
    const auto steuert = [](unsigned char c) { return c < 0x20 || c == 0x7F; };
    verlangeEinzeilig(ip.value_or("::1"));
    verlange(!ip || (zeichenzahl(*ip) <= 45 && std::ranges::none_of(*ip, steuert)),
             "no longer than an address, on one line");
}

void standdienst(std::string_view bytes) {
    static AsioSchlange schlange("standdienst");
    static Standdienst dienst(schlange, 0, {});
    const std::string dokument = "{\"a\": 1}";
    if (dienst.port() == 0) {
        dienst.starte();
        dienst.setzeDokument(dokument);
    }
    const auto stuecke = teile(bytes, '\0');
    Klient klient(dienst.port());
    verlange(klient.verbunden, "a connection");
    for (const auto stueck : stuecke)
        klient.sende(stueck);
    klient.sagtNichtsMehr();
    auto alles = klient.lies();
    klient.reisseAb(); // thousands of lingering connections would use up the ports
    // A client that goes on behind a whole request may find the connection closed, but has its answer.
    alles.resize(std::min(alles.rfind("[kein Ende: " + std::to_string(ECONNRESET)), alles.size()));
    // Pieces may arrive together: any beginning of the request may be the one that was answered.
    std::string bisher;
    bool erwartet = stuecke.empty() && alles == Standdienst::antwort("", dokument);
    for (const auto stueck : stuecke) {
        bisher += stueck;
        erwartet = erwartet || alles == Standdienst::antwort(bisher, dokument);
    }
    verlange(erwartet, "one whole answer");
}

void einstellungen(std::string_view bytes) {
    static const Ordner ordner;
    const std::string pfad = ordner.lege("/einstellungen.json", std::string(bytes));
    const std::string beiseite = pfad + ".defekt";
    std::remove(beiseite.c_str());
    json soll = json::parse(bytes, nullptr, false);
    const auto lies = [&](const std::unique_ptr<Einstellungen>& e) {
        return std::pair(e->text("profil"), e->tabelle("bericht.stand"));
    };
    const auto speicher = dateiEinstellungen(pfad);
    const auto gelesen = lies(speicher);
    verlange(!gelesen.first || soll["profil"] == *gelesen.first, "a text that stands there");
    verlange(!gelesen.second || soll["bericht.stand"] == json(*gelesen.second), "a table that stands there");
    const std::string wert = alsUtf8(bytes.substr(0, 40));
    speicher->setzeText("proxy.dienst", wert);
    const auto danach = dateiEinstellungen(pfad);
    verlange(danach->text("proxy.dienst") == wert && lies(danach) == gelesen,
             "what is stored is read by the next run");
    if (existiert(beiseite))
        return verlange(liesDatei(beiseite) == bytes, "what is not understood is kept, not lost");
    soll["proxy.dienst"] = wert;
    verlange(json::parse(liesDatei(pfad).value_or("")) == soll, "other keys stay as they are");
}

void berichte(std::string_view bytes) {
    static const Ordner ordner;
    const auto [gespeichertes, rest] = geteilt(std::string(bytes));
    const auto [log, ausgabe] = geteilt(rest);
    const auto speicher = dateiEinstellungen(ordner.lege("/einstellungen.json", gespeichertes));
    const auto von = speicher->tabelle("bericht.stand").value_or(Einstellungen::Tabelle{})["log"];
    const Laeufer werkzeug = [e = Ergebnis{0, alsUtf8(ausgabe), ""}](auto&&...) { return e; };
    Gegenstelle http;
    http.antwort = HttpErgebnis{200, ""};
    Handy handy(http, "");
    Berichte(werkzeug, {ordner.pfad(), ordner.pfad()}, *speicher, {{"log", ordner.lege("/log", log)}})
        .sende(handy, {});
    const auto neu = log.substr(static_cast<std::size_t>(std::clamp<std::int64_t>(von, 0, std::ssize(log))));
    verlange(neu.empty() || http.gesendet[0].koerper.ends_with("\n" + neu), "new lines are sent whole");
    verlangeUtf8(http.gesendet.back().koerper);
}

void befehle(std::string_view bytes) {
    const std::string zeile = alsUtf8(bytes);
    Zustand z;
    z.experte = zeichenzahl(zeile) % 2 != 0;
    z.profil = zeichenzahl(zeile) % 4 < 2 ? "vpn" : "reise";
    z.browserOhne = {{"Chrome", "c", false, "/c"}, {"Edge", "e", false, "/e"}};
    const auto verstanden = verstehe(zeile, inhalt(z, false));
    verlange(verstanden.aktion.has_value() != !verstanden.antwort.empty(), "an action or an answer");
    verlangeUtf8(verstanden.antwort);
    z.handy = z.meldung = zeile;
    z.phase = Phase::proxyFehler(zeile);
    verlangeUtf8(alsText(inhalt(z, false), false));
}

void eingabe(std::string_view bytes) {
    std::string getippt; // the byte 1 stands for what a fuzzer is too slow to type
    for (const char c : bytes)
        getippt += c == 1 ? std::string(30'000, 'x') : std::string(1, c);
    std::string soll; // each line as it was typed, an endless one cut
    for (std::size_t von = 0, ende = 0; von < getippt.size(); von = ende + 1) {
        ende = std::min(getippt.find('\n', von), getippt.size());
        soll += getippt.substr(von, std::min(ende - von, Zeilen::laengste)) + "\n";
    }
    std::string gelesen;
    const auto nimm = [&](const std::string& zeile) { gelesen += zeile + "\n"; };
    Zeilen zeilen;
    // As small as the first byte says, so that reads end in the middle of lines.
    const std::size_t block = getippt.empty() ? 1 : 1 + 16 * static_cast<unsigned char>(getippt.front());
    for (std::size_t i = 0; i < getippt.size(); i += block)
        zeilen.nimm(std::string_view(getippt).substr(i, block), nimm);
    if (const auto rest = zeilen.rest())
        nimm(*rest);
    verlange(gelesen == soll, "every line as it was typed, an endless one cut, none lost");
}

void text(std::string_view bytes) {
    const std::string t = alsUtf8(bytes);
    const std::string gedruckt = json(bytes).dump(-1, ' ', false, json::error_handler_t::replace);
    verlange(json::parse(gedruckt) == t, "repaired as the JSON library repairs it");
    verlange(alsUtf8(t) == t, "what is UTF-8 stays as it is");
    const auto mitte = beschnitten(t);
    verlange(beschnitten(mitte) == mitte && ohneWeissraum(mitte) == ohneWeissraum(t),
             "trimmed of blanks only");
    const std::size_t zeichen = zeichenzahl(t);
    for (const std::size_t n : {std::size_t{0}, zeichen / 2, zeichen, zeichen + 1}) {
        const auto erste = ersteZeichen(t, n);
        verlangeUtf8(erste);
        verlange(t.starts_with(erste) && zeichenzahl(erste) == std::min(n, zeichen), "whole characters");
    }
}

void paket(std::string_view bytes) {
    using namespace volltunnel;
    const std::string vorher(bytes);
    std::string p = vorher;
    auto gelesen = liesPaket(alsBytes(p));
    if (!gelesen)
        return;
    p.resize(gelesen->bytes.size());
    const std::string ganzes = p;
    verlange(gelesen->kopf <= gelesen->last && gelesen->last <= p.size(), "parts lie within the whole");
    if (const auto nein = absage(*gelesen)) {
        std::string n = *nein;
        const auto antwort = liesPaket(alsBytes(n));
        verlange(summenStimmen(n, gelesen->von.address().is_v6() ? 40 : 20),
                 "the answer's checksums are right");
        verlange(!antwort ||
                     (antwort->von == gelesen->nach && antwort->nach == gelesen->von && !absage(*antwort)),
                 "it goes back to the sender and calls for no answer");
    }
    if (gelesen->art != Art::tcp)
        return;
    const bool sechs = gelesen->von.address().is_v6();
    const bool stimmten = summenStimmen(p, gelesen->kopf);
    const Stelle von = gelesen->von;
    const Stelle nach = gelesen->nach;
    schreibeUm(*gelesen, stelle(sechs ? "fd01::2" : "198.19.108.2", 5),
               stelle(sechs ? "fd01::1" : "198.19.108.1", 7));
    verlange(!stimmten || summenStimmen(p, gelesen->kopf), "right checksums stay right");
    schreibeUm(*gelesen, von, nach);
    verlange(!stimmten || p == ganzes, "rewritten there and back it is the same");
}

} // namespace

std::span<const Pruefung> pruefungen() {
    static const std::array alle = std::to_array<Pruefung>({
        {"adb", adb, "List of devices attached\n", "R5CT#  device usb:1-1 model:SM_S911B\n", ""},
        {"antwort", antwort, R"({"app":"mobilsteg","proxy_port":1080,"kabel":{},"status":{"guests":[)",
         R"({"IP":"kabel:Mac","BytesUp":#,"BytesDown":1},)",
         R"({"IP":"","BytesUp":0,"BytesDown":0}],"paths":[]}})"},
        {"austritt", austritt, "", " #", ""},
        {"befehle", befehle, "browser ", "Chrome# ", ""},
        {"berichte", berichte, R"({"bericht.stand":{)", R"("log#":#,)",
         "\"x\":0}}\n====\neine Zeile\n====\ndefault  10.0.0.1\n"},
        {"eingabe", eingabe, "", "befehl #\n", ""},
        {"einstellungen", einstellungen, "{", "\"k#\":{\"a\":#},", R"("experte":true})"},
        {"netzdienste", netzdienste, "  interface: en9\n====\n",
         "(#) LAN #\n(Hardware Port: LAN #, Device: en#)\n\n", ""},
        {"paket", paket, std::string("E\0\xFF\xFF\0\0\0\0@\6\0\0\n\0\0\1\x01\1\1\1", 20), "#", ""},
        {"proxyziel", proxyziel, "Enabled: Yes\n", "Server: 10.0.0.#\n", "Port: 1080\n"},
        {"skriptfehler", skriptfehler, "", "x: execution error: Fehler #. (-#)\n", ""},
        {"skriptquelle", skriptquelle, "", "'Dienst #\\\"", ""},
        {"standdienst", standdienst, "GET / HTTP/1.1\r\n", "X-Kopf-#: wert\r\n", "\r\n"},
        {"text", text, "", " \xC3\xA4\xE2\x82# ", ""},
        {"tunnelbericht", tunnelbericht, R"({"vpns":[)", R"J({"dienst":"VPN # (x)","server":"10.1.2.#"},)J",
         "{}]}"},
        {"verbindungen", verbindungen, "COMMAND PID USER\n",
         "P#\\x20\\x20 1 anna 8u IPv4 0x1 0t0 TCP 10.0.0.1:5->10.0.0.2:# (ESTABLISHED)\n", ""},
        {"vpnliste", vpnliste, "", "* (Connected)  2B1E VPN (x) \"Firma #\"  [VPN:x]\n", ""},
    });
    return alle;
}

} // namespace mobilsteg::fuzz
