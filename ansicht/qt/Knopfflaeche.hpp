#pragma once

#include "ansicht/Baum.hpp"

#include <QPushButton>

namespace mobilsteg {

/// A push button as the panel has them: with an application's icon, or as mere text that can be clicked.
class Knopfflaeche final : public QPushButton {
public:
    explicit Knopfflaeche(QWidget* eltern);

    void zeige(const Knopf& knopf);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* ereignis) override;

private:
    [[nodiscard]] bool wieUeblich() const { return !isFlat() && !mitBild_; }
    [[nodiscard]] QSize inhaltsgroesse() const;
    void maleInhalt(QPainter& maler, const QRect& flaeche, QColor farbe) const;

    Farbe farbe_ = Farbe::normal;
    bool mitBild_ = false;
    QIcon bild_; ///< none: the generic drawing
};

} // namespace mobilsteg
