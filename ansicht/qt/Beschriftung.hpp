#pragma once

#include <QString>

#include <string>

class QAbstractButton;

namespace mobilsteg {

/// Gives the control the text and its name for those who cannot see it. Controls do not break their texts:
/// here it is done for them, so that the whole control is at most `breite` points wide.
void beschrifte(QAbstractButton& knopf, const std::string& text, int breite);

/// The text that the control shows, without the line ends that `beschrifte` put into it.
[[nodiscard]] QString beschriftung(const QAbstractButton& knopf);

} // namespace mobilsteg
