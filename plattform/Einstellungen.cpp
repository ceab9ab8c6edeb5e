#include "plattform/Einstellungen.hpp"

#include "plattform/Text.hpp"

namespace mobilsteg {

std::set<std::string> Ruecknahmen::lies() const {
    const std::string text = einstellungen_.text(schluessel_).value_or("");
    const auto zeilen = teile(text, '\n');
    return {zeilen.begin(), zeilen.end()};
}

void Ruecknahmen::schreibe(const std::set<std::string>& neue) {
    if (neue == lies())
        return;
    if (neue.empty())
        return einstellungen_.entferne(schluessel_);
    std::string text;
    for (const auto& eines : neue)
        text += eines + "\n";
    einstellungen_.setzeText(schluessel_, text);
}

void Ruecknahmen::merke(const std::string& eines) {
    auto alle = lies();
    alle.insert(eines);
    schreibe(alle);
}

void Ruecknahmen::vergiss(const std::string& eines) {
    auto alle = lies();
    alle.erase(eines);
    schreibe(alle);
}

} // namespace mobilsteg
