#pragma once

#include <QColor>
#include <QPainterPath>
#include <QPixmap>
#include <QRectF>

#include <string>
#include <string_view>
#include <vector>

class QPainter;

namespace mobilsteg {

/// All symbols that there are drawings of.
[[nodiscard]] std::vector<std::string> symbolnamen();

/// The symbol's outline in a square of 24 by 24; of an unknown name a neutral one. To be filled with one
/// colour.
[[nodiscard]] QPainterPath symbolpfad(std::string_view name);

/// What it shows, in words, for those who cannot see it.
[[nodiscard]] QString symbolbeschreibung(std::string_view name);

/// Draws it as large as fits into the middle of `flaeche`.
void maleSymbol(QPainter& maler, const QRectF& flaeche, std::string_view name, const QColor& farbe);

/// On a transparent square of `kante` points, for a screen with `dichte` pixels per point.
[[nodiscard]] QPixmap symbolbild(std::string_view name, int kante, const QColor& farbe, double dichte);

} // namespace mobilsteg
