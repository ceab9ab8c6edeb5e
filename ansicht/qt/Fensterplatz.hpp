#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace mobilsteg {

/// Where a window of that size stands by the item: centred below it, above it where there is no room below,
/// and moved so far that it lies within `schirm`. All in points. Pure.
[[nodiscard]] QPoint fensterplatz(const QRect& stueck, QSize fenster, const QRect& schirm);

} // namespace mobilsteg
