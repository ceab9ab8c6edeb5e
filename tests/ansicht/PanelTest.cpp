// The panel as a window: what stands in it, and what stays while it changes.

#include "ansicht/Inhalt.hpp"
#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Menueleistenstueck.hpp"
#include "ansicht/qt/QtBetrieb.hpp"
#include "ansicht/qt/Symbole.hpp"
#include "ansicht/qt/Text.hpp"
#include "tests/ansicht/Muster.hpp"
#include "tests/hilfe/Ordner.hpp"

#include <QAbstractButton>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QScrollArea>
#include <QScrollBar>
#include <QSystemTrayIcon>
#include <QTimer>
#include <gmock/gmock.h>

#include <cmath>
#include <cstdlib>

using namespace mobilsteg;

namespace {

/// Each visible part, in the order of a screen reader: where it lies, its text with the places where a word
/// may break, in brackets what it is called, described and helped with, its colour if that is not the text's,
/// and whether it is bold.
std::string abbild(const QWidget& panel) {
    QString alles;
    for (const auto* teil : panel.findChildren<QWidget*>()) {
        if (!teil->isVisible() ||
            (!teil->findChildren<QWidget*>().isEmpty() && teil->accessibleName().isEmpty()))
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
        alles += text && text->font().bold() ? "!" : "";
    }
    return alles.replace(QChar(0x200b), "¦").remove("(||)").toStdString();
}

/// How many pixels of each row and of each column are drawn on, in base 36, and their colours' mean.
std::string abdruck(const QImage& bild, const QRect& ort) {
    std::string zeilen(static_cast<std::size_t>(ort.height()), '0'),
        spalten(static_cast<std::size_t>(ort.width()), '0');
    int summe[4] = {}, anzahl = 0;
    const auto zaehle = [](char& ziffer) { ziffer = ziffer == '9' ? 'a' : static_cast<char>(ziffer + 1); };
    for (int y = 0; y < ort.height(); ++y)
        for (int x = 0; x < ort.width(); ++x) {
            const QRgb farbe = bild.pixel(ort.topLeft() + QPoint(x, y)), grund = bild.pixel(1, 1);
            if (std::abs(qGray(farbe) - qGray(grund)) + std::abs(qAlpha(farbe) - qAlpha(grund)) < 24)
                continue;
            ++anzahl;
            for (int k = 0; k < 4; ++k)
                summe[k] += static_cast<int>(farbe >> 8 * k & 0xff);
            zaehle(zeilen[static_cast<std::size_t>(y)]);
            zaehle(spalten[static_cast<std::size_t>(x)]);
        }
    if (anzahl == 0)
        return "leer";
    for (int k = 3; k >= 0; --k)
        spalten += " " + std::to_string(summe[k] / anzahl);
    return zeilen + " " + spalten;
}

struct Panel : testing::Test {
    Panel() {
        z.handy = "Pixel";
        z.gleise = {"WLAN · 42 ms", "Mobilfunk · weg"};
        z.rettung = "1 Funkloch überstanden";
        z.vpnsGesichert = {"Firma · 10.1.2.3"};
        z.vpnsOffen = {"Firma · 10.1.2.3", "OpenVPN"};
        z.durch = z.vorbei = {"Mail (2)"};
        z.meldung = "Volltunnel: & <b>kein</b> Markup";
        z.browserOhne = {{"Chrome", "c", false, "/a"}, {"Edge", "e", false, "/b"}};
        QApplication::setStyle("fusion");
        panel.show();
    }

    ~Panel() override { QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); } // no loop runs

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

    static bool fremdeSchriften() {
        const QFontMetrics mass(QApplication::font());
        return mass.horizontalAdvance('i') != mass.horizontalAdvance('W');
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

TEST_F(Panel, zeigtJedesElementAnSeinemOrtUndMeldetSeinenKlick) {
    if (fremdeSchriften())
        GTEST_SKIP() << "fonts that no fontconfig names";
    panel.zeichne(muster());
    QApplication::processEvents();
    EXPECT_EQ(abbild(panel), R"(
12,12 76x15 Titel(Titel||)!  309,15 9x9(in Arbeit||)
12,35 306x11 Satz & <b>(Satz & <b>||)#ffc4211b^
12,54 306x1
12,63 100x45 Ort(Ort||)#9e000000  120,63 198x45 H¦e¦i¦d¦e¦l¦b¦e¦r¦g¦_¦A¦l¦t¦s¦t¦a¦d¦t am Neckar, in dem Tal(Ort|Heidelberg_Altstadt am Neckar, in dem Tal|)
12,116 13x13(Schild, durchgestrichen||)  31,116 105x28 Firma in Bonn(Firma in Bonn||)  142,116 176x28 noch nicht gesichert(noch nicht gesichert||)#ffa84b00
12,152 13x13(Schild mit Schloss||)  31,152 27x13 Zu(Zu||)
12,173 20x15 x(Ein langer Schalter||)  32,173 286x15 Ein langer Schalter(Ein langer Schalter||)^
12,196 144x23 Weg && da(Weg & da||)
12,227 306x34(Wahl||)
12,227 100x34 Wahl(Wahl||)#9e000000  120,227 20x15 (Eins||)  140,227 178x15 Eins(Eins||)^  120,246 20x15 x(Zwei||)  140,246 178x15 Zwei(Zwei||)^
12,269 81x18 In A(In A||)^  101,269 126x18 In BBBB(In BBBB||)^  235,269 60x17 In C(In C||)^
12,295 15x17 D(D||)^  303,269 15x17 ×(Weg damit||Weg damit)^)");
    const QImage bild = panel.grab().toImage();
    const std::pair<QRect, const char*> drucke[] = {
        {{0, 0, 12, 12}, "c11111111111 c11111111111 255 191 191 191"},
        {{309, 15, 9, 9}, "579999975 579999975 255 221 182 45"},
        {{88, 35, 34, 11}, "00l66666l00 0007222227000072222270000722222700 255 196 33 27"},
        {{12, 53, 9, 3}, "090 111111111 255 201 201 201"},
        {{12, 116, 13, 13}, "05a5555564870 0286676765a20 255 199 148 106"},
        {{288, 116, 30, 28}, "000k555555k000000k555555k000 444g0000g444444g0000g444444g00 255 168 75 0"},
        {{12, 173, 14, 15}, "e234547686642e0 e225766777422e 255 70 70 70"},
        {{120, 227, 14, 15}, "673244224433660 67324422443366 255 127 127 127"},
        {{120, 246, 14, 15}, "67328a88a833660 67328a88a83366 255 105 105 105"},
        {{12, 269, 31, 18}, "00acf7ff555555ka00 ac7868666666ca000000000b2222222 255 76 134 217"},
        {{303, 269, 15, 17}, "000b222222222b000 00b222222222b00 255 91 91 91"},
        {{318, panel.height() - 12, 12, 12}, "11111111111c 11111111111c 255 191 191 191"}};
    for (const auto& [ort, soll] : drucke)
        EXPECT_EQ(abdruck(bild, ort), soll);

    const std::pair<const char*, const char*> symbole[] = {
        {"lock.shield.fill", "0048iigggggaaa888eca8420 000adefgc9deed9cgfeda000 207 0 0 0"},
        {"nie gehört", "008cc88668aaaa86688cc800 008cc88668aaaa86688cc800 171 0 0 0"},
        {"shield.slash", "006bfb7789999997667bd820 002bcd878999999866efd200 181 0 0 0"}};
    for (const auto& [name, soll] : symbole) {
        const auto png = QImage::fromData(QByteArray::fromStdString(symbolpng(name, 24)));
        EXPECT_EQ(abdruck(png, png.rect()), soll);
    }
    auto* erster = knopf("A");
    panel.setAttribute(Qt::WA_KeyboardFocusChange);
    erster->setFocus();
    erster->setAttribute(Qt::WA_UnderMouse);
    erster->setDown(true);
    EXPECT_EQ(abdruck(panel.grab().toImage(), {12, 269, 31, 18}),
              "u1bdf7ff555557lb1u geaa8a888889ec222222222d4444444 255 142 177 216")
        << "pressed, under the mouse";

    const std::pair<QPointF, Qt::MouseButton> klicks[] = {
        {{1, 1}, Qt::LeftButton}, {{1, 1}, Qt::RightButton}, {{-1, 1}, Qt::LeftButton}};
    for (auto* text : panel.findChildren<QLabel*>())
        for (const auto& [ort, taste] : klicks) {
            QMouseEvent los(QEvent::MouseButtonRelease, ort, ort, taste, Qt::NoButton, Qt::NoModifier);
            QApplication::sendEvent(text, &los);
        }
    const std::vector<Aktion> soll = {
        {Bedienung::protokoll, ""}, {Bedienung::volltunnel, "aus"}, {Bedienung::profil, "reise"}};
    EXPECT_EQ(getan, soll);
}

// One window through all of them, so that it changes in place.
TEST_F(Panel, siehtGeaendertAusWieNeu) {
    const std::tuple<const char*, bool, int, QRgb> faelle[] = {
        {"reise", false, 11, 0xffffff}, {"vpn", false, 11, 0xffffff},   {"vpn", true, 11, 0xffffff},
        {"reise", true, 11, 0x1e1e1e},  {"reise", false, 13, 0x1e1e1e}, {"reise", false, 11, 0xffffff}};
    for (const auto& [profil, experte, schrift, grund] : faelle) {
        QApplication::setFont(QFont(QApplication::font().family(), schrift));
        QApplication::setPalette(QPalette(QColor(grund), QColor(grund)));
        for (int i = 0; i < 2; ++i) // a new font's panel is made once the change is complete
            QApplication::processEvents();
        const Baum baum = zeichne(profil, experte);
        const int hoehe = panel.height();
        panel.show(); // the other one has taken its place
        QApplication::processEvents();
        const auto geaendert = abbild(panel);
        Panelfenster neu([](const Aktion&) {});
        neu.zeichne(baum);
        neu.show();
        QApplication::processEvents();
        EXPECT_EQ(geaendert, abbild(neu)) << profil << experte;
        EXPECT_EQ(hoehe, neu.height()) << "at once";
    }
}

TEST_F(Panel, rolltWasZuHochIstUndSchliesstWieEinMenueOderGarNicht) {
    zeichne("reise", true);
    std::vector<std::string> gesehen;
    const auto merke = [&](const std::string& was) {
        QApplication::processEvents();
        auto* rollen = panel.findChild<QScrollArea*>();
        gesehen.push_back(was + (panel.isVisible() ? " offen " : " zu ") + std::to_string(panel.height()) +
                          " " + std::to_string(panel.width() - rollen->viewport()->width()) +
                          (rollen->verticalScrollBar()->isVisible() ? " rollt" : ""));
    };
    const auto taste = [&](int welche) {
        QKeyEvent ereignis(QEvent::KeyPress, welche, Qt::NoModifier);
        QApplication::sendEvent(&panel, &ereignis);
        merke("Taste");
    };
    const auto verlasse = [&] {
        QEvent ereignis(QEvent::WindowDeactivate);
        QApplication::sendEvent(&panel, &ereignis);
        merke("verlassen");
        panel.show();
    };
    panel.beiNeuerHoehe([&] { merke("Hoehe"); });
    panel.beimSchliessen([&] { merke("Schluss"); });
    panel.setzeHoechsthoehe(panel.height());
    panel.setzeHoechsthoehe(100);
    merke("niedrig");
    taste(Qt::Key_A);
    taste(Qt::Key_Escape);
    panel.show();
    verlasse();
    panel.setzeArt(Panelfenster::Art::fenster);
    merke("Fenster");
    panel.show();
    verlasse();
    taste(Qt::Key_Escape);
    panel.close();
    merke("geschlossen");
    panel.setzeHoechsthoehe(QWIDGETSIZE_MAX);
    panel.setzeArt(Panelfenster::Art::aufklappend);
    panel.show();
    merke("hoch");
    emit qApp->applicationStateChanged(Qt::ApplicationInactive);
    merke("anderswo");
    EXPECT_THAT(gesehen,
                testing::ElementsAre(
                    "Hoehe offen 100 14 rollt", "niedrig offen 100 14 rollt", "Taste offen 100 14 rollt",
                    "Schluss offen 100 14 rollt", "Taste zu 100 14", "Schluss offen 100 14 rollt",
                    "verlassen zu 100 14", "Fenster zu 100 14", "verlassen offen 100 14 rollt",
                    "Taste offen 100 14 rollt", "Schluss offen 100 14 rollt",
                    "geschlossen offen 100 14 rollt", "Hoehe offen 1291 0", "Schluss offen 1291 0",
                    "hoch offen 1291 0", "Schluss offen 1291 0", "anderswo zu 1291 0"));
}

TEST_F(Panel, einWertLaesstSichKopierenUndEineBezeichnungNicht) {
    z.handy = "Ein-sehr-langer-Name-ohne-Leerzeichen";
    zeichne("reise", false);
    auto* handy = wert("zeile.Handy");
    for (auto* text : panel.findChild<QWidget*>("zeile.Handy")->findChildren<Text*>()) {
        QContextMenuEvent ereignis(QContextMenuEvent::Mouse, QPoint(), QPoint());
        QApplication::sendEvent(text, &ereignis);
        EXPECT_EQ(text->findChild<QMenu*>() != nullptr, text == handy);
    }
    QEvent verlassen(QEvent::WindowDeactivate);
    QApplication::sendEvent(&panel, &verlassen);
    EXPECT_TRUE(panel.isVisible()) << "a value's menu is the panel, too";
    const auto eintraege = handy->findChild<QMenu*>()->actions();
    EXPECT_FALSE(eintraege[0]->isEnabled()) << "nothing is selected yet";
    eintraege[1]->trigger();
    eintraege[0]->setEnabled(true); // as in a menu that opens now
    for (const bool perTaste : {true, false}) {
        QApplication::clipboard()->clear();
        QKeyEvent kopiere(QEvent::KeyPress, Qt::Key_C, Qt::ControlModifier);
        perTaste ? (void)QApplication::sendEvent(handy, &kopiere) : eintraege[0]->trigger();
        EXPECT_EQ(QApplication::clipboard()->text().toStdString(), z.handy);
    }
}

TEST_F(Panel, eineFrageHatDieAntwortIhresKnopfesUndGeschlossenKeine) {
    const auto drueckt = [](QWidget* f, const char* knopf) {
        f->findChild<QAbstractButton*>(knopf)->click();
    };
    const auto taste = [](QWidget* f, int welche) {
        QKeyEvent ereignis(QEvent::KeyPress, welche, Qt::NoModifier);
        QApplication::sendEvent(f, &ereignis);
    };
    const std::pair<std::function<void(QWidget*)>, int> faelle[] = {
        {[&](QWidget* f) { drueckt(f, "frage.Ja & gern"); }, 0},
        {[&](QWidget* f) { drueckt(f, "frage.Nein"); }, 1},
        {[&](QWidget* f) { taste(f, Qt::Key_Return); }, 0},
        {[&](QWidget* f) { taste(f, Qt::Key_Escape); }, -1},
        {&QWidget::close, -1},
        {[&](QWidget*) { qt.beende(); }, -1}}; // no further question is asked
    QApplication::setApplicationName("Lotse");
    for (const auto& [tue, soll] : faelle) {
        std::string fenster;
        QTimer::singleShot(0, qApp, [&, &tue = tue] {
            auto* f = QApplication::activeModalWidget();
            fenster = f->windowTitle().toStdString();
            for (const auto* text : f->findChildren<QLabel*>())
                fenster += "|" + text->text().toStdString() + (text->font().bold() ? "!" : "") +
                           (text->textFormat() == Qt::PlainText ? "" : "#");
            tue(f);
        });
        EXPECT_EQ(qt.dialog().frage({"<b>?", "Darum.", {"Ja & gern", "Nein"}}), soll);
        EXPECT_EQ(fenster, "Lotse||<b>?!|Darum.");
    }
}

// Where there is no menu bar, the panel is a window, and closing it ends the program.
TEST_F(Panel, ohneMenueleisteIstEsEinFensterNichtHoeherAlsDerSchirm) {
    if (fremdeSchriften())
        GTEST_SKIP() << "fonts that no fontconfig names";
    panel.hide();
    Menueleistenstueck stueck([this](const Aktion& a) { getan.push_back(a); });
    QWidget* fenster = nullptr;
    QMenu* menue = nullptr;
    for (auto* eines : QApplication::topLevelWidgets()) {
        menue = qobject_cast<QMenu*>(eines) ? qobject_cast<QMenu*>(eines) : menue;
        fenster = eines->objectName() == "panel" && eines != &panel ? eines : fenster;
    }
    stueck.zeichne(muster(), "shield", "1,2 MB");
    EXPECT_EQ(fenster->pos(), QPoint(0, 5)) << "below the item, and on the screen";
    stueck.zeichne(zeichne("reise", true), "shield", "1,2 MB");
    const int schirm = fenster->screen()->availableSize().height();
    EXPECT_EQ(fenster->geometry(), QRect(0, 0, Masse::breite, schirm));
    EXPECT_FALSE(fenster->isVisible());
    stueck.erscheine();
    EXPECT_EQ(fenster->height(), schirm - 60) << "room for the frame";
    EXPECT_FALSE(fenster->close()) << "it stays until the program has ended";
    fenster->hide();
    for (auto* eintrag : menue->actions())
        eintrag->trigger();
    EXPECT_TRUE(fenster->isVisible() && fenster->focusWidget() == fenster) << "no key switches anything";
    const Aktion beenden{Bedienung::beenden, ""};
    EXPECT_THAT(getan, testing::ElementsAre(beenden, Aktion{Bedienung::protokoll, ""}, beenden));
    stueck.findChild<QSystemTrayIcon*>()->show();
    fenster->close();
    EXPECT_FALSE(fenster->isVisible() || getan.size() > 3) << "it goes on in the menu bar that has come";
}

TEST_F(Panel, mitMenueleisteKlapptEsNebenDemKlickAuf) {
    if (fremdeSchriften())
        GTEST_SKIP() << "fonts that no fontconfig names";
    Menueleistenstueck stueck([](const Aktion&) {});
    QWidget* fenster = nullptr;
    for (auto* eines : QApplication::topLevelWidgets())
        fenster = eines->objectName() == "panel" && eines != &panel ? eines : fenster;
    auto* ikone = stueck.findChild<QSystemTrayIcon*>();
    const std::tuple<QColor, const char*, const char*, const char*> bilder[] = {
        {Qt::white, "shield", "", "Titel 048a444444644640 0089545445459800 168 0 0 0"},
        {Qt::white, "shield", "1 MB", "1 MB 048a444444644640 0089545445459800 168 0 0 0"},
        {Qt::white, "app", "1 MB", "1 MB 0ac86ee444446ca0 0ac8868666668ca0 159 0 0 0"},
        {Qt::black, "app", "1 MB", "1 MB 0ac96ee444446ca0 0ac8878666668ca0 158 158 158 158"}};
    for (const auto& [grund, symbol, kurz, soll] : bilder) {
        QApplication::setPalette(QPalette(grund, grund));
        stueck.zeichne(muster(), symbol, kurz);
        QApplication::processEvents();
        const auto bild = ikone->icon().pixmap(16).toImage();
        EXPECT_EQ(ikone->toolTip().toStdString() + " " + abdruck(bild, bild.rect()), soll);
    }
    ikone->show();
    emit ikone->activated(QSystemTrayIcon::Context);
    EXPECT_FALSE(fenster->isVisible()) << "that is the menu's";
    const int h = fenster->height(); // below the click; as low as can be; above it
    const std::pair<QPoint, QPoint> orte[] = {
        {{400, 10}, {235, 15}}, {{0, 795 - h}, {0, 800 - h}}, {{799, 796 - h}, {470, 792 - 2 * h}}};
    for (const auto& [klick, ort] : orte) {
        QCursor::setPos(klick);
        emit ikone->activated(QSystemTrayIcon::Trigger);
        EXPECT_TRUE(fenster->isVisible() && fenster->windowFlags().testFlag(Qt::FramelessWindowHint));
        EXPECT_EQ(fenster->pos(), ort);
        emit ikone->activated(QSystemTrayIcon::Trigger);
        EXPECT_FALSE(fenster->isVisible());
    }
    QApplication::processEvents(); // the pointer's moves, which the next test's application would find
}

TEST_F(Panel, einAnderesBildLaesstFokusUndAuswahlStehen) {
    zeichne("reise", false);
    const auto mitte = [&](const char* k) { return knopf(k)->mapTo(&panel, knopf(k)->rect().center()).y(); };
    EXPECT_NEAR(mitte("schalter.experte"), mitte("knopf.beenden"), 2) << "side by side";
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
    for (auto* profil : panel.findChild<QWidget*>("wahl.profil")->findChildren<QAbstractButton*>()) {
        const bool vorher = profil->isChecked();
        profil->click(); // the chosen one does nothing
        EXPECT_EQ(profil->isChecked(), vorher);
    }
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
