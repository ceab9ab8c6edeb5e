// What comes over the wire, from the disk and from the keyboard.

#include "ansicht/Inhalt.hpp"
#include "ansicht/terminal/Befehle.hpp"
#include "ansicht/terminal/Eingabe.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"
#include "kabel/Anzeige.hpp"
#include "kabel/Berichte.hpp"
#include "kabel/Stand.hpp"
#include "plattform/Adapter.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"
#include "standdienst/Standdienst.hpp"
#include "tests/fuzz/Pruefungen.hpp"
#include "tests/hilfe/Gegenstelle.hpp"
#include "tests/hilfe/Klient.hpp"
#include "tests/hilfe/Ordner.hpp"

#include <cerrno>

namespace mobilsteg::fuzz {

using nlohmann::json;

void antwort(std::string_view bytes) {
    const auto gelesen = Antwort::ausJson(bytes);
    if (!gelesen)
        return;
    if (const auto werte = Anzeige().zeige(*gelesen, "Mac", std::chrono::seconds(1)))
        for (const auto& gleis : werte->gleise)
            verlangeUtf8(gleis + werte->menge + werte->rettung);
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
    if (!ip)
        return;
    verlangeEinzeilig(*ip);
    const auto steuert = [](unsigned char c) { return c < 0x20 || c == 0x7F; };
    verlange(zeichenzahl(*ip) <= 45 && std::ranges::none_of(*ip, steuert),
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
    const auto riss = alles.rfind("[kein Ende: " + std::to_string(ECONNRESET));
    const bool abgerissen = riss != std::string::npos;
    alles.resize(std::min(riss, alles.size()));
    // Pieces may arrive together: any beginning of the request may be the one that was answered. A client
    // that goes on behind a whole request may find the connection closed, but has its answer.
    std::string bisher;
    bool erwartet = stuecke.empty() && !abgerissen && alles == Standdienst::antwort("", dokument);
    for (const auto& stueck : stuecke) {
        bisher += stueck;
        const bool ganze = (bisher.starts_with("GET ") || bisher.starts_with("OPTIONS ")) &&
                           bisher.ends_with("\r\n\r\n") && &stueck != &stuecke.back();
        erwartet = erwartet || ((ganze || !abgerissen) && alles == Standdienst::antwort(bisher, dokument));
    }
    verlange(erwartet, "one whole answer");
}

void einstellungen(std::string_view bytes) {
    static const Ordner ordner;
    const std::string pfad = ordner.lege("/einstellungen.json", std::string(bytes));
    const std::string beiseite = pfad + ".defekt";
    std::remove(beiseite.c_str());
    json soll = json::parse(bytes, nullptr, false);
    const std::string wert = alsUtf8(bytes.substr(0, 40));

    const auto speicher = dateiEinstellungen(pfad);
    Einstellungen& e = *speicher;
    const auto gelesen = e.text("profil");
    verlange(!gelesen || soll["profil"] == *gelesen, "a text that stands there");
    const auto stand = e.tabelle("bericht.stand");
    verlange(!stand || soll["bericht.stand"] == json(*stand), "a table that stands there");
    e.setzeText("proxy.dienst", wert);

    const auto danach = dateiEinstellungen(pfad);
    verlange(danach->text("proxy.dienst") == wert && danach->text("profil") == gelesen &&
                 danach->tabelle("bericht.stand") == stand,
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
    const std::string stand = ordner.lege("/einstellungen.json", gespeichertes);
    std::remove((stand + ".defekt").c_str());
    const auto speicher = dateiEinstellungen(stand);
    Einstellungen& einstellungen = *speicher;
    auto vorher = einstellungen.tabelle("bericht.stand").value_or(Einstellungen::Tabelle{});
    const Ergebnis ergebnis{0, alsUtf8(ausgabe), ""};
    const Laeufer werkzeug = [&](const auto&, const auto&, double) { return ergebnis; };
    Berichte berichte(werkzeug, {ordner.pfad(), ordner.pfad()}, einstellungen,
                      {{"log", ordner.lege("/log", log)}});
    Gegenstelle http;
    http.antwort = HttpErgebnis{200, ""};
    Handy handy(http, "");
    berichte.sende(handy, {});

    const auto von = std::max<std::int64_t>(0, vorher["log"]);
    verlange(von >= std::ssize(log) ||
                 http.gesendet[0].koerper.ends_with("\n" + log.substr(static_cast<std::size_t>(von))),
             "new lines are sent whole");
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
    std::vector<std::string> gelesen;
    const auto nimm = [&](std::string zeile) { gelesen.push_back(std::move(zeile)); };
    Zeilen zeilen;
    // As small as the first byte says, so that reads end in the middle of lines.
    const std::size_t block = getippt.empty() ? 1 : 1 + 16 * static_cast<unsigned char>(getippt.front());
    for (std::size_t i = 0; i < getippt.size(); i += block)
        zeilen.nimm(std::string_view(getippt).substr(i, block), nimm);
    if (auto rest = zeilen.rest())
        nimm(std::move(*rest));
    std::size_t anfang = 0;
    for (const auto& zeile : gelesen) {
        const auto ende = std::min(getippt.find('\n', anfang), getippt.size());
        verlange(anfang < getippt.size() &&
                     zeile == getippt.substr(anfang, std::min(ende - anfang, Zeilen::laengste)),
                 "every line as it was typed, an endless one cut");
        anfang = ende + 1;
    }
    verlange(anfang >= getippt.size(), "no line is lost");
}

void text(std::string_view bytes) {
    const std::string t = alsUtf8(bytes);
    const std::string gedruckt = json(bytes).dump(-1, ' ', false, json::error_handler_t::replace);
    verlange(t == json::parse(gedruckt).get<std::string>(), "repaired as the JSON library repairs it");
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

} // namespace mobilsteg::fuzz
