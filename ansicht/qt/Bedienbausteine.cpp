#include "ansicht/qt/BausteinFuer.hpp"
#include "ansicht/qt/Beschriftung.hpp"
#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Knopfflaeche.hpp"
#include "ansicht/qt/Wahlfeld.hpp"
#include "ansicht/qt/Wandlung.hpp"

#include <QBoxLayout>
#include <QCheckBox>

namespace mobilsteg {

namespace {

const char* bedienungswort(Bedienung was) {
    switch (was) {
    case Bedienung::experte:
        return "experte";
    case Bedienung::proxy:
        return "proxy";
    case Bedienung::automatisch:
        return "automatisch";
    case Bedienung::volltunnel:
        return "volltunnel";
    case Bedienung::vpnDurch:
        return "vpnDurch";
    case Bedienung::nurVPN:
        return "nurVPN";
    case Bedienung::profil:
        return "profil";
    case Bedienung::browser:
        return "browser";
    case Bedienung::hinweisWeg:
        return "hinweisWeg";
    case Bedienung::beenden:
        break;
    }
    return "beenden";
}

/// A row in which the single control stands at the leading edge, as wide as it needs.
void ordneLinks(QWidget* flaeche, QWidget* bedienelement) {
    auto* ordnung = new QHBoxLayout(flaeche);
    ordnung->setContentsMargins(0, 0, 0, 0);
    ordnung->addWidget(bedienelement);
    ordnung->addStretch(1);
}

class Schalterbaustein final : public BausteinFuer<Schalter> {
public:
    Schalterbaustein(const Melder& melde, QWidget* eltern)
        : BausteinFuer(eltern), melde_(melde), kasten_(new QCheckBox(this)) {
        ordneLinks(this, kasten_);
        // Until the next tree the box shows the state, not the wish: the wish may be refused.
        QObject::connect(kasten_, &QCheckBox::clicked, kasten_, [this](bool an) {
            kasten_->setChecked(!an);
            melde_({was_, an ? "an" : "aus"});
        });
    }

    void sammleTexte(std::vector<std::string>& texte) const override {
        texte.push_back(((kasten_->isChecked() ? "[x] " : "[ ] ") + beschriftung(*kasten_)).toStdString());
    }

    void sammleBedienung(std::vector<QWidget*>& bedienung) const override { bedienung.push_back(kasten_); }

protected:
    void setze(const Schalter& schalter) override {
        was_ = schalter.was;
        beschrifte(*kasten_, schalter.text, bedienbreite);
        kasten_->setChecked(schalter.an);
        kasten_->setObjectName(bedienungsname("schalter", was_, ""));
    }

private:
    const Melder& melde_;
    QCheckBox* kasten_;
    Bedienung was_ = Bedienung::experte;
};

class Knopfbaustein final : public BausteinFuer<Knopf> {
public:
    Knopfbaustein(const Melder& melde, QWidget* eltern)
        : BausteinFuer(eltern), melde_(melde), knopf_(new Knopfflaeche(this)) {
        ordneLinks(this, knopf_);
        QObject::connect(knopf_, &QPushButton::clicked, knopf_, [this] { melde_(Aktion(aktion_)); });
    }

    void sammleTexte(std::vector<std::string>& texte) const override {
        texte.push_back(beschriftung(*knopf_).toStdString());
    }

    void sammleBedienung(std::vector<QWidget*>& bedienung) const override { bedienung.push_back(knopf_); }

protected:
    void setze(const Knopf& knopf) override {
        aktion_ = knopf.aktion;
        knopf_->zeige(knopf);
        knopf_->setObjectName(bedienungsname("knopf", aktion_.was, aktion_.wert));
    }

private:
    const Melder& melde_;
    Knopfflaeche* knopf_;
    Aktion aktion_{Bedienung::beenden, ""};
};

class Reihenbaustein final : public BausteinFuer<Reihe> {
public:
    Reihenbaustein(const Melder& melde, QWidget* eltern)
        : BausteinFuer(eltern), melde_(melde), ordnung_(new QBoxLayout(QBoxLayout::LeftToRight, this)) {
        ordnung_->setContentsMargins(0, 0, 0, 0);
        ordnung_->setSpacing(Masse::abstand);
    }

    void sammleTexte(std::vector<std::string>& texte) const override {
        for (const auto* teil : teile_)
            teil->sammleTexte(texte);
    }

    void sammleBedienung(std::vector<QWidget*>& bedienung) const override {
        for (const auto* teil : teile_)
            teil->sammleBedienung(bedienung);
    }

protected:
    void setze(const Reihe& reihe) override {
        Baum neu;
        for (const auto& teil : reihe.teile)
            std::visit([&](const auto& t) { neu.emplace_back(t); }, teil);
        erneuere(gezeigt_, neu, teile_, melde_, this);
        gezeigt_ = std::move(neu);
        ordne();
    }

private:
    void ordne() {
        while (QLayoutItem* stueck = ordnung_->takeAt(0))
            delete stueck;
        int breite = -Masse::abstand;
        for (const auto* teil : teile_)
            breite += teil->sizeHint().width() + Masse::abstand;
        ordnung_->setDirection(breite > bedienbreite ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
        for (auto* teil : teile_) {
            if (teil == teile_.back())
                ordnung_->addStretch(1);
            teil->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
            ordnung_->addWidget(teil);
            teil->show();
        }
    }

    const Melder& melde_;
    QBoxLayout* ordnung_;
    std::vector<Baustein*> teile_;
    Baum gezeigt_;
};

struct Bedienbau {
    const Melder& melde;
    QWidget* eltern;

    Baustein* operator()(const Schalter&) const { return new Schalterbaustein(melde, eltern); }
    Baustein* operator()(const Knopf&) const { return new Knopfbaustein(melde, eltern); }
    Baustein* operator()(const Wahl&) const { return new Wahlbaustein(melde, eltern); }
    Baustein* operator()(const Reihe&) const { return new Reihenbaustein(melde, eltern); }
    template <class Anzeigeelement>
    Baustein* operator()(const Anzeigeelement&) const {
        return nullptr;
    }
};

} // namespace

Baustein* baueBedienung(const Element& element, const Melder& melde, QWidget* eltern) {
    return std::visit(Bedienbau{melde, eltern}, element);
}

QString bedienungsname(const char* art, Bedienung was, const std::string& wert) {
    const QString name = QString(art) + '.' + bedienungswort(was);
    return wert.empty() ? name : name + '.' + qtText(wert);
}

} // namespace mobilsteg
