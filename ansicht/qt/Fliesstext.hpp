#pragma once

#include "ansicht/qt/Gestalt.hpp"

#include <QLabel>

namespace mobilsteg {

/// Text that takes as many lines as it needs. A plain label does so only between words and would cut off a
/// path or an address that is longer than a line.
class Fliesstext final : public QLabel {
public:
    Fliesstext(Grad grad, Farbe farbe, QWidget* eltern);

    void zeige(const std::string& inhalt);
    void gestalte(Grad grad, Farbe farbe);

    /// The width that it needs to stay in one line, in points.
    [[nodiscard]] int volleBreite() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] int heightForWidth(int breite) const override;

protected:
    void paintEvent(QPaintEvent* ereignis) override;

private:
    Grad grad_;
    Farbe farbe_;
};

} // namespace mobilsteg
