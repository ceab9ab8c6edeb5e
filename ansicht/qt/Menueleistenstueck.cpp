#include "ansicht/qt/Menueleistenstueck.hpp"

#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Symbole.hpp"

#include <QApplication>
#include <QCursor>
#include <QEvent>
#include <QScreen>

#include <algorithm>

namespace mobilsteg {

namespace {

using namespace std::chrono_literals;

// At login the menu bar may come later than we do.
constexpr auto suchabstand = 2s;

// A click on the item takes the focus off an open panel, which closes it before the click is reported.
constexpr auto derselbeKlick = 300ms;

constexpr int fensterrahmen = 60; // at most, top and bottom together
constexpr int spalt = 4;          // between the item and the panel

int geklemmt(int wert, int laenge, int anfang, int ende) {
    return std::max(anfang, std::min(wert, ende - laenge));
}

/// Where a window stands by the item: centred below it, above it where there is no room below, and moved so
/// far that it lies within `schirm`.
QPoint fensterplatz(const QRect& stueck, QSize fenster, const QRect& schirm) {
    const int rechts = schirm.x() + schirm.width();
    const int unten = schirm.y() + schirm.height();
    const int darunter = stueck.y() + stueck.height() + spalt;
    const int darueber = stueck.y() - spalt - fenster.height();
    const int x = stueck.center().x() - fenster.width() / 2;
    const int y = darunter + fenster.height() <= unten || darueber < schirm.y() ? darunter : darueber;
    return {geklemmt(x, fenster.width(), schirm.x(), rechts),
            geklemmt(y, fenster.height(), schirm.y(), unten)};
}

} // namespace

Menueleistenstueck::Menueleistenstueck(Melder melde)
    : melde_(std::move(melde)), panel_(melde_),
      nativ_(nativesLeistenstueck([this] { geklickt(); }, [this] { menue_.popup(QCursor::pos()); })) {
    baueMenue();
    panel_.beimSchliessen([this] { geschlossen(); });
    panel_.beiNeuerHoehe([this] { stelleAuf(); });
    connect(&stueck_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason grund) {
        if (grund == QSystemTrayIcon::Trigger)
            geklickt();
    });
    connect(&suche_, &QTimer::timeout, this, [this] { sucheLeiste(); });
    qApp->installEventFilter(this);
}

Menueleistenstueck::~Menueleistenstueck() {
    panel_.beimSchliessen({});
}

void Menueleistenstueck::zeichne(const Baum& baum, const std::string& symbol, const std::string& kurz) {
    panel_.zeichne(baum);
    if (symbol == symbol_ && kurz == kurz_)
        return;
    symbol_ = symbol;
    kurz_ = kurz;
    zeigeIkone();
}

void Menueleistenstueck::erscheine() {
    if (!nativ_)
        sucheLeiste();
    if (stueckDa())
        return;
    suche_.start(suchabstand);
    panel_.setzeArt(Panelfenster::Art::fenster);
    oeffne();
}

void Menueleistenstueck::zeigeIkone() {
    const QString hilfe = kurz_.empty() ? panel_.windowTitle() : qtText(kurz_);
    if (nativ_) {
        nativ_->zeige(symbol_, kurz_, hilfe.toStdString(),
                      [this](int hoehe) { return symbolpng(symbol_, hoehe); });
        return;
    }
    stueck_.setIcon(leistenikone(symbol_, QApplication::palette().color(QPalette::WindowText)));
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
    if (!QSystemTrayIcon::isSystemTrayAvailable())
        return;
    suche_.stop();
    stueck_.show();
}

void Menueleistenstueck::baueMenue() {
    connect(menue_.addAction("Öffnen"), &QAction::triggered, this, [this] { oeffne(); });
    connect(menue_.addAction("Protokoll zeigen"), &QAction::triggered, this, [this] {
        melde_({Bedienung::protokoll, ""});
    });
    connect(menue_.addAction("Beenden"), &QAction::triggered, this, [this] {
        melde_({Bedienung::beenden, ""});
    });
    stueck_.setContextMenu(&menue_);
}

void Menueleistenstueck::geklickt() {
    klickstelle_ = QCursor::pos();
    if (panel_.isVisible())
        panel_.hide();
    else if (std::chrono::steady_clock::now() - zuletztGeschlossen_ > derselbeKlick)
        oeffne();
}

/// By the item, or as a window. A panel that is open already comes to the front.
void Menueleistenstueck::oeffne() {
    if (stueckDa() && !panel_.isVisible())
        panel_.setzeArt(Panelfenster::Art::aufklappend);
    stelleAuf();
    nachVorn();
    panel_.show();
    panel_.raise();
    panel_.activateWindow();
    panel_.setFocus(); // not one of the controls: a key pressed by mistake would switch it
}

void Menueleistenstueck::geschlossen() {
    zuletztGeschlossen_ = std::chrono::steady_clock::now();
    if (panel_.art() == Panelfenster::Art::aufklappend)
        return;
    if (stueckDa())
        panel_.hide();
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
