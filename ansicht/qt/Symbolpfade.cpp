#include "ansicht/qt/Symbole.hpp"

#include <QPainterPathStroker>
#include <QTransform>

#include <array>

namespace mobilsteg {

namespace {

constexpr double staerke = 1.9; // of every line, so that the symbols look alike

// Uniting and subtracting turn curves into straight pieces of a fixed length, so that is done much enlarged.
constexpr double vergroesserung = 40;

QPainterPath gross(const QPainterPath& weg) {
    return QTransform::fromScale(vergroesserung, vergroesserung).map(weg);
}

/// Drawn along the enlarged path.
QPainterPath linie(const QPainterPath& weg, double breite = staerke) {
    QPainterPathStroker stift;
    stift.setWidth(breite * vergroesserung);
    stift.setCapStyle(Qt::RoundCap);
    stift.setJoinStyle(Qt::RoundJoin);
    return stift.createStroke(weg).simplified();
}

QPainterPath strecke(QPointF von, QPointF nach, double breite = staerke) {
    QPainterPath weg(von);
    weg.lineTo(nach);
    return linie(gross(weg), breite);
}

QPainterPath kasten(double x, double y, double breite, double hoehe, double rundung) {
    QPainterPath weg;
    weg.addRoundedRect(x, y, breite, hoehe, rundung, rundung);
    return gross(weg);
}

QPainterPath kreis(QPointF mitte, double radius) {
    QPainterPath weg;
    weg.addEllipse(mitte, radius, radius);
    return gross(weg);
}

/// A diagonal line with a gap beside it, so that it is seen on filled areas, too.
QPainterPath durchgestrichen(const QPainterPath& bild) {
    const QPointF von(3.2, 3.2);
    const QPointF nach(20.8, 20.8);
    return bild.subtracted(strecke(von, nach, 3 * staerke)).united(strecke(von, nach));
}

/// A plug from the front, and its cable going off to the side.
QPainterPath stecker() {
    QPainterPath kabel(QPointF(12, 16));
    kabel.lineTo(12, 18);
    kabel.cubicTo(12, 21.6, 15, 21.6, 16.5, 21.6);
    kabel.lineTo(20, 21.6);
    const QPainterPath kragen = linie(kasten(8, 1.9, 8, 7, 0.8));
    const QPainterPath kontakte = kasten(9.9, 4.2, 1.6, 2.2, 0.3).united(kasten(12.5, 4.2, 1.6, 2.2, 0.3));
    return kragen.united(kontakte).united(kasten(5.6, 8.2, 12.8, 8.6, 2.4)).united(linie(gross(kabel)));
}

/// A tunnel's mouth with a tram coming out of it.
QPainterPath tunnel() {
    QPainterPath mauer(QPointF(2, 22));
    mauer.lineTo(2, 11.5);
    mauer.cubicTo(2, 5.5, 6.2, 1.8, 12, 1.8);
    mauer.cubicTo(17.8, 1.8, 22, 5.5, 22, 11.5);
    mauer.lineTo(22, 22);
    mauer.closeSubpath();
    const QPainterPath gleise =
        strecke({9.2, 18.2}, {6.6, 23}, 1.5).united(strecke({14.8, 18.2}, {17.4, 23}, 1.5));
    const QPainterPath wagen = kasten(7, 6.2, 10, 12.2, 2.4).united(strecke({12, 6.5}, {12, 4.6}, 1.5));
    const QPainterPath scheibe = kasten(8.7, 8.6, 6.6, 4, 0.8);
    const QPainterPath lichter = kreis({9.6, 15.6}, 1).united(kreis({14.4, 15.6}, 1));
    return gross(mauer).subtracted(wagen).subtracted(gleise).united(scheibe).united(lichter);
}

QPainterPath schildumriss(double einzug) {
    const double oben = 1.8 + einzug;
    const double links = 3.4 + einzug;
    const double rechts = 20.6 - einzug;
    const double unten = 22.4 - einzug;
    QPainterPath weg(QPointF(12, oben));
    weg.cubicTo(14.2, oben + 1.7, 17, oben + 2.6, rechts, oben + 2.9);
    weg.lineTo(rechts, 11);
    weg.cubicTo(rechts, 16.4, 16.6, 20.4, 12, unten);
    weg.cubicTo(7.4, 20.4, links, 16.4, links, 11);
    weg.lineTo(links, oben + 2.9);
    weg.cubicTo(7, oben + 2.6, 9.8, oben + 1.7, 12, oben);
    weg.closeSubpath();
    return gross(weg);
}

QPainterPath schild() {
    return linie(schildumriss(staerke / 2));
}

QPainterPath schildMitSchloss() {
    QPainterPath buegel(QPointF(9.4, 11.4));
    buegel.lineTo(9.4, 9.2);
    buegel.cubicTo(9.4, 5.7, 14.6, 5.7, 14.6, 9.2);
    buegel.lineTo(14.6, 11.4);
    return schildumriss(0).subtracted(kasten(7.6, 10.6, 8.8, 6.6, 1.2)).subtracted(linie(gross(buegel), 1.7));
}

QPainterPath schildMitHaken() {
    QPainterPath haken(QPointF(7.9, 12));
    haken.lineTo(10.9, 15.2);
    haken.lineTo(16.1, 8.2);
    return schildumriss(0).subtracted(linie(gross(haken), 2.2));
}

/// A window with its title bar.
QPainterPath programm() {
    return linie(kasten(3, 3, 18, 18, 4.2))
        .united(strecke({3.5, 8.6}, {20.5, 8.6}))
        .united(kreis({6.7, 5.9}, 0.9))
        .united(kreis({9.7, 5.9}, 0.9));
}

QPainterPath unbekannt() {
    return linie(kreis({12, 12}, 9)).united(kreis({12, 12}, 2.2));
}

struct Symbol {
    std::string_view name;
    const char* beschreibung;
    QPainterPath (*zeichnung)();
};

constexpr std::array<Symbol, 8> symbole = {{
    {"cable.connector", "Stecker", stecker},
    {"cable.connector.slash", "Stecker, durchgestrichen", [] { return durchgestrichen(stecker()); }},
    {"tram.tunnel.fill", "Bahn im Tunnel", tunnel},
    {"shield", "Schild", schild},
    {"shield.slash", "Schild, durchgestrichen", [] { return durchgestrichen(schild()); }},
    {"lock.shield.fill", "Schild mit Schloss", schildMitSchloss},
    {"checkmark.shield.fill", "Schild mit Haken", schildMitHaken},
    {"app", "Programm", programm},
}};

constexpr Symbol neutral = {"", "Symbol", unbekannt};

const Symbol& symbol(std::string_view name) {
    for (const auto& s : symbole)
        if (s.name == name)
            return s;
    return neutral;
}

} // namespace

std::vector<std::string> symbolnamen() {
    std::vector<std::string> namen;
    for (const auto& s : symbole)
        namen.emplace_back(s.name);
    return namen;
}

QPainterPath symbolpfad(std::string_view name) {
    return QTransform::fromScale(1 / vergroesserung, 1 / vergroesserung).map(symbol(name).zeichnung());
}

QString symbolbeschreibung(std::string_view name) {
    return symbol(name).beschreibung;
}

} // namespace mobilsteg
