// Both renderers show the same tree: the same things in the same order, read back from what they really draw.

#include "ansicht/Inhalt.hpp"
#include "ansicht/qt/Panelfenster.hpp"
#include "ansicht/qt/QtBetrieb.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"
#include "plattform/Text.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace mobilsteg;

namespace {

/// What a renderer must show of an element, each piece a list of texts that stand on one line.
struct Erwartung {
    std::vector<std::vector<std::string>> zeilen;

    void operator()(const Kopf& k) { zeilen.push_back({k.titel}); }
    void operator()(const Satz& s) { zeilen.push_back({s.text}); }
    void operator()(const Trenner&) {}
    void operator()(const Zeile& z) { zeilen.push_back({z.bezeichnung, z.wert}); }
    void operator()(const Symbolzeile& s) {
        zeilen.push_back(s.zusatz.empty() ? std::vector{s.text} : std::vector{s.text, s.zusatz});
    }
    void operator()(const Schalter& s) { zeilen.push_back({(s.an ? "[x] " : "[ ] ") + s.text}); }
    void operator()(const Knopf& k) { zeilen.push_back({k.text}); }
    void operator()(const Wahl& w) {
        zeilen.push_back({w.bezeichnung});
        for (const auto& m : w.moeglichkeiten)
            zeilen.push_back({(m.wert == w.gewaehlt ? "(•) " : "( ) ") + m.text});
    }
    void operator()(const Reihe& r) {
        for (const auto& teil : r.teile)
            std::visit(*this, teil);
    }
};

std::vector<Zustand> zustaende() {
    Zustand reise;
    reise.phase = Phase::Art::faehrt;
    reise.gleise = {"WLAN · 42 ms", "Mobilfunk · weg"};
    reise.rettung = "1 Funkloch überstanden · 0 Verbindungen gerettet";
    reise.browserOhne = {{"Chrome", "c", false, "/a"}, {"Edge", "e", false, "/b"}};
    Zustand vpn = reise;
    vpn.profil = "vpn";
    vpn.vpnsGesichert = {"Firma · 10.1.2.3"};
    vpn.vpnsOffen = {"OpenVPN"};
    vpn.meldung = "Volltunnel: & <b>kein</b> Markup";
    Zustand experte = vpn;
    experte.experte = experte.volltunnelAn = true;
    experte.durch = {"Safari (3)"};
    experte.vorbei = {"Mail (2)"};
    return {Zustand{}, reise, vpn, experte, reise, Zustand{}};
}

TEST(BeideZeichner, zeigenDasselbeInDerselbenFolge) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    int anzahl = 1;
    char name[] = "test";
    char* worte[] = {name, nullptr};
    QtBetrieb qt(anzahl, worte);
    Panelfenster fenster([](const Aktion&) {});
    for (const auto& zustand : zustaende()) { // one window through all of them: it changes in place
        const Baum baum = inhalt(zustand, false);
        Erwartung erwartung;
        for (const auto& element : baum)
            std::visit(erwartung, element);

        fenster.zeichne(baum);
        std::vector<std::string> soll;
        for (const auto& zeile : erwartung.zeilen)
            soll.push_back(verbunden(zeile, "\t"));
        EXPECT_EQ(fenster.texte(), soll);

        const std::string gedruckt = alsText(baum, false);
        std::size_t stelle = 0;
        for (const auto& zeile : erwartung.zeilen) {
            for (const auto& stueck : zeile) {
                const auto naechste = gedruckt.find(stueck, stelle);
                ASSERT_NE(naechste, std::string::npos) << stueck << " fehlt oder steht zu früh in\n"
                                                       << gedruckt;
                stelle = naechste + stueck.size();
            }
        }
    }
}

} // namespace
