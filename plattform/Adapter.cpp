#include "plattform/Adapter.hpp"

#include "plattform/Nativ.hpp"
#include "plattform/portabel/DateiEinstellungen.hpp"
#include "plattform/portabel/OsascriptSkript.hpp"

namespace mobilsteg {

Einstellungsort einstellungenFuer(const Orte& orte, const std::string& kennung) {
    if (orte.wurzel.empty() && orte.heim == eigenesHeim())
        if (auto native = nativeEinstellungen(kennung))
            return {std::move(native), "Vorgaben " + kennung};
    std::string pfad = orte.imHeim("/Library/Preferences/" + kennung + ".json");
    return {std::make_unique<DateiEinstellungen>(pfad), pfad};
}

std::unique_ptr<Adminskript> adminskriptFuer(const Orte& orte) {
    auto skript = orte.wurzel.empty() ? nativesSkript() : nullptr;
    return skript ? std::move(skript) : std::make_unique<OsascriptSkript>(orte);
}

Buendel eigenesBuendel(const std::string& kennung) {
    return nativesBuendel().value_or(ordnerBuendel(kennung, eigenesProgramm()));
}

} // namespace mobilsteg
