#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>

#include <string>

namespace mobilsteg {

/// The symbol and the short text beside it, `hoehe` pixels high and as wide as they need.
[[nodiscard]] QPixmap leistenbild(const std::string& symbol, const std::string& kurz, const QColor& farbe,
                                  int hoehe);

/// The symbol alone as a PNG file's bytes.
[[nodiscard]] std::string symbolpng(const std::string& symbol, int hoehe);

/// For the menu bar. Only a mac's takes pictures of any width; elsewhere they are squeezed into a square, so
/// that there the symbol stands alone.
[[nodiscard]] QIcon leistenikone(const std::string& symbol, const std::string& kurz, const QColor& farbe);

} // namespace mobilsteg
