#include "ansicht/qt/Menueleistenstueck.hpp"

#include "ansicht/qt/Fensterplatz.hpp"
#include "ansicht/qt/Leistenbild.hpp"
#include "ansicht/qt/Wandlung.hpp"

#include <QApplication>
#include <QCursor>
#include <QEvent>
#include <QScreen>

namespace mobilsteg {

namespace {

using namespace std::chrono_literals;

// At login the menu bar may come later than we do.
constexpr auto suchabstand = 2s;
constexpr int suchversuche = 30;

// A click on the item takes the focus off an open panel, which closes it before the click is reported.
constexpr auto derselbeKlick = 300ms;

constexpr int fensterrahmen = 60; // at most, top and bottom together

} // namespace

Menueleistenstueck::Menueleistenstueck(Zustandsspeicher& speicher, bool bundleB2B, Melder melde)
    : melde_(std::move(melde)), panel_(melde_), nativ_(nativesLeistenstueck([this] { geklickt(); })),
      tafel_(speicher, bundleB2B, [this](const Baum& baum) { panel_.zeichne(baum); }) {
    panel_.beimSchliessen([this] { geschlossen(); });
    panel_.beiNeuerHoehe([this] { stelleAuf(); });
    connect(&stueck_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason grund) {
        if (grund == QSystemTrayIcon::Trigger)
            geklickt();
    });
    connect(&suche_, &QTimer::timeout, this, [this] { sucheLeiste(); });
    qApp->installEventFilter(this);

    zeige(speicher.zustand());
    beobachtung_ = speicher.beobachte([this](const Zustand& zustand) { zeige(zustand); });

    if (!nativ_)
        sucheLeiste();
    if (!stueckDa()) {
        suche_.start(suchabstand);
        panel_.setzeArt(Panelfenster::Art::fenster);
        oeffne();
    }
}

Menueleistenstueck::~Menueleistenstueck() {
    panel_.beimSchliessen({});
}

void Menueleistenstueck::zeige(const Zustand& zustand) {
    if (zustand.symbol == symbol_ && zustand.kurz == kurz_)
        return;
    symbol_ = zustand.symbol;
    kurz_ = zustand.kurz;
    zeigeIkone();
}

void Menueleistenstueck::zeigeIkone() {
    const QString hilfe = kurz_.empty() ? panel_.windowTitle() : qtText(kurz_);
    if (nativ_) {
        nativ_->zeige(symbol_, kurz_, hilfe.toStdString(),
                      [this](int hoehe) { return symbolpng(symbol_, hoehe); });
        return;
    }
    stueck_.setIcon(leistenikone(symbol_, kurz_, QApplication::palette().color(QPalette::WindowText)));
    stueck_.setToolTip(hilfe);
}

bool Menueleistenstueck::stueckDa() const {
    return nativ_ || stueck_.isVisible();
}

/// Some menu bars keep it to themselves where the item is; then the place of the click has to do.
QRect Menueleistenstueck::ort() const {
    if (nativ_) {
        const auto lage = nativ_->lage();
        return {lage.links, lage.oben, lage.breite, lage.hoehe};
    }
    const QRect stueck = stueck_.geometry();
    return stueck.isValid() ? stueck : QRect(klickstelle_, QSize(1, 1));
}

void Menueleistenstueck::sucheLeiste() {
    ++versuche_;
    if (QSystemTrayIcon::isSystemTrayAvailable()) {
        suche_.stop();
        stueck_.show();
    } else if (versuche_ > suchversuche) {
        suche_.stop();
    }
}

void Menueleistenstueck::geklickt() {
    klickstelle_ = QCursor::pos();
    if (panel_.isVisible())
        schliesse();
    else if (std::chrono::steady_clock::now() - zuletztGeschlossen_ > derselbeKlick)
        oeffne();
}

void Menueleistenstueck::oeffne() {
    if (stueckDa() && !panel_.isVisible())
        panel_.setzeArt(Panelfenster::Art::aufklappend);
    stelleAuf();
    nachVorn();
    panel_.show();
    panel_.raise();
    panel_.activateWindow();
}

void Menueleistenstueck::schliesse() {
    panel_.hide();
}

void Menueleistenstueck::geschlossen() {
    zuletztGeschlossen_ = std::chrono::steady_clock::now();
    if (panel_.art() == Panelfenster::Art::aufklappend)
        return;
    if (stueckDa())
        schliesse();
    else
        melde_({Bedienung::beenden, ""});
}

void Menueleistenstueck::stelleAuf() {
    const QRect stueck = ort();
    const QScreen* schirm = QGuiApplication::screenAt(stueck.center());
    const QRect flaeche =
        (schirm != nullptr ? schirm : QGuiApplication::primaryScreen())->availableGeometry();
    const bool aufklappend = panel_.art() == Panelfenster::Art::aufklappend;
    panel_.setzeHoechsthoehe(flaeche.height() - (aufklappend ? 0 : fensterrahmen));
    if (aufklappend)
        panel_.move(fensterplatz(stueck, panel_.size(), flaeche));
}

bool Menueleistenstueck::eventFilter(QObject* objekt, QEvent* ereignis) {
    if (objekt == qApp && ereignis->type() == QEvent::ApplicationPaletteChange)
        zeigeIkone();
    return QObject::eventFilter(objekt, ereignis);
}

} // namespace mobilsteg
