#pragma once

#include "ansicht/qt/BausteinFuer.hpp"

class QButtonGroup;
class QRadioButton;
class QVBoxLayout;

namespace mobilsteg {

class Fliesstext;

/// A choice: its label in the column of the rows' labels, beside it the values below each other.
class Wahlbaustein final : public BausteinFuer<Wahl> {
public:
    Wahlbaustein(const Melder& melde, QWidget* eltern);

    void sammleTexte(std::vector<std::string>& texte) const override;
    void sammleBedienung(std::vector<QWidget*>& bedienung) const override;

protected:
    void setze(const Wahl& wahl) override;

private:
    struct Wert {
        std::string wert;
        QRadioButton* knopf;
    };

    QRadioButton* knopfFuer(const std::string& wert);
    void waehle(const std::string& wert);

    const Melder& melde_;
    Fliesstext* bezeichnung_;
    QVBoxLayout* spalte_;
    QButtonGroup* gruppe_;
    std::vector<Wert> werte_;
    Bedienung was_ = Bedienung::profil;
    std::string gewaehlt_;
};

} // namespace mobilsteg
