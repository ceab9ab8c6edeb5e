// The panel as a window: what stands in it, and what stays while it changes.

#include "ansicht/Inhalt.hpp"
#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Panelfenster.hpp"
#include "ansicht/qt/QtBetrieb.hpp"
#include "ansicht/qt/Text.hpp"
#include "tests/hilfe/Ordner.hpp"

#include <QAbstractButton>
#include <QContextMenuEvent>
#include <QMenu>
#include <gmock/gmock.h>

#include <cmath>
#include <cstdlib>

using namespace mobilsteg;

namespace {

/// Each visible part, in the order of a screen reader: where it lies, its text with the places where a word
/// may break, in brackets what it is called, described and helped with, and its colour if that is not the
/// text's.
std::string abbild(const QWidget& panel) {
    QString alles;
    for (const auto* teil : panel.findChildren<QWidget*>()) {
        if (!teil->isVisible() || !teil->findChildren<QWidget*>().isEmpty())
            continue;
        const QRect ort(teil->mapTo(&panel, QPoint()), teil->size());
        alles += ort.x() == Masse::rand ? "\n" : "  ";
        alles += QString("%1,%2 %3x%4").arg(ort.x()).arg(ort.y()).arg(ort.width()).arg(ort.height());
        const auto* knopf = qobject_cast<const QAbstractButton*>(teil);
        const auto* text = qobject_cast<const QLabel*>(teil);
        alles += text ? " " + text->text() : knopf ? (knopf->isChecked() ? " x" : " " + knopf->text()) : "";
        alles +=
            "(" + teil->accessibleName() + "|" + teil->accessibleDescription() + "|" + teil->toolTip() + ")";
        if (const auto farbe = teil->palette().color(QPalette::WindowText);
            farbe != panel.palette().windowText())
            alles += farbe.name(QColor::HexArgb);
        alles += teil->cursor().shape() == Qt::PointingHandCursor ? "^" : "";
    }
    return alles.replace(QChar(0x200b), "¦").remove("(||)").toStdString();
}

struct Panel : testing::Test {
    Panel() {
        z.handy = "Pixel";
        z.browserOhne = {{"Chrome", "c", false, "/a"}, {"Edge", "e", false, "/b"}};
        QApplication::setStyle("fusion");
        panel.show();
    }

    ~Panel() override { QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); } // no loop runs

    void zeichne(const char* profil, bool experte) {
        z.profil = profil;
        z.experte = z.volltunnelAn = experte;
        panel.zeichne(inhalt(z, false));
    }
    QAbstractButton* knopf(const char* schluessel) {
        return panel.findChild<QWidget*>(schluessel)->findChild<QAbstractButton*>();
    }
    Text* wert(const char* schluessel) {
        return panel.findChild<QWidget*>(schluessel)->findChildren<Text*>().value(1);
    }

    /// Without any font Qt draws squares as large as a letter: the same on each machine.
    static int ohneSchriften() {
        static const Ordner ordner;
        ::setenv("FONTCONFIG_FILE", ordner.lege("/keine", "<fontconfig/>").c_str(), 1);
        return ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    }

    int anzahl = ohneSchriften();
    QtBetrieb qt{anzahl, nullptr};
    std::vector<Aktion> getan;
    Panelfenster panel{[this](const Aktion& a) { getan.push_back(a); }};
    Zustand z;
};

TEST_F(Panel, zeigtJedesElementAnSeinemOrt) {
    if (const QFontMetrics mass(QApplication::font());
        mass.horizontalAdvance('i') != mass.horizontalAdvance('W'))
        GTEST_SKIP() << "fonts that no fontconfig names";
    const auto knopf = [](const char* wert, const char* text, const char* app) {
        return Element{wert, Knopf{{Bedienung::browser, wert}, text, "", app, true}};
    };
    const Knopf weg{{Bedienung::hinweisWeg, ""}, "×", "Weg damit", "", true, Farbe::sekundaer};
    const Satz satz{"Satz", Schrift::kleinste, Farbe::rot, Aktion{Bedienung::protokoll, ""}};
    panel.zeichne({{"titel", Kopf{"Titel", Farbe::gelb}},
                   {"satz", satz},
                   {"strich", Trenner{}},
                   {"zeile", Zeile{"Ort", "Heidelberg_Altstadt am Neckar, in dem Tal"}},
                   {"offen", Symbolzeile{"shield.slash", Farbe::orange, "Firma", "offen"}},
                   {"zu", Symbolzeile{"lock.shield.fill", Farbe::gruen, "Zu", ""}},
                   {"an", Schalter{Bedienung::volltunnel, "Ein langer Schalter", true}},
                   {"proxy", Knopf{{Bedienung::proxy, ""}, "Weg & da", "", ""}},
                   {"wahl", Wahl{Bedienung::profil, "Wahl", {{"reise", "Eins"}, {"vpn", "Zwei"}}, "vpn"}},
                   {"reihe", Reihe{{knopf("A", "In A", "/a"),
                                    knopf("B", "In BBBB", "/b"),
                                    knopf("C", "In C", ""),
                                    knopf("D", "D", ""),
                                    {"weg", weg}}}}});
    QApplication::processEvents();
    EXPECT_EQ(abbild(panel), R"(
12,12 76x15 Titel(Titel||)  309,15 9x9(in Arbeit||)
12,35 306x11 Satz(Satz||)#ffc4211b^
12,54 306x1
12,63 100x13 Ort(Ort||)#9e000000  120,63 198x45 H¦e¦i¦d¦e¦l¦b¦e¦r¦g¦_¦A¦l¦t¦s¦t¦a¦d¦t am Neckar, in dem Tal(Ort|Heidelberg_Altstadt am Neckar, in dem Tal|)
12,116 13x13(Schild, durchgestrichen||)  31,116 66x13 Firma(Firma||)  257,116 61x13 offen(offen||)#ffa84b00
12,137 13x13(Schild mit Schloss||)  31,137 27x13 Zu(Zu||)
12,158 20x15 x(Ein langer Schalter||)  32,158 286x15 Ein langer Schalter(Ein langer Schalter||)^
12,181 144x23 Weg && da(Weg & da||)
12,212 100x15 Wahl(Wahl||)#9e000000  120,212 20x15 (Eins||)  140,212 178x15 Eins(Eins||)^  120,231 20x15 x(Zwei||)  140,231 178x15 Zwei(Zwei||)^
12,254 81x18 In A(In A||)^  101,254 126x18 In BBBB(In BBBB||)^  235,254 60x17 In C(In C||)^
12,280 15x17 D(D||)^  303,254 15x17 ×(Weg damit||Weg damit)^)");
    for (auto* text : panel.findChildren<Text*>()) { // only a value can be copied
        QContextMenuEvent ereignis(QContextMenuEvent::Mouse, QPoint(), QPoint());
        QApplication::sendEvent(text, &ereignis);
        EXPECT_EQ(text->findChild<QMenu*>() != nullptr, text == wert("zeile"));
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
    const auto kanal = [a = farbe.alphaF()](double oben, double unten) {
        return std::pow(a * oben + (1 - a) * unten, 2.2);
    };
    return 0.2126 * kanal(farbe.redF(), grund.redF()) + 0.7152 * kanal(farbe.greenF(), grund.greenF()) +
           0.0722 * kanal(farbe.blueF(), grund.blueF());
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
