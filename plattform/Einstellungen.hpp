#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace mobilsteg {

/// The user's settings, kept across runs. Every operation may be called on any queue and blocks on the disk
/// at most. A key that is missing and one that holds another type are the same: absent.
///
/// A change that cannot be stored still holds for this run and is stored with the next one that can.
class Einstellungen {
public:
    using Tabelle = std::map<std::string, std::int64_t>;

    virtual ~Einstellungen() = default;

    [[nodiscard]] virtual std::optional<std::string> text(const std::string& schluessel) const = 0;
    [[nodiscard]] virtual std::optional<bool> flagge(const std::string& schluessel) const = 0;
    [[nodiscard]] virtual std::optional<Tabelle> tabelle(const std::string& schluessel) const = 0;

    virtual void setzeText(const std::string& schluessel, const std::string& wert) = 0;
    virtual void setzeFlagge(const std::string& schluessel, bool wert) = 0;
    virtual void setzeTabelle(const std::string& schluessel, const Tabelle& wert) = 0;
    virtual void entferne(const std::string& schluessel) = 0;

    /// Stores `wert` unless a text stands there already, and returns the one that then stands. Two programs
    /// that start at the same moment get the same answer.
    [[nodiscard]] virtual std::string textOderNeu(const std::string& schluessel, const std::string& wert) = 0;
};

} // namespace mobilsteg
