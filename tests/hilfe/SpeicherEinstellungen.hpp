#pragma once

#include "plattform/Einstellungen.hpp"

#include <functional>
#include <map>
#include <variant>

namespace mobilsteg {

/// Settings that live as long as the test; `werte` is there for the test to look at and to spoil.
class SpeicherEinstellungen final : public Einstellungen {
public:
    using Wert = std::variant<std::string, bool, Tabelle>;

    [[nodiscard]] std::optional<std::string> text(const std::string& k) const override {
        return als<std::string>(k);
    }
    [[nodiscard]] std::optional<bool> flagge(const std::string& k) const override { return als<bool>(k); }
    [[nodiscard]] std::optional<Tabelle> tabelle(const std::string& k) const override {
        return als<Tabelle>(k);
    }
    void setzeText(const std::string& k, const std::string& w) override { setze(k, w); }
    void setzeFlagge(const std::string& k, bool w) override { setze(k, w); }
    void setzeTabelle(const std::string& k, const Tabelle& w) override { setze(k, w); }
    void entferne(const std::string& k) override {
        vorAenderung();
        werte.erase(k);
    }
    [[nodiscard]] std::string textOderNeu(const std::string& k, const std::string& w) override {
        if (!text(k))
            setze(k, w);
        return *text(k);
    }

    [[nodiscard]] std::optional<std::string> speicherfehler() const override {
        return !aufDerPlatte || *aufDerPlatte == werte ? std::nullopt : std::optional<std::string>("voll");
    }

    std::map<std::string, Wert> werte;
    /// What a full disk has held since; absent: it takes every change.
    std::optional<std::map<std::string, Wert>> aufDerPlatte;
    std::function<void()> vorAenderung = [] {}; ///< told before each change

private:
    void setze(const std::string& k, Wert w) {
        vorAenderung();
        werte[k] = std::move(w);
    }

    template <typename T>
    [[nodiscard]] std::optional<T> als(const std::string& k) const {
        const auto treffer = werte.find(k);
        const T* wert = treffer == werte.end() ? nullptr : std::get_if<T>(&treffer->second);
        return wert == nullptr ? std::nullopt : std::optional(*wert);
    }
};

} // namespace mobilsteg
