#pragma once

#include <QString>

#include <string>

namespace mobilsteg {

[[nodiscard]] inline QString qtText(const std::string& text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace mobilsteg
