#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
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

    /// Why changes of this run are not stored so far, for the user; absent: all are. What has to be taken
    /// back later may only be done when its note is stored.
    [[nodiscard]] virtual std::optional<std::string> speicherfehler() const = 0;

    /// Where this object has put settings aside that nobody could read; told once. Absent: there are none.
    [[nodiscard]] virtual std::optional<std::string> beiseitegelegt() { return std::nullopt; }

    /// Stores `wert` unless a text stands there already, and returns the one that then stands. Two programs
    /// that start at the same moment get the same answer.
    [[nodiscard]] virtual std::string textOderNeu(const std::string& schluessel, const std::string& wert) = 0;
};

/// What this run may leave behind and a later one has to take back: a setting with a line each, gone when it
/// is empty. Reads and writes the settings at each call, on the caller's queue, which has to be always the
/// same one.
class Ruecknahmen {
public:
    /// `einstellungen` must outlive it.
    Ruecknahmen(Einstellungen& einstellungen, std::string schluessel)
        : einstellungen_(einstellungen), schluessel_(std::move(schluessel)) {}

    /// Empty: nothing is left behind.
    [[nodiscard]] std::set<std::string> lies() const;

    /// Instead of all that is there; an entry has no line break.
    void schreibe(const std::set<std::string>& neue);

    void merke(const std::string& eines);

    /// Without effect if it is not there.
    void vergiss(const std::string& eines);

private:
    Einstellungen& einstellungen_;
    std::string schluessel_;
};

} // namespace mobilsteg
