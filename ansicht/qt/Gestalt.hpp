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

/// At each side of a button's text, at least; some styles leave next to nothing.
inline constexpr int knopfrand = 12;

[[nodiscard]] QString qtText(const std::string& text);

/// The same for a button, where "&" would announce a shortcut.
[[nodiscard]] QString knopftext(const std::string& text);

/// The application's font, which the controls have, or up to three points smaller.
[[nodiscard]] QFont schriftart(Schrift schrift);

/// For texts and symbols on the window's background.
[[nodiscard]] QColor ton(Farbe farbe, const QPalette& palette);

/// For filled areas, which have to shine more than be read.
[[nodiscard]] QColor leuchtton(Farbe farbe, const QPalette& palette);

/// For text that can be clicked.
[[nodiscard]] QColor akzent(const QPalette& palette);

/// What the heading's dot says, for those who cannot see it.
[[nodiscard]] QString punktbedeutung(Farbe farbe);

} // namespace mobilsteg
