#pragma once

#include "ansicht/Baum.hpp"

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QString>

namespace mobilsteg {

/// The widest that a control may get: the panel's width without its edges, or with the scroll bar of a panel
/// taller than the screen in the place of the far edge.
inline constexpr int breitesterRollbalken = 16;
inline constexpr int randAmRollbalken = 4;
inline constexpr int bedienbreite = Masse::breite - Masse::rand - breitesterRollbalken - randAmRollbalken;

[[nodiscard]] QString qtText(const std::string& text);

/// The same for a button, where "&" would announce a shortcut.
[[nodiscard]] QString knopftext(const std::string& text);

/// Derived from the platform's default font, which the controls have, and never below 8 points.
[[nodiscard]] QFont schriftart(Schrift schrift);

/// For texts and symbols on the window's background.
[[nodiscard]] QColor ton(Farbe farbe, const QPalette& palette);

/// For filled areas, which have to shine more than be read.
[[nodiscard]] QColor leuchtton(Farbe farbe, const QPalette& palette);

/// For text that can be clicked.
[[nodiscard]] QColor akzent(const QPalette& palette);

/// The name of the colour, for those who cannot see it.
[[nodiscard]] const char* farbname(Farbe farbe);

} // namespace mobilsteg
