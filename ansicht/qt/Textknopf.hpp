#pragma once

#include "ansicht/Baum.hpp"

#include <QIcon>
#include <QPushButton>

namespace mobilsteg {

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

} // namespace mobilsteg
