#pragma once

#include <QColor>
#include <QIcon>
#include <QRectF>

#include <string>

class QPainter;

namespace mobilsteg {

// The system's symbols, and where it has none of that name those of symbole.svg; each in one colour. A name
// that neither knows gives a neutral one.

/// Draws it as large as fits into the middle of `flaeche`.
void maleSymbol(QPainter& maler, const QRectF& flaeche, const std::string& name, const QColor& farbe);

/// The same, in a square; what is drawn begins at the square's left edge, where the text below it does.
void maleSymbolLinks(QPainter& maler, const QRectF& flaeche, const std::string& name, const QColor& farbe);

/// What it shows, in words, for those who cannot see it.
[[nodiscard]] QString symbolbeschreibung(const std::string& name);

/// For the menu bar, in all sizes that one may ask for.
[[nodiscard]] QIcon leistenikone(const std::string& name, const QColor& farbe);

/// In black, as a PNG file's bytes; `hoehe` in pixels.
[[nodiscard]] std::string symbolpng(const std::string& name, int hoehe);

} // namespace mobilsteg
