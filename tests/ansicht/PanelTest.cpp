// The panel as a window: what stands in it, and what stays while it changes.

#include "ansicht/Inhalt.hpp"
#include "ansicht/qt/Panelfenster.hpp"
#include "ansicht/qt/QtBetrieb.hpp"
#include "ansicht/qt/Text.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"

#include <QAbstractButton>
#include <QCheckBox>
#include <QRegularExpression>
#include <gmock/gmock.h>

#include <cstdlib>
#include <set>

using namespace mobilsteg;

namespace {

Zustand reise() {
    Zustand z;
    z.handy = "Pixel";
    z.gleise = {"WLAN · 42 ms", "Mobilfunk · weg"};
    z.rettung = "1 Funkloch überstanden";
    z.browserOhne = {{"Chrome", "c", false, "/a"}, {"Edge", "e", false, "/b"}};
    return z;
}

Zustand vpn() {
    Zustand z = reise();
    z.profil = "vpn";
    z.vpnsGesichert = {"Firma · 10.1.2.3"};
    z.vpnsOffen = {"Firma · 10.1.2.3", "OpenVPN"};
    z.meldung = "Volltunnel: & <b>kein</b> Markup";
    return z;
}

Zustand experte(Zustand z) {
    z.experte = z.volltunnelAn = true;
    z.durch = z.vorbei = {"Mail (2)"};
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

    /// Everything that stands in the panel, line by line from the left.
    std::string gelesen() {
        auto stuecke = panel.findChildren<QWidget*>();
        const auto ort = [&](QWidget* w) { return w->mapTo(&panel, QPoint()); };
        std::sort(stuecke.begin(), stuecke.end(), [&](auto* a, auto* b) {
            constexpr int einzug = 6; // what stands on one line may begin a little higher
            const QPoint weg = ort(b) - ort(a);
            return std::abs(weg.y()) > einzug ? weg.y() > 0 : weg.x() > 0;
        });
        QString texte;
        for (auto* stueck : stuecke)
            texte += stueck->isVisible() ? gezeigt(stueck) : "";
        return bloss(texte);
    }

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
    for (const auto& z : {Zustand{}, reise(), vpn(), experte(vpn()), experte(reise()), reise(), Zustand{}}) {
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
    zeichne(reise());
    auto* kasten = knopf("schalter.experte");
    auto* gleis = wert("zeile.Gleis 1");
    kasten->setFocus();
    wert("zeile.Handy")->setSelection(0, 3);
    Zustand z = experte(reise());
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
    zeichne(vpn());
    zeichne(reise());
    auto* edge = knopf("browser.Edge");
    Zustand z = experte(reise());
    z.browserOhne = {{"Edge", "e", false, "/b"}, {"Brave", "b", false, "/c"}};
    zeichne(z);
    EXPECT_EQ(knopf("browser.Edge"), edge);
    const std::pair<const char*, Aktion> faelle[] = {
        {"browser.Brave", {Bedienung::browser, "Brave"}},
        {"browser.Edge", {Bedienung::browser, "Edge"}},
        {"knopf.hinweis", {Bedienung::hinweisWeg, ""}},
        {"schalter.automatisch", {Bedienung::automatisch, "aus"}},
        {"knopf.proxy", {Bedienung::proxy, ""}},
        {"schalter.volltunnel", {Bedienung::volltunnel, "aus"}},
        {"schalter.nur-vpn", {Bedienung::nurVPN, "an"}},
        {"schalter.experte", {Bedienung::experte, "aus"}}};
    for (const auto& [schluessel, aktion] : faelle) {
        const bool vorher = knopf(schluessel)->isChecked();
        knopf(schluessel)->click();
        ASSERT_FALSE(getan.empty()) << schluessel;
        EXPECT_EQ(std::exchange(getan, {}), std::vector{aktion}) << schluessel;
        EXPECT_EQ(knopf(schluessel)->isChecked(), vorher) << "the state is shown, not the wish";
    }
    for (auto* profil : panel.findChild<QWidget*>("wahl.profil")->findChildren<QAbstractButton*>())
        profil->click(); // the chosen one does nothing
    EXPECT_EQ(getan, (std::vector<Aktion>{{Bedienung::profil, "vpn"}}));
}

TEST_F(Panel, einGleicherBaumZeichnetNichts) {
    struct Zaehler : QObject {
        int anzahl = 0;
        bool eventFilter(QObject*, QEvent* ereignis) override {
            anzahl += ereignis->type() == QEvent::LayoutRequest ? 1 : 0;
            return false;
        }
    } zaehler;
    const auto neuGeordnet = [&](const Zustand& z) {
        zaehler.anzahl = 0;
        zeichne(z);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        return zaehler.anzahl > 0;
    };
    qApp->installEventFilter(&zaehler);
    EXPECT_TRUE(neuGeordnet(reise()));
    EXPECT_FALSE(neuGeordnet(reise()));
    EXPECT_TRUE(neuGeordnet(vpn()));
}

} // namespace
