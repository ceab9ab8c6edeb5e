#include "ansicht/qt/Baustein.hpp"
#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Symbole.hpp"
#include "ansicht/qt/Text.hpp"
#include "plattform/Oberflaeche.hpp"

#include <QApplication>
#include <QBoxLayout>
#include <QCheckBox>
#include <QIcon>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QStyleOptionFocusRect>
#include <QStylePainter>

#include <algorithm>
#include <memory>

namespace mobilsteg {

namespace {

constexpr int wertabstand = 4;

constexpr float gedrueckt = 0.6F;
constexpr int bildbreite = Masse::browsersymbol + Masse::browserabstand;

/// Sharp on the densest screens, too; none where the system knows no icons of applications.
QIcon anwendungsbild(const std::string& appPfad) {
    QPixmap bild;
    if (const auto png = programmbild(appPfad, 4 * Masse::browsersymbol))
        bild.loadFromData(reinterpret_cast<const uchar*>(png->data()), static_cast<uint>(png->size()), "PNG");
    return bild;
}

/// A push button without a frame: text that can be clicked, behind an application's icon if it has one.
class Textknopf final : public QPushButton {
public:
    Textknopf(const Knopf& knopf, QWidget* eltern);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* ereignis) override;

private:
    Farbe farbe_;
    bool mitBild_;
    QIcon bild_; ///< none: the generic drawing
};

Textknopf::Textknopf(const Knopf& knopf, QWidget* eltern)
    : QPushButton(eltern), farbe_(knopf.farbe), mitBild_(!knopf.appPfad.empty()),
      bild_(mitBild_ ? anwendungsbild(knopf.appPfad) : QIcon()) {
    setFlat(true);
    setCursor(Qt::PointingHandCursor);
}

QSize Textknopf::sizeHint() const {
    const QSize schrift = fontMetrics().size(Qt::TextShowMnemonic, text());
    if (!mitBild_)
        return schrift + QSize(0, 2);
    return {schrift.width() + bildbreite, std::max(schrift.height(), Masse::browsersymbol) + 2};
}

void Textknopf::paintEvent(QPaintEvent*) {
    QStylePainter maler(this);
    QColor farbe = farbe_ == Farbe::normal ? akzent(palette()) : ton(farbe_, palette());
    if (isDown())
        farbe.setAlphaF(gedrueckt);
    QRect textplatz = rect();
    if (mitBild_) {
        const QRect bildplatz(0, (height() - Masse::browsersymbol) / 2, Masse::browsersymbol,
                              Masse::browsersymbol);
        if (bild_.isNull())
            maleSymbolLinks(maler, bildplatz, "app", farbe);
        else
            bild_.paint(&maler, bildplatz);
        textplatz.setLeft(bildbreite);
    }
    QFont schrift = font();
    schrift.setUnderline(underMouse());
    maler.setFont(schrift);
    maler.setPen(farbe);
    maler.drawText(textplatz, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextShowMnemonic, text());
    if (hasFocus()) {
        QStyleOptionFocusRect fokus;
        fokus.initFrom(this);
        maler.drawPrimitive(QStyle::PE_FrameFocusRect, fokus);
    }
}

/// A checkbox or radio button with an edge that is seen on any window: where the toolkit draws it itself, an
/// empty one is next to invisible on a dark one.
template <class Knopfart, QStyle::SubElement marke>
class MitRand final : public Knopfart {
public:
    using Knopfart::Knopfart;

protected:
    void paintEvent(QPaintEvent* ereignis) override {
        Knopfart::paintEvent(ereignis);
        if (this->style()->name() == "macos")
            return;
        QStyleOptionButton lage;
        this->initStyleOption(&lage);
        const QRect ort = this->style()->subElementRect(marke, &lage, this);
        QStylePainter maler(this);
        maler.setPen(ton(Farbe::sekundaer, this->palette()));
        if (marke == QStyle::SE_CheckBoxIndicator)
            return maler.drawRect(ort.adjusted(0, 0, -1, -1));
        maler.setRenderHint(QPainter::Antialiasing);
        maler.drawEllipse(QRectF(ort).adjusted(0.5, 0.5, -0.5, -0.5));
    }
};
using Kasten = MitRand<QCheckBox, QStyle::SE_CheckBoxIndicator>;
using Auswahl = MitRand<QRadioButton, QStyle::SE_RadioButtonIndicator>;

/// Puts the box or the radio button at the top of `reihe` and beside it a text of any number of lines, on the
/// first of which it stands; a click on the text presses it.
Text* fuegeAn(QBoxLayout* reihe, QAbstractButton* knopf, bool kasten, int breite) {
    const QStyle* stil = knopf->style();
    const int marke =
        stil->pixelMetric(kasten ? QStyle::PM_IndicatorWidth : QStyle::PM_ExclusiveIndicatorWidth);
    const int luecke =
        stil->pixelMetric(kasten ? QStyle::PM_CheckBoxLabelSpacing : QStyle::PM_RadioButtonLabelSpacing);
    auto* text =
        new Text(QApplication::font(), Farbe::normal, breite - marke - luecke, knopf->parentWidget());
    const int zeile = text->fontMetrics().height();
    const int hoehe = std::max(marke, zeile);
    knopf->setFixedSize(marke + luecke, hoehe);
    text->setContentsMargins(0, (hoehe - zeile) / 2, 0, 0);
    text->beimKlick([knopf] { knopf->click(); });
    reihe->addWidget(knopf, 0, Qt::AlignTop);
    reihe->addWidget(text);
    return text;
}

void beschrifte(QAbstractButton* knopf, Text* text, const std::string& inhalt) {
    text->zeige(inhalt);
    knopf->setAccessibleName(qtText(inhalt));
}

struct Bedienbau {
    QWidget* flaeche;
    const Melder& melde;

    Baustein operator()(const Schalter& schalter) const {
        auto* kasten = new Kasten(flaeche);
        auto* text = fuegeAn(waagerecht(flaeche), kasten, true, bedienbreite);
        // Until the next tree the box shows the state, not the wish: the wish may be refused.
        QObject::connect(kasten, &QCheckBox::clicked, kasten,
                         [kasten, was = schalter.was, &melder = melde](bool an) {
                             kasten->setChecked(!an);
                             melder({was, an ? "an" : "aus"});
                         });
        return baustein<Schalter>(flaeche, [=](const Schalter& neuer) {
            beschrifte(kasten, text, neuer.text);
            kasten->setChecked(neuer.an);
        });
    }

    Baustein operator()(const Knopf& knopf) const {
        auto* taste = knopf.rahmenlos ? new Textknopf(knopf, flaeche) : new QPushButton(flaeche);
        auto* ordnung = waagerecht(flaeche);
        ordnung->addWidget(taste);
        ordnung->addStretch();
        QObject::connect(taste, &QPushButton::clicked, taste,
                         [aktion = knopf.aktion, &melder = melde] { melder(Aktion(aktion)); });
        return baustein<Knopf>(flaeche, [=](const Knopf& neuer) {
            taste->setText(knopftext(neuer.text));
            taste->setAccessibleName(qtText(neuer.hilfe.empty() ? neuer.text : neuer.hilfe));
            taste->setToolTip(qtText(neuer.hilfe));
            if (!neuer.rahmenlos)
                taste->setMinimumWidth(
                    taste->fontMetrics().size(Qt::TextShowMnemonic, taste->text()).width() + 2 * knopfrand);
        });
    }

    /// Its label in the column of the rows' labels, beside it the values below each other.
    Baustein operator()(const Wahl& wahl) const {
        auto* bezeichnung =
            new Text(schriftart(Schrift::normal), Farbe::sekundaer, Masse::bezeichnungsspalte, flaeche);
        bezeichnung->setFixedWidth(Masse::bezeichnungsspalte);
        auto* spalte = new QVBoxLayout;
        spalte->setSpacing(wertabstand);
        auto gewaehlt = std::make_shared<std::string>();
        std::vector<std::pair<std::string, QRadioButton*>> werte;
        for (const auto& moeglichkeit : wahl.moeglichkeiten) {
            auto* knopf = new Auswahl(flaeche);
            auto* reihe = new QHBoxLayout;
            reihe->setSpacing(0);
            auto* text =
                fuegeAn(reihe, knopf, false, bedienbreite - Masse::bezeichnungsspalte - Masse::abstand);
            beschrifte(knopf, text, moeglichkeit.text);
            spalte->addLayout(reihe);
            werte.emplace_back(moeglichkeit.wert, knopf);
            // On the first one's base line; the others' is as deep.
            bezeichnung->setContentsMargins(0,
                                            text->contentsMargins().top() + text->fontMetrics().ascent() -
                                                bezeichnung->fontMetrics().ascent(),
                                            0, 0);
        }
        const auto zeigeGewaehlten = [=] {
            for (const auto& [wert, knopf] : werte)
                if (wert == *gewaehlt)
                    knopf->setChecked(true); // the others are no longer
        };
        for (const auto& [wert, knopf] : werte)
            QObject::connect(knopf, &QRadioButton::clicked, knopf,
                             [=, dieser = wert, was = wahl.was, &melder = melde] {
                                 zeigeGewaehlten(); // until the next tree the state is shown, not the wish
                                 if (dieser != *gewaehlt)
                                     melder({was, dieser});
                             });
        auto* ordnung = waagerecht(flaeche, Masse::abstand);
        ordnung->addWidget(bezeichnung);
        ordnung->addLayout(spalte);
        flaeche->setAccessibleName(qtText(wahl.bezeichnung));
        bezeichnung->zeige(wahl.bezeichnung);
        return baustein<Wahl>(flaeche, [=](const Wahl& neue) {
            *gewaehlt = neue.gewaehlt;
            zeigeGewaehlten();
        });
    }

    Baustein operator()(const Reihe&) const {
        auto* ordnung = waagerecht(flaeche, Masse::abstand);
        auto teile = std::make_shared<std::vector<Baustein>>();
        return baustein<Reihe>(flaeche,
                               [teile, ordnung, eltern = flaeche, &melder = melde](const Reihe& reihe) {
                                   erneuere(*teile, reihe.teile, melder, eltern);
                                   ordneReihe(ordnung, *teile);
                               });
    }

    template <class Anzeigeelement>
    Baustein operator()(const Anzeigeelement&) const {
        return {};
    }

private:
    /// In as many lines as they need, and the last one behind the first line.
    static void ordneReihe(QHBoxLayout* ordnung, const std::vector<Baustein>& teile) {
        while (QLayoutItem* stueck = ordnung->takeAt(0))
            delete stueck;
        const auto breite = [](const Baustein& teil) { return teil.flaeche->sizeHint().width(); };
        const int platz = bedienbreite - breite(teile.back());
        auto* zeilen = new QVBoxLayout;
        QHBoxLayout* zeile = nullptr;
        int belegt = platz; // the first one begins a line
        for (const auto& teil : teile) {
            teil.flaeche->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
            teil.flaeche->show();
            teil.flaeche->raise(); // the children's order is the Tab key's
            if (&teil == &teile.back())
                break;
            if (belegt + breite(teil) > platz) {
                zeile = new QHBoxLayout;
                zeilen->addLayout(zeile);
                belegt = 0;
            }
            zeile->addWidget(teil.flaeche, 0, Qt::AlignVCenter);
            belegt += breite(teil) + Masse::abstand;
        }
        for (int i = 0; i < zeilen->count(); ++i)
            static_cast<QHBoxLayout*>(zeilen->itemAt(i)->layout())->addStretch();
        ordnung->addLayout(zeilen);
        ordnung->addWidget(teile.back().flaeche, 0, zeilen->count() > 1 ? Qt::AlignTop : Qt::AlignVCenter);
    }
};

} // namespace

Baustein baueBedienung(const Element& element, const Melder& melde, QWidget* flaeche) {
    return std::visit(Bedienbau{flaeche, melde}, element.inhalt);
}

} // namespace mobilsteg
