#pragma once

#include "plattform/Einstellungen.hpp"

#include <functional>
#include <memory>

namespace mobilsteg {

/// Settings as one JSON object in one file, shared by all programs that open it: each change reads, merges
/// one key and replaces the file under a lock. A file that cannot be understood counts as empty; before it
/// would be overwritten it is moved aside to "<name>.defekt", "<name>.defekt-2", …
class DateiEinstellungen final : public Einstellungen {
public:
    explicit DateiEinstellungen(std::string pfad);
    ~DateiEinstellungen() override;

    [[nodiscard]] std::optional<std::string> text(const std::string& schluessel) const override;
    [[nodiscard]] std::optional<bool> flagge(const std::string& schluessel) const override;
    [[nodiscard]] std::optional<Tabelle> tabelle(const std::string& schluessel) const override;
    void setzeText(const std::string& schluessel, const std::string& wert) override;
    void setzeFlagge(const std::string& schluessel, bool wert) override;
    void setzeTabelle(const std::string& schluessel, const Tabelle& wert) override;
    void entferne(const std::string& schluessel) override;
    [[nodiscard]] std::string textOderNeu(const std::string& schluessel, const std::string& wert) override;

private:
    struct Innen;
    std::unique_ptr<Innen> innen_;
};

} // namespace mobilsteg
