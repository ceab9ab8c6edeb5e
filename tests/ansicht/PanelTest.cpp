// The panel as a window: what stands in it, and what stays while it changes.

#include "ansicht/Inhalt.hpp"
#include "ansicht/qt/Panelfenster.hpp"
#include "ansicht/qt/QtBetrieb.hpp"
#include "ansicht/qt/Text.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"

#include <QAbstractButton>
#include <QCheckBox>
#include <QRegularExpression>
#include <QVBoxLayout>
#include <gmock/gmock.h>

#include <cstdlib>
#include <set>

using namespace mobilsteg;

namespace {

Zustand zustand(const char* profil, bool experte) {
    Zustand z;
    z.profil = profil;
    z.experte = z.volltunnelAn = experte;
    z.handy = "Pixel";
    z.gleise = {"WLAN · 42 ms", "Mobilfunk · weg"};
    z.rettung = "1 Funkloch überstanden";
    z.browserOhne = {{"Chrome", "c", false, "/a"}, {"Edge", "e", false, "/b"}};
    z.vpnsGesichert = {"Firma · 10.1.2.3"};
    z.vpnsOffen = {"Firma · 10.1.2.3", "OpenVPN"};
    z.durch = z.vorbei = {"Mail (2)"};
    z.meldung = "Volltunnel: & <b>kein</b> Markup";
    return z;
}

/// The text without blanks and without what only one of the renderers draws.
std::string bloss(QString text) {
    static const QRegularExpression zutat("[\\s●○✓─·:]");
    return text.remove(zutat).toStdString();
}

/// What the widget shows, as the terminal writes it.
QString gezeigt(QWidget* w) {
    if (const auto* text = dynamic_cast<Text*>(w))
        return text->inhalt();
    const auto* knopf = qobject_cast<QAbstractButton*>(w);
    if (knopf == nullptr || !knopf->isCheckable())
        return knopf == nullptr ? "" : "[" + knopf->text() + "]";
    if (qobject_cast<QCheckBox*>(w) != nullptr)
        return knopf->isChecked() ? "[x]" : "[]";
    return knopf->isChecked() ? "(•)" : "()";
}

class Panel : public testing::Test {
protected:
    void zeichne(const Zustand& z) { panel.zeichne(inhalt(z, false)); }

    QAbstractButton* knopf(const char* schluessel) {
        return panel.findChild<QWidget*>(schluessel)->findChild<QAbstractButton*>();
    }
    Text* wert(const char* schluessel) {
        return panel.findChild<QWidget*>(schluessel)->findChildren<Text*>().value(1);
    }

    /// Everything that stands in the panel, line by line.
    std::string gelesen() {
        QString texte;
        const auto* stapel = panel.findChild<QVBoxLayout*>();
        for (int i = 0; i < stapel->count(); ++i)
            for (auto* stueck : stapel->itemAt(i)->widget()->findChildren<QWidget*>())
                texte += stueck->isVisible() ? gezeigt(stueck) : "";
        return bloss(texte);
    }

    const Zustand reise = zustand("reise", false), vpn = zustand("vpn", false);
    const Zustand reiseExperte = zustand("reise", true), vpnExperte = zustand("vpn", true);
    int anzahl = ::setenv("QT_QPA_PLATFORM", "offscreen", 1) + 1;
    char name[5] = "test";
    char* worte[2] = {name, nullptr};
    QtBetrieb qt{anzahl, worte};
    std::vector<Aktion> getan;
    Panelfenster panel{[this](const Aktion& a) { getan.push_back(a); }};
};

// One window through all of them, so that it changes in place.
TEST_F(Panel, zeigtJedenBaumWieDasTerminal) {
    panel.show();
    for (const auto& z : {Zustand{}, reise, vpn, vpnExperte, reiseExperte, reise, Zustand{}}) {
        const Baum baum = inhalt(z, false);
        panel.zeichne(baum);
        QApplication::processEvents();
        const std::string gedruckt = alsText(baum, false);
        EXPECT_EQ(gelesen(), bloss(QString::fromStdString(gedruckt.substr(0, gedruckt.find("\n>")))));
        std::set<std::string> schluessel;
        for (const auto& element : baum)
            EXPECT_TRUE(schluessel.insert(element.schluessel).second) << element.schluessel << " zweimal";
    }
}

TEST_F(Panel, einNeuerWertLaesstFokusUndAuswahlStehen) {
    panel.show();
    zeichne(reise);
    auto* kasten = knopf("schalter.experte");
    auto* gleis = wert("zeile.Gleis 1");
    kasten->setFocus();
    wert("zeile.Handy")->setSelection(0, 3);
    Zustand z = reiseExperte;
    z.gleise = {"WLAN · 99 ms"};
    zeichne(z);
    EXPECT_EQ(wert("zeile.Gleis 1"), gleis);
    EXPECT_EQ(gleis->inhalt(), "WLAN · 99 ms");
    EXPECT_EQ(panel.findChild<QWidget*>("zeile.Gleis 2"), nullptr);
    EXPECT_EQ(wert("zeile.Handy")->selectedText(), "Pix");
    EXPECT_EQ(panel.focusWidget(), kasten);
    EXPECT_TRUE(kasten->isChecked());
}

// What is around a control comes and goes; the control stays what it is.
TEST_F(Panel, jedesBedienelementBleibtWasEsIst) {
    zeichne(vpn);
    zeichne(reise);
    auto* edge = knopf("browser.Edge");
    Zustand z = reiseExperte;
    z.browserOhne = {{"Edge", "e", false, "/b"}, {"Brave", "b", false, "/c"}};
    zeichne(z);
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

} // namespace
