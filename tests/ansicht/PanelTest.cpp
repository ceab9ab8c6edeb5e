// The panel as a window: what stands in it, and what stays while it changes.

#include "ansicht/Inhalt.hpp"
#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Panelfenster.hpp"
#include "ansicht/qt/QtBetrieb.hpp"
#include "ansicht/qt/Text.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"

#include <QAbstractButton>
#include <QRegularExpression>
#include <QVBoxLayout>
#include <gmock/gmock.h>

#include <cmath>
#include <cstdlib>

using namespace mobilsteg;

namespace {

/// The text without blanks and without what only one of the renderers draws; what is chosen has an x.
std::string bloss(QString text) {
    static const QRegularExpression zutat("[\\s●○✓─·:()\\[\\]]");
    return text.replace("•", "x").remove(zutat).toStdString();
}

QString gezeigt(QWidget* w) {
    if (const auto* text = dynamic_cast<Text*>(w))
        return text->inhalt();
    const auto* knopf = qobject_cast<QAbstractButton*>(w);
    return knopf == nullptr ? "" : knopf->isChecked() ? "x" : knopf->text();
}

struct Panel : testing::Test {
    Panel() {
        z.handy = "Pixel";
        z.gleise = {"WLAN · 42 ms", "Mobilfunk · weg"};
        z.rettung = "1 Funkloch überstanden";
        z.browserOhne = {{"Chrome", "c", false, "/a"}, {"Edge", "e", false, "/b"}};
        z.vpnsGesichert = {"Firma · 10.1.2.3"};
        z.vpnsOffen = {"Firma · 10.1.2.3", "OpenVPN"};
        z.durch = z.vorbei = {"Mail (2)"};
        z.meldung = "Volltunnel: & <b>kein</b> Markup";
        panel.show();
    }

    Baum zeichne(const char* profil, bool experte) {
        z.profil = profil;
        z.experte = z.volltunnelAn = experte;
        panel.zeichne(inhalt(z, false));
        return inhalt(z, false);
    }
    QAbstractButton* knopf(const char* schluessel) {
        return panel.findChild<QWidget*>(schluessel)->findChild<QAbstractButton*>();
    }
    Text* wert(const char* schluessel) {
        return panel.findChild<QWidget*>(schluessel)->findChildren<Text*>().value(1);
    }

    int anzahl = ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QtBetrieb qt{anzahl, nullptr};
    std::vector<Aktion> getan;
    Panelfenster panel{[this](const Aktion& a) { getan.push_back(a); }};
    Zustand z;
};

// One window through all of them, so that it changes in place. Nothing lies over anything else, or in the
// edges.
TEST_F(Panel, zeigtJedenBaumWieDasTerminal) {
    const std::pair<const char*, bool> faelle[] = {
        {"reise", false}, {"vpn", false}, {"vpn", true}, {"reise", true}, {"reise", false}};
    for (const auto& [profil, experte] : faelle) {
        const Baum baum = zeichne(profil, experte);
        QApplication::processEvents();
        QString gelesen;
        QRegion belegt;
        const auto* stapel = panel.findChild<QVBoxLayout*>();
        for (int i = 0; i < stapel->count(); ++i)
            for (auto* stueck : stapel->itemAt(i)->widget()->findChildren<QWidget*>()) {
                const QString text = stueck->isVisible() ? gezeigt(stueck) : "";
                gelesen += text;
                if (text.isEmpty())
                    continue;
                const QRect ort(stueck->mapTo(stapel->parentWidget(), QPoint()), stueck->size());
                EXPECT_TRUE(stapel->contentsRect().contains(ort) && !belegt.intersects(ort))
                    << text.toStdString();
                belegt += ort;
            }
        const std::string gedruckt = alsText(baum);
        EXPECT_EQ(bloss(gelesen), bloss(QString::fromStdString(gedruckt.substr(0, gedruckt.find("\n>")))));
    }
}

TEST_F(Panel, einAnderesBildLaesstFokusUndAuswahlStehen) {
    zeichne("reise", false);
    auto* kasten = knopf("schalter.experte");
    kasten->setFocus();
    wert("zeile.Handy")->setSelection(0, 3);
    zeichne("reise", true);
    EXPECT_EQ(wert("zeile.Handy")->selectedText(), "Pix");
    EXPECT_EQ(panel.focusWidget(), kasten);
}

// What is around a control comes and goes; the control stays what it is.
TEST_F(Panel, jedesBedienelementBleibtWasEsIst) {
    zeichne("vpn", false);
    zeichne("reise", false);
    auto* edge = knopf("browser.Edge");
    z.browserOhne = {{"Edge", "e", false, "/b"}, {"Brave", "b", false, "/c"}};
    zeichne("reise", true);
    EXPECT_EQ(knopf("browser.Edge"), edge);
    const std::pair<const char*, Aktion> faelle[] = {{"browser.Brave", {Bedienung::browser, "Brave"}},
                                                     {"browser.Edge", {Bedienung::browser, "Edge"}},
                                                     {"knopf.hinweis", {Bedienung::hinweisWeg, ""}},
                                                     {"schalter.volltunnel", {Bedienung::volltunnel, "aus"}},
                                                     {"schalter.nur-vpn", {Bedienung::nurVPN, "an"}}};
    for (const auto& [schluessel, aktion] : faelle) {
        const bool vorher = knopf(schluessel)->isChecked();
        knopf(schluessel)->click();
        EXPECT_EQ(std::exchange(getan, {}), std::vector{aktion}) << schluessel;
        EXPECT_EQ(knopf(schluessel)->isChecked(), vorher) << "the state is shown, not the wish";
    }
    for (auto* profil : panel.findChild<QWidget*>("wahl.profil")->findChildren<QAbstractButton*>())
        profil->click(); // the chosen one does nothing
    EXPECT_EQ(getan, (std::vector<Aktion>{{Bedienung::profil, "vpn"}}));
}

/// About as WCAG counts it, with what the colour lets through mixed in.
double helligkeit(const QColor& farbe, const QColor& grund) {
    double summe = 0;
    for (const auto& [oben, unten, gewicht] : {std::tuple{farbe.redF(), grund.redF(), 0.2126},
                                               {farbe.greenF(), grund.greenF(), 0.7152},
                                               {farbe.blueF(), grund.blueF(), 0.0722}})
        summe += gewicht * std::pow(farbe.alphaF() * oben + (1 - farbe.alphaF()) * unten, 2.2);
    return summe;
}

TEST(Gestalt, jedeFarbeIstAufHellenUndDunklenFensternZuLesen) {
    for (const QRgb rgb : {0xffffffU, 0xecececU, 0x323232U, 0x1e1e1eU}) {
        const QColor grund(rgb);
        const QPalette palette(grund, grund);
        const auto kontrast = [&grund](const QColor& farbe) {
            const auto [dunkler, heller] = std::minmax({helligkeit(farbe, grund), helligkeit(grund, grund)});
            return (heller + 0.05) / (dunkler + 0.05);
        };
        EXPECT_GE(kontrast(akzent(palette)), 4.5);
        for (const auto farbe :
             {Farbe::normal, Farbe::sekundaer, Farbe::gruen, Farbe::gelb, Farbe::rot, Farbe::orange}) {
            const QColor text = ton(farbe, palette);
            EXPECT_GE(kontrast(text), 4.5) << static_cast<int>(farbe);
            EXPECT_GE(helligkeit(leuchtton(farbe, palette), grund), helligkeit(text, grund)) << "areas shine";
        }
    }
}

} // namespace
