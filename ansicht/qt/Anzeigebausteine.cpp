#include "ansicht/qt/Baustein.hpp"
#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Symbole.hpp"
#include "ansicht/qt/Text.hpp"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

namespace mobilsteg {

namespace {

constexpr int wertbreite = bedienbreite - Masse::bezeichnungsspalte - Masse::abstand;
// Up to this width a word at the far end stays in one line, and the text before it gives way.
constexpr int laengsterZusatz = 150;
constexpr int symboltextbreite = bedienbreite - laengsterZusatz - 4 * Masse::symbolabstand;

constexpr float randstaerke = 0.6F;
constexpr float strichstaerke = 0.16F;

/// A widget that a function draws.
class Zeichnung final : public QWidget {
public:
    using QWidget::QWidget;

    void zeige(std::function<void(QPainter&)> male) {
        male_ = std::move(male);
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter maler(this);
        maler.setRenderHint(QPainter::Antialiasing);
        male_(maler);
    }

private:
    std::function<void(QPainter&)> male_ = [](QPainter&) {};
};

struct Anzeigebau {
    QWidget* flaeche;
    const Melder& melde;

    Baustein operator()(const Kopf&) const {
        auto* titel = new Text(schriftart(Schrift::titel), Farbe::normal, bedienbreite, flaeche);
        auto* punkt = new Zeichnung(flaeche);
        punkt->setFixedSize(Masse::punkt, Masse::punkt);
        auto* ordnung = waagerecht(flaeche, Masse::abstand);
        ordnung->addWidget(titel);
        ordnung->addStretch();
        ordnung->addWidget(punkt);
        return baustein<Kopf>(flaeche, [=](const Kopf& kopf) {
            titel->zeige(kopf.titel);
            punkt->setAccessibleName(punktbedeutung(kopf.punkt));
            punkt->zeige([punkt, farbe = kopf.punkt](QPainter& maler) {
                // The edge keeps a bright circle visible on a bright window.
                QColor rand = ton(farbe, punkt->palette());
                rand.setAlphaF(randstaerke);
                maler.setPen(QPen(rand, 1));
                maler.setBrush(leuchtton(farbe, punkt->palette()));
                maler.drawEllipse(QRectF(punkt->rect()).adjusted(0.5, 0.5, -0.5, -0.5));
            });
        });
    }

    Baustein operator()(const Satz& satz) const {
        auto* text = new Text(schriftart(satz.schrift), satz.farbe, bedienbreite, flaeche);
        waagerecht(flaeche)->addWidget(text);
        return baustein<Satz>(flaeche, [text, &melde = melde](const Satz& neuer) {
            text->zeige(neuer.text);
            text->beimKlick(!neuer.beimKlick ? std::function<void()>()
                                             : [&melde, was = *neuer.beimKlick] { melde(Aktion(was)); });
        });
    }

    Baustein operator()(const Trenner&) const {
        auto* strich = new Zeichnung(flaeche);
        strich->setFixedHeight(1);
        waagerecht(flaeche)->addWidget(strich);
        strich->zeige([strich](QPainter& maler) {
            QColor farbe = strich->palette().color(QPalette::WindowText);
            farbe.setAlphaF(strichstaerke);
            maler.fillRect(strich->rect(), farbe);
        });
        return baustein<Trenner>(flaeche, [](const Trenner&) {});
    }

    Baustein operator()(const Zeile& zeile) const {
        const QFont schrift = schriftart(Schrift::normal);
        auto* bezeichnung = new Text(schrift, Farbe::sekundaer, Masse::bezeichnungsspalte, flaeche);
        auto* wert = new Text(schrift, Farbe::normal, wertbreite, flaeche);
        bezeichnung->setFixedWidth(Masse::bezeichnungsspalte);
        wert->machWaehlbar(zeile.bezeichnung);
        auto* ordnung = waagerecht(flaeche, Masse::abstand);
        ordnung->addWidget(bezeichnung);
        ordnung->addWidget(wert);
        return baustein<Zeile>(flaeche, [=](const Zeile& neue) {
            bezeichnung->zeige(neue.bezeichnung);
            wert->zeige(neue.wert);
        });
    }

    Baustein operator()(const Symbolzeile& erste) const {
        auto* symbol = new Zeichnung(flaeche);
        auto* text = new Text(schriftart(Schrift::normal), Farbe::normal, symboltextbreite, flaeche);
        auto* zusatz = new Text(schriftart(Schrift::klein), erste.farbe, laengsterZusatz, flaeche);
        const int zeilenhoehe = QFontMetrics(text->font()).height();
        symbol->setFixedSize(zeilenhoehe, zeilenhoehe);
        zusatz->setAlignment(Qt::AlignRight | Qt::AlignTop);
        // Its letters are smaller: lowered by the difference, they stand on the text's base line.
        zusatz->setContentsMargins(
            0, QFontMetrics(text->font()).ascent() - QFontMetrics(zusatz->font()).ascent(), 0, 0);
        auto* ordnung = waagerecht(flaeche);
        ordnung->addWidget(symbol, 0, Qt::AlignTop);
        ordnung->addSpacing(Masse::symbolabstand);
        ordnung->addWidget(text);
        ordnung->addStretch();
        ordnung->addSpacing(Masse::symbolabstand);
        ordnung->addWidget(zusatz);
        return baustein<Symbolzeile>(flaeche, [=](const Symbolzeile& zeile) {
            symbol->setAccessibleName(symbolbeschreibung(zeile.symbol));
            symbol->zeige([symbol, name = zeile.symbol, farbe = zeile.farbe](QPainter& maler) {
                maleSymbolLinks(maler, symbol->rect(), name, ton(farbe, symbol->palette()));
            });
            text->zeige(zeile.text);
            zusatz->zeige(zeile.zusatz);
            zusatz->setMinimumWidth(std::min(zusatz->sizeHint().width(), laengsterZusatz));
            zusatz->setVisible(!zeile.zusatz.empty());
        });
    }

    template <class Bedienelement>
    Baustein operator()(const Bedienelement&) const {
        return {};
    }
};

} // namespace

Baustein baueAnzeige(const Element& element, const Melder& melde, QWidget* flaeche) {
    return std::visit(Anzeigebau{flaeche, melde}, element.inhalt);
}

} // namespace mobilsteg
