// What must hold of every reader of foreign bytes, whatever these are.

#include "tests/fuzz/Pruefungen.hpp"

#include "ansicht/terminal/Eingabe.hpp"
#include "handy/Adb.hpp"
#include "handy/Adbserver.hpp"
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
#include <cstdlib>

#include "volltunnel/Namen.hpp"

namespace mobilsteg::fuzz {

namespace {

using nlohmann::json;

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

/// What is read of the bytes and printed as the tool prints it is read again as the same.
void verlangeRundweg(std::string_view bytes, std::string (*liesUndDrucke)(const std::string&)) {
    const std::string gedruckt = liesUndDrucke(alsUtf8(bytes));
    verlangeUtf8(gedruckt);
    verlange(liesUndDrucke(gedruckt) == gedruckt, "printed and read again it is the same");
}

/// An input for two readers: what stands before and behind the first line of "====".
std::pair<std::string, std::string> geteilt(const std::string& bytes) {
    const auto grenze = std::min(bytes.find("\n====\n"), bytes.size());
    return {bytes.substr(0, grenze), bytes.substr(std::min(grenze + 6, bytes.size()))};
}

// --- what the tools print ---------------------------------------------------------------------------------

void adb(std::string_view bytes) {
    verlangeRundweg(bytes, [](const std::string& liste) {
        std::string gedruckt = "List of devices attached\n";
        for (const auto& geraet : Adb::lies(liste)) {
            verlangeUtf8(geraet.modell);
            gedruckt += geraet.serial + "  " + geraet.zustand + (geraet.amKabel ? " usb:1-1\n" : "\n");
        }
        return gedruckt;
    });
}

void adbserver(std::string_view bytes) {
    Adbmeldungen ganz, einzeln;
    const bool verstanden = ganz.nimm(bytes);
    bool auchEinzeln = true;
    std::optional<std::string> letzte;
    for (std::size_t i = 0; i < bytes.size() && auchEinzeln; ++i) {
        auchEinzeln = einzeln.nimm(bytes.substr(i, 1));
        if (auto neue = einzeln.neueste())
            letzte = std::move(neue);
    }
    verlange(verstanden == auchEinzeln, "understood, however the reads fall");
    verlange(!verstanden || ganz.neueste() == letzte, "the same report, however the reads fall");
}

void netzdienste(std::string_view bytes) {
    const auto [route, liste] = geteilt(alsUtf8(bytes));
    verlangeRundweg(liste, [](const std::string& text) {
        std::string gedruckt;
        for (const auto& [name, eingeschaltet, anschluss] : SystemProxy::liesDienste(text))
            gedruckt += (eingeschaltet ? "(1) " : "(*) ") + name + "\n" + anschluss + "\n";
        return gedruckt;
    });
    const auto schnittstelle = SystemProxy::schnittstelle(route);
    verlangeEinzeilig(schnittstelle.value_or("en0"));
    verlangeEinzeilig(
        SystemProxy::dienstFuer(schnittstelle, SystemProxy::liesDienste(liste)).value_or("Wi-Fi"));
}

void vpnliste(std::string_view bytes) {
    verlangeRundweg(bytes, [](const std::string& liste) {
        std::string gedruckt;
        for (const auto& name : Erhebung::liesDienste(liste, {"Firma 7"}))
            gedruckt += "* (Connected)   2B1E4C5D VPN (x) \"" + name + "\"   [VPN:x]\n";
        return gedruckt;
    });
}

void verbindungen(std::string_view bytes) {
    const std::string lsof = alsUtf8(bytes);
    auto soll = Erhebung::liesVerbindungen(lsof);
    for (auto* liste : {&soll.durch, &soll.vorbei})
        for (auto& eintrag : *liste) { // "name (count)"
            verlangeEinzeilig(eintrag);
            const auto zahl = eintrag.rfind('(') + 1;
            eintrag.replace(zahl, eintrag.npos, std::to_string(2 * std::stol(eintrag.substr(zahl))) + ")");
        }
    verlange(Erhebung::liesVerbindungen(lsof + "\n" + lsof) == soll, "twice the rows, twice the number");
}

void tunnelbericht(std::string_view bytes) {
    const auto bericht = Erhebung::liesTunnelbericht(bytes);
    const auto beginntMit = [](const auto& eintrag, const auto& name) { return eintrag.starts_with(name); };
    verlange(std::ranges::equal(bericht.eintraege, bericht.namen, beginntMit), "an entry for each name");
    verlangeUtf8(verbunden(bericht.eintraege, ""));
}

void skriptfehler(std::string_view bytes) {
    verlangeRundweg(bytes, [](const std::string& ausgabe) {
        const auto fehler = liesSkriptfehler(ausgabe);
        verlangeEinzeilig(fehler.meldung.value_or("keine"));
        const auto nummer = " (" + std::to_string(fehler.nummer) + ")\n";
        return fehler.meldung ? "0:9: execution error: " + *fehler.meldung + nummer : "";
    });
}

void skriptquelle(std::string_view bytes) {
    std::string dienst = alsUtf8(bytes);
    std::erase(dienst, '\''); // the one character that is trusted not to be there
    const auto befehl = tunnelbefehl("/h", "/s", "/p", 1, {dienst, false, true});
    verlange(befehl.find(" '" + dienst + "' ") != befehl.npos,
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
    const auto stand = standDokument({}, gelesen);
    verlange(stand == standDokument({}, Antwort::ausJson(json::parse(bytes).dump(1))),
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
    Klient klient(dienst.port());
    verlange(klient.verbunden, "a connection");
    for (const auto stueck : teile(bytes, '\0'))
        klient.sende(stueck);
    klient.sagtNichtsMehr();
    auto alles = klient.lies();
    klient.reisseAb(); // thousands of lingering connections would use up the ports
    // One that talks on behind a whole request may find the connection closed, but has its answer.
    alles.resize(std::min(alles.rfind("[kein Ende: " + std::to_string(ECONNRESET)), alles.size()));
    // Pieces may arrive together: any beginning of the request may be the one that was answered.
    std::string bisher;
    bool erwartet = teile(bytes, '\0').empty() && alles == Standdienst::antwort("", dokument);
    for (const auto stueck : teile(bytes, '\0'))
        erwartet = alles == Standdienst::antwort(bisher += stueck, dokument) || erwartet;
    verlange(erwartet, "one whole answer");
}

void einstellungen(std::string_view bytes) {
    static const Ordner ordner;
    const std::string pfad = ordner.lege("/einstellungen.json", std::string(bytes));
    const std::string beiseite = pfad + ".defekt";
    std::remove(beiseite.c_str());
    const auto speicher = dateiEinstellungen(pfad);
    const auto profil = speicher->text("profil");
    const auto tabelle = speicher->tabelle("bericht.stand");
    const std::string wert = alsUtf8(bytes.substr(0, 40));
    speicher->setzeText("proxy.dienst", wert);
    const auto danach = dateiEinstellungen(pfad);
    verlange(danach->text("proxy.dienst") == wert && danach->text("profil") == profil &&
                 danach->tabelle("bericht.stand") == tabelle,
             "what is stored is read by the next run");
    if (existiert(beiseite))
        return verlange(liesDatei(beiseite) == bytes, "what is not understood is kept, not lost");
    json soll = json::parse(bytes, nullptr, false);
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

void eingabe(std::string_view bytes) {
    std::string getippt; // the byte 1 stands for what a fuzzer is too slow to type
    for (const char c : bytes)
        getippt += c == 1 ? std::string(30'000, 'x') : std::string(1, c);
    std::string soll, gelesen;
    for (std::size_t von = 0, ende = 0; von < getippt.size(); von = ende + 1) {
        ende = std::min(getippt.find('\n', von), getippt.size());
        soll += getippt.substr(von, std::min(ende - von, Zeilen::laengste)) + "\n";
    }
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
    const auto mitte = beschnitten(t);
    verlange(beschnitten(mitte) == mitte && ohneWeissraum(mitte) == ohneWeissraum(t),
             "trimmed of blanks only");
    const std::size_t zeichen = zeichenzahl(t);
    for (const std::size_t n : {std::size_t{0}, zeichen / 2, zeichen, zeichen + 1}) {
        const auto erste = ersteZeichen(t, n);
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

void namen(std::string_view bytes) {
    using namespace volltunnel;
    if (!istFrage(bytes))
        return;
    const std::size_t hoechstens = hoechstlaenge(bytes);
    verlange(hoechstens >= 512 && hoechstens <= 65'535, "a length that UDP knows");
    const std::string nein = servfail(bytes);
    verlange(!istFrage(nein) && nein.size() <= bytes.size() && nein.substr(0, 2) == bytes.substr(0, 2) &&
                 (nein[3] & 15) == 2,
             "an answer to that question, not longer than it");
    const std::string kurz = gekuerzt(bytes, 20);
    verlange(kurz == bytes ||
                 ((kurz[2] & 2) != 0 && kurz.size() < 12 + 256 + 5 && kurz.size() <= bytes.size()),
             "whole or marked as cut");
}

} // namespace

std::span<const Pruefung> pruefungen() {
    static const std::array alle = std::to_array<Pruefung>({
        {"adb", adb, "List of devices attached\n", "R5CT#  device usb:1-1 model:SM_S911B\n", ""},
        {"adbserver", adbserver, "OKAY", "000AR5CT#\tnew\n", ""},
        {"antwort", antwort, R"({"app":"mobilsteg","proxy_port":1080,"kabel":{},"status":{"guests":[)",
         R"({"IP":"kabel:Mac","BytesUp":#,"BytesDown":1},)",
         R"({"IP":"","BytesUp":0,"BytesDown":0}],"paths":[]}})"},
        {"austritt", austritt, "", " #", ""},
        {"berichte", berichte, R"({"bericht.stand":{)", R"("log#":#,)",
         "\"x\":0}}\n====\neine Zeile\n====\ndefault  10.0.0.1\n"},
        {"eingabe", eingabe, "", "befehl #\n", ""},
        {"einstellungen", einstellungen, "{", "\"#\":true,", R"("experte":true})"},
        {"namen", namen, std::string("\x12\x34\1\0\0\1\0\0\0\0\xFF\xFF\1a\0\0\1\0\1", 19),
         std::string("\0\0\x30\0\1\0\0\0\0\0\0", 11), ""},
        {"netzdienste", netzdienste, "  interface: en9\n====\n",
         "(#) LAN #\n(Hardware Port: LAN #, Device: en#)\n\n", ""},
        {"paket", paket, std::string("E\0\xFF\xFF\0\0\0\0@\6\0\0\n\0\0\1\x01\1\1\1", 20), "#", ""},
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

/// libFuzzer's side: MOBILSTEG_FUZZER names the reader that is to be fuzzed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* daten, std::size_t laenge) {
    const auto eine = std::ranges::find(pruefungen(), std::getenv("MOBILSTEG_FUZZER"), &Pruefung::name);
    verlange(eine != pruefungen().end(), "MOBILSTEG_FUZZER names one of these");
    eine->pruefe({reinterpret_cast<const char*>(daten), laenge}); // an exception ends the run as a find
    return 0;
}

} // namespace mobilsteg::fuzz
