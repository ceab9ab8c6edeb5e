#include "ansicht/qt/Wahlfeld.hpp"

#include "ansicht/qt/Beschriftung.hpp"
#include "ansicht/qt/Fliesstext.hpp"
#include "ansicht/qt/Wandlung.hpp"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace mobilsteg {

namespace {

constexpr int wertabstand = 4;
constexpr int spaltenbreite = bedienbreite - Masse::bezeichnungsspalte - Masse::abstand;

} // namespace

Wahlbaustein::Wahlbaustein(const Melder& melde, QWidget* eltern)
    : BausteinFuer(eltern), melde_(melde), bezeichnung_(new Fliesstext(Grad::normal, Farbe::normal, this)),
      spalte_(new QVBoxLayout), gruppe_(new QButtonGroup(this)) {
    bezeichnung_->setFixedWidth(Masse::bezeichnungsspalte);
    spalte_->setSpacing(wertabstand);
    auto* ordnung = new QHBoxLayout(this);
    ordnung->setContentsMargins(0, 0, 0, 0);
    ordnung->setSpacing(Masse::abstand);
    // Lowered by what the buttons are higher than their text, it stands on the first one's line.
    auto* gesenkt = new QVBoxLayout;
    gesenkt->setSpacing(0);
    gesenkt->addSpacing((QRadioButton("X").sizeHint().height() - fontMetrics().height()) / 2);
    gesenkt->addWidget(bezeichnung_);
    gesenkt->addStretch(1);
    ordnung->addLayout(gesenkt);
    ordnung->addLayout(spalte_);
    ordnung->addStretch(1);
}

void Wahlbaustein::setze(const Wahl& wahl) {
    was_ = wahl.was;
    bezeichnung_->zeige(wahl.bezeichnung);
    setAccessibleName(qtText(wahl.bezeichnung));
    setObjectName(bedienungsname("wahl", was_, ""));

    std::vector<Wert> neue;
    for (const auto& moeglichkeit : wahl.moeglichkeiten) {
        auto* knopf = knopfFuer(moeglichkeit.wert);
        beschrifte(*knopf, moeglichkeit.text, spaltenbreite);
        neue.push_back({moeglichkeit.wert, knopf});
    }
    for (const auto& uebrig : std::exchange(werte_, std::move(neue))) {
        gruppe_->removeButton(uebrig.knopf);
        uebrig.knopf->hide();
        uebrig.knopf->setParent(nullptr);
        uebrig.knopf->deleteLater();
    }
    while (QLayoutItem* stueck = spalte_->takeAt(0))
        delete stueck;
    for (const auto& wert : werte_) {
        spalte_->addWidget(wert.knopf);
        wert.knopf->show();
    }
    waehle(wahl.gewaehlt);
}

/// The button that stood for the value so far, else a new one.
QRadioButton* Wahlbaustein::knopfFuer(const std::string& wert) {
    const auto bisher =
        std::find_if(werte_.begin(), werte_.end(), [&](const Wert& w) { return w.wert == wert; });
    if (bisher != werte_.end()) {
        auto* knopf = bisher->knopf;
        werte_.erase(bisher);
        return knopf;
    }
    auto* knopf = new QRadioButton(this);
    knopf->setObjectName(bedienungsname("wahl", was_, wert));
    gruppe_->addButton(knopf);
    QObject::connect(knopf, &QRadioButton::clicked, knopf, [this, wert] {
        const std::string bisherige = gewaehlt_;
        waehle(bisherige); // until the next tree the state is shown, not the wish
        if (wert != bisherige)
            melde_({was_, std::string(wert)});
    });
    return knopf;
}

void Wahlbaustein::waehle(const std::string& wert) {
    gewaehlt_ = wert;
    gruppe_->setExclusive(false); // else none of them could be unchosen
    for (const auto& w : werte_)
        w.knopf->setChecked(w.wert == wert);
    gruppe_->setExclusive(true);
}

void Wahlbaustein::sammleTexte(std::vector<std::string>& texte) const {
    texte.push_back(bezeichnung_->text().toStdString());
    for (const auto& w : werte_) {
        texte.push_back(((w.knopf->isChecked() ? "(•) " : "( ) ") + beschriftung(*w.knopf)).toStdString());
    }
}

void Wahlbaustein::sammleBedienung(std::vector<QWidget*>& bedienung) const {
    for (const auto& w : werte_)
        bedienung.push_back(w.knopf);
}

} // namespace mobilsteg
