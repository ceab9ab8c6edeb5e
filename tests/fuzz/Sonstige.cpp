// What comes over the wire, from the disk and from the keyboard.

#include "ansicht/Ausfuehrung.hpp"
#include "ansicht/Inhalt.hpp"
#include "ansicht/terminal/Befehle.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"
#include "ansicht/terminal/Zeilen.hpp"
#include "handy/Handy.hpp"
#include "kabel/Anzeige.hpp"
#include "kabel/Berichte.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"
#include "plattform/portabel/DateiEinstellungen.hpp"
#include "standdienst/Standdienst.hpp"
#include "tests/fuzz/Pruefungen.hpp"
#include "tests/hilfe/Gegenstelle.hpp"
#include "tests/hilfe/Klient.hpp"
#include "tests/hilfe/Ordner.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace mobilsteg::fuzz {

using nlohmann::json;

void antwort(std::string_view bytes) {
    const auto gelesen = Antwort::ausJson(bytes);
    if (!gelesen)
        return;
    Anzeige anzeige;
    for (int sekunde = 0; sekunde < 2; ++sekunde)
        if (const auto werte = anzeige.zeige(*gelesen, "Mac", std::chrono::seconds(sekunde)))
            for (const auto& gleis : werte->gleise)
                verlangeUtf8(gleis + werte->menge + werte->rettung);

    const auto neuGeschrieben = Antwort::ausJson(json::parse(bytes).dump(1));
    verlange(neuGeschrieben.has_value(), "white space and order of the keys do not count");
    Standangaben angaben;
    angaben.name = "Mac";
    const auto stand = standDokument(angaben, gelesen);
    verlange(stand == standDokument(angaben, neuGeschrieben), "nor do they for the state document");
    verlange(json::parse(stand).dump(2) == stand, "which is JSON");
}

void austritt(std::string_view bytes) {
    Gegenstelle http;
    http.antwort = HttpErgebnis{200, std::string(bytes)};
    const auto ip = Handy(http, "https://austritt.example/").austrittsIP();
    if (!ip)
        return;
    verlangeEinzeilig(*ip);
    verlange(zeichenzahl(*ip) <= 45 && beschnitten(*ip) == *ip, "as long as an address");
    verlange(std::none_of(ip->begin(), ip->end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }),
             "an address is no second line in the log");
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
    verlange(klient.verbunden, std::strerror(errno));
    for (const auto stueck : stuecke)
        klient.sende(stueck);
    klient.sagtNichtsMehr();
    auto alles = klient.lies();
    klient.reisseAb(); // thousands of lingering connections would use up the ports
    const std::string riss = "[kein Ende: " + std::to_string(ECONNRESET) + "]";
    const bool abgerissen = alles.ends_with(riss);
    if (abgerissen)
        alles.resize(alles.size() - riss.size());
    // Pieces may arrive together, so that any beginning of the request may be the one that was answered. Who
    // goes on behind a whole request finds the connection closed, if slow enough, but has its answer.
    std::string bisher;
    bool erwartet = stuecke.empty() && !abgerissen && alles == Standdienst::antwort("", dokument);
    for (const auto& stueck : stuecke) {
        bisher += stueck;
        const bool ganze = (bisher.starts_with("GET ") || bisher.starts_with("OPTIONS ")) &&
                           bisher.ends_with("\r\n\r\n") && &stueck != &stuecke.back();
        erwartet = erwartet || ((ganze || !abgerissen) && alles == Standdienst::antwort(bisher, dokument));
    }
    verlange(erwartet, "one whole answer");
    const auto leib = alles.find("\r\n\r\n");
    verlange(leib != std::string::npos, "an end of the headers");
    const std::string laenge = "\r\nContent-Length: " + std::to_string(alles.size() - leib - 4) + "\r\n";
    verlange(alles.starts_with("HTTP/1.1 20") && alles.find(laenge) < leib, "its length is what it says");
}

void einstellungen(std::string_view bytes) {
    static const Ordner ordner;
    const std::string pfad = ordner.lege("/einstellungen.json", std::string(bytes));
    const std::string beiseite = pfad + ".defekt";
    std::remove(beiseite.c_str());
    const json vorher = json::parse(bytes, nullptr, false);
    const std::string wert = alsUtf8(bytes.substr(0, 40));

    DateiEinstellungen e(pfad);
    const auto gelesen = e.text("profil");
    verlange(!gelesen || vorher["profil"] == *gelesen, "a text that stands there");
    const auto stand = e.tabelle("bericht.stand");
    verlange(!stand || vorher["bericht.stand"] == json(*stand), "a table that stands there");
    verlange(!e.flagge("experte") || vorher["experte"].is_boolean(), "a switch that stands there");
    e.setzeText("proxy.dienst", wert);
    e.setzeFlagge("experte", true);
    const auto id = e.textOderNeu("id", wert);

    const DateiEinstellungen danach(pfad);
    verlange(danach.text("proxy.dienst") == wert && danach.flagge("experte") == true &&
                 danach.text("id") == id && danach.text("profil") == gelesen &&
                 danach.tabelle("bericht.stand") == stand,
             "what is stored is read by the next run");
    if (existiert(beiseite)) {
        verlange(liesDatei(beiseite) == bytes, "what is not understood is kept, not lost");
        return;
    }
    verlange(vorher.is_object(), "only settings are built upon");
    json soll = vorher;
    soll.update(json{{"proxy.dienst", wert}, {"experte", true}, {"id", id}});
    verlange(json::parse(liesDatei(pfad).value_or("")) == soll, "other keys stay as they are");
}

void berichte(std::string_view bytes) {
    static const Ordner ordner;
    const auto stuecke = abschnitte(bytes, 3);
    const std::string stand = ordner.lege("/einstellungen.json", stuecke[0]);
    const std::string& log = stuecke[1];
    std::remove((stand + ".defekt").c_str());
    DateiEinstellungen einstellungen(stand);
    auto soll = einstellungen.tabelle("bericht.stand").value_or(Einstellungen::Tabelle{});
    const std::string ausgabe = alsUtf8(stuecke[2]);
    const Laeufer werkzeug = [&](const auto&, const auto&, double) { return Ergebnis{0, ausgabe, ""}; };
    Berichte berichte(werkzeug, {ordner.pfad(), ordner.pfad()}, einstellungen,
                      {{"log", ordner.lege("/log", log)}});
    Gegenstelle http;
    http.antwort = HttpErgebnis{200, ""};
    Handy handy(http, "");
    berichte.sende(handy, {});
    berichte.sende(handy, {});

    const auto treffer = soll.find("log");
    const std::int64_t von = std::max<std::int64_t>(0, treffer == soll.end() ? 0 : treffer->second);
    const bool neues = von < std::ssize(log);
    verlange(http.gesendet.size() == (neues ? 3U : 2U), "new lines are sent, once");
    if (neues) {
        const std::string& daten = http.gesendet[0].koerper;
        verlange(daten.starts_with("# log ab Byte " + std::to_string(von) + ","),
                 "they say where they begin");
        verlange(daten.ends_with("\n" + log.substr(static_cast<std::size_t>(von))), "and are whole");
        soll["log"] = std::ssize(log);
    }
    verlange(einstellungen.tabelle("bericht.stand") == soll, "what was sent is remembered, for each file");
    const std::string& diagnose = http.gesendet.back().koerper;
    verlangeUtf8(diagnose);
    const auto zeilen =
        std::count(diagnose.begin(), diagnose.end(), '\n') - std::count(ausgabe.begin(), ausgabe.end(), '\n');
    verlange(zeilen <= 60, "of a long output it takes an extract"); // only the route's is sent whole
}

void befehle(std::string_view bytes) {
    const std::string zeile = alsUtf8(bytes);
    const auto bit = [&](unsigned n) { return (zeichenzahl(zeile) >> n & 1U) != 0; };
    Zustand z;
    z.experte = bit(0);
    z.profil = bit(1) ? "vpn" : "reise";
    z.browserOhne = {{"Chrome", "c", false, "/c"}, {"Edge", "e", false, "/e"}};
    z.handy = z.meldung = zeile;
    z.phase = Phase::proxyFehler(zeile);
    const Baum baum = inhalt(z, false);
    const auto liste = angebote(baum);
    std::size_t zeilen = 1 + liste.size(); // the rule and the commands
    for (const auto& element : baum) {
        const auto* wahl = std::get_if<Wahl>(&element);
        zeilen += wahl == nullptr ? 1 : 1 + wahl->moeglichkeiten.size();
    }
    const std::string tafel = alsText(baum, false);
    verlangeUtf8(tafel);
    verlange(std::count(tafel.begin(), tafel.end(), '\n') == static_cast<std::ptrdiff_t>(zeilen),
             "a foreign text stays in its line");

    const auto verstanden = verstehe(zeile, baum);
    verlange(verstanden.aktion.has_value() == verstanden.antwort.empty(), "an action or an answer");
    verlangeUtf8(verstanden.antwort);
    verlange(!verstanden.aktion || std::any_of(liste.begin(), liste.end(),
                                               [&](const auto& a) { return a.aktion == *verstanden.aktion; }),
             "only what the panel shows");
    for (const auto& a : liste)
        verlange(verstehe(befehl(a.aktion), baum).aktion == a.aktion, "what is offered is understood");
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
        verlange(anfang < getippt.size(), "no line that was not typed");
        const auto ende = std::min(getippt.find('\n', anfang), getippt.size());
        verlange(zeile == getippt.substr(anfang, std::min(ende - anfang, Zeilen::laengste)),
                 "every line as it was typed, an endless one cut");
        anfang = ende + 1;
    }
    verlange(anfang >= getippt.size(), "no line is lost");
}

void text(std::string_view bytes) {
    const std::string t = alsUtf8(bytes);
    verlange(t == utf8NachFremderLesart(bytes), "repaired as others repair it");
    verlange(alsUtf8(t) == t, "what is UTF-8 stays as it is");
    const auto mitte = beschnitten(t);
    verlange(beschnitten(mitte) == mitte && ohneWeissraum(mitte) == ohneWeissraum(t),
             "trimmed of blanks only");
    verlangeUtf8(mitte);
    verlangeUtf8(ohneWeissraum(t));
    verlange(beschnitten(ohneWeissraum(t)) == ohneWeissraum(t), "no white space is left");
    const std::size_t zeichen = zeichenzahl(t);
    for (const std::size_t n : {std::size_t{0}, zeichen / 2, zeichen, zeichen + 1}) {
        const auto erste = ersteZeichen(t, n);
        verlangeUtf8(erste);
        verlange(t.starts_with(erste) && zeichenzahl(erste) == std::min(n, zeichen), "whole characters");
    }
    const auto stuecke = teile(t, ' ');
    const std::vector<std::string> worte(stuecke.begin(), stuecke.end());
    verlange(std::find(worte.begin(), worte.end(), "") == worte.end(), "no empty word");
    const std::string neu = verbunden(worte, " ");
    verlange(teile(neu, ' ').size() == worte.size() &&
                 std::count(t.begin(), t.end(), ' ') + static_cast<std::ptrdiff_t>(neu.size()) ==
                     std::count(neu.begin(), neu.end(), ' ') + static_cast<std::ptrdiff_t>(t.size()),
             "nothing but the separators goes");
}

} // namespace mobilsteg::fuzz
