#include "plattform/Adapter.hpp"

#include <filesystem>

namespace mobilsteg {

namespace fs = std::filesystem;

Einstellungsort einstellungenFuer(const Orte& orte, const std::string& kennung) {
    if (orte.wurzel.empty() && orte.heim == eigenesHeim())
        if (auto native = nativeEinstellungen(kennung))
            return {std::move(native), "Vorgaben " + kennung};
    const std::string pfad = orte.imHeim("/Library/Preferences/" + kennung + ".json");
    return {dateiEinstellungen(pfad), pfad};
}

std::unique_ptr<Adminskript> adminskriptFuer(const Orte& orte) {
    auto skript = orte.wurzel.empty() ? nativesSkript() : nullptr;
    return skript ? std::move(skript) : osascriptSkript(orte);
}

Buendel eigenesBuendel(const std::string& kennung) {
    return nativesBuendel().value_or(ordnerBuendel(kennung, eigenesProgramm()));
}

Buendel ordnerBuendel(const std::string& kennung, const std::string& programm) {
    Buendel buendel{kennung, std::nullopt, MOBILSTEG_VERSION, MOBILSTEG_BAU};
    const fs::path ressourcen = fs::path(programm).parent_path().parent_path() / "Resources";
    std::error_code fehler;
    if (fs::is_directory(ressourcen, fehler))
        buendel.ressourcen = ressourcen.string();
    return buendel;
}

} // namespace mobilsteg
