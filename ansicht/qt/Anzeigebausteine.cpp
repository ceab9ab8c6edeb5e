#include "ansicht/qt/BausteinFuer.hpp"
#include "ansicht/qt/Fliesstext.hpp"
#include "ansicht/qt/Wandlung.hpp"
#include "ansicht/qt/Wertfeld.hpp"
#include "ansicht/qt/Zeichen.hpp"

#include <QFontMetrics>
#include <QHBoxLayout>

#include <algorithm>

namespace mobilsteg {

namespace {

// Up to this width a word at the far end stays in one line, and the text before it gives way.
constexpr int laengsterZusatz = 150;

QHBoxLayout* waagerecht(QWidget* flaeche, int abstand) {
    auto* ordnung = new QHBoxLayout(flaeche);
    ordnung->setContentsMargins(0, 0, 0, 0);
    ordnung->setSpacing(abstand);
    return ordnung;
}

/// What only shows has no controls.
template <class Art>
class Anzeige : public BausteinFuer<Art> {
public:
    using BausteinFuer<Art>::BausteinFuer;
    void sammleBedienung(std::vector<QWidget*>&) const final {}
};

class Kopfbaustein final : public Anzeige<Kopf> {
public:
    explicit Kopfbaustein(QWidget* eltern)
        : Anzeige(eltern), titel_(new Fliesstext(Grad::titel, Farbe::normal, this)), punkt_(new Punkt(this)) {
        titel_->setObjectName("kopf");
        punkt_->setObjectName("kopf.punkt");
        auto* ordnung = waagerecht(this, Masse::abstand);
        ordnung->addWidget(titel_);
        ordnung->addStretch(1);
        ordnung->addWidget(punkt_);
    }

    void sammleTexte(std::vector<std::string>& texte) const override {
        texte.push_back(titel_->text().toStdString());
    }

protected:
    void setze(const Kopf& kopf) override {
        titel_->zeige(kopf.titel);
        punkt_->zeige(kopf.punkt);
    }

private:
    Fliesstext* titel_;
    Punkt* punkt_;
};

class Satzbaustein final : public Anzeige<Satz> {
public:
    explicit Satzbaustein(QWidget* eltern)
        : Anzeige(eltern), text_(new Fliesstext(Grad::normal, Farbe::normal, this)) {
        text_->setObjectName("satz");
        waagerecht(this, 0)->addWidget(text_, 1);
    }

    void sammleTexte(std::vector<std::string>& texte) const override {
        texte.push_back(text_->text().toStdString());
    }

protected:
    void setze(const Satz& satz) override {
        text_->gestalte(grad(satz.schrift), satz.farbe);
        text_->zeige(satz.text);
    }

private:
    Fliesstext* text_;
};

class Trennerbaustein final : public Anzeige<Trenner> {
public:
    explicit Trennerbaustein(QWidget* eltern) : Anzeige(eltern) {
        auto* strich = new Strich(this);
        strich->setObjectName("trenner");
        waagerecht(this, 0)->addWidget(strich, 1);
    }

    void sammleTexte(std::vector<std::string>&) const override {}

protected:
    void setze(const Trenner&) override {}
};

class Zeilenbaustein final : public Anzeige<Zeile> {
public:
    explicit Zeilenbaustein(QWidget* eltern)
        : Anzeige(eltern), bezeichnung_(new Fliesstext(Grad::zeile, Farbe::sekundaer, this)),
          wert_(new Wertfeld(this)) {
        bezeichnung_->setFixedWidth(Masse::bezeichnungsspalte);
        // Both have the same font, so their first lines stand on one base line when their tops do.
        auto* ordnung = waagerecht(this, Masse::abstand);
        ordnung->addWidget(bezeichnung_, 0, Qt::AlignTop);
        ordnung->addWidget(wert_, 1);
    }

    void sammleTexte(std::vector<std::string>& texte) const override {
        texte.push_back((bezeichnung_->text() + '\t' + wert_->wert()).toStdString());
    }

protected:
    void setze(const Zeile& zeile) override {
        const QString bezeichnung = qtText(zeile.bezeichnung);
        bezeichnung_->zeige(zeile.bezeichnung);
        wert_->zeige(zeile.wert);
        wert_->setAccessibleName(bezeichnung);
        wert_->setObjectName("zeile." + bezeichnung);
    }

private:
    Fliesstext* bezeichnung_;
    Wertfeld* wert_;
};

class Symbolbaustein final : public Anzeige<Symbolzeile> {
public:
    explicit Symbolbaustein(QWidget* eltern)
        : Anzeige(eltern), symbol_(new Symbolfeld(this)),
          text_(new Fliesstext(Grad::zeile, Farbe::normal, this)),
          zusatz_(new Fliesstext(Grad::klein, Farbe::normal, this)) {
        zusatz_->setAlignment(Qt::AlignRight);
        auto* ordnung = waagerecht(this, 0);
        ordnung->addWidget(symbol_, 0, Qt::AlignTop);
        ordnung->addSpacing(Masse::symbolabstand);
        ordnung->addWidget(text_, 0, Qt::AlignTop);
        ordnung->addStretch(1);
        ordnung->addSpacing(Masse::symbolabstand);
        // Its letters are smaller: lowered by the difference, they stand on the text's base line.
        auto* gesenkt = new QVBoxLayout;
        gesenkt->setSpacing(0);
        gesenkt->addSpacing(QFontMetrics(text_->font()).ascent() - QFontMetrics(zusatz_->font()).ascent());
        gesenkt->addWidget(zusatz_);
        gesenkt->addStretch(1);
        ordnung->addLayout(gesenkt);
    }

    void sammleTexte(std::vector<std::string>& texte) const override {
        const QString zusatz = zusatz_->text();
        texte.push_back((text_->text() + (zusatz.isEmpty() ? "" : '\t' + zusatz)).toStdString());
    }

protected:
    void setze(const Symbolzeile& zeile) override {
        symbol_->zeige(zeile.symbol, zeile.farbe);
        text_->zeige(zeile.text);
        zusatz_->zeige(zeile.zusatz);
        zusatz_->gestalte(Grad::klein, zeile.farbe);
        zusatz_->setMinimumWidth(std::min(zusatz_->volleBreite(), laengsterZusatz));
        zusatz_->setVisible(!zeile.zusatz.empty());
        symbol_->setObjectName("symbol." + qtText(zeile.symbol));
        text_->setObjectName("symbolzeile." + qtText(zeile.text));
    }

private:
    Symbolfeld* symbol_;
    Fliesstext* text_;
    Fliesstext* zusatz_;
};

struct Anzeigebau {
    QWidget* eltern;

    Baustein* operator()(const Kopf&) const { return new Kopfbaustein(eltern); }
    Baustein* operator()(const Satz&) const { return new Satzbaustein(eltern); }
    Baustein* operator()(const Trenner&) const { return new Trennerbaustein(eltern); }
    Baustein* operator()(const Zeile&) const { return new Zeilenbaustein(eltern); }
    Baustein* operator()(const Symbolzeile&) const { return new Symbolbaustein(eltern); }
    template <class Bedienelement>
    Baustein* operator()(const Bedienelement&) const {
        return nullptr;
    }
};

} // namespace

Baustein* baueAnzeige(const Element& element, QWidget* eltern) {
    return std::visit(Anzeigebau{eltern}, element);
}

} // namespace mobilsteg
