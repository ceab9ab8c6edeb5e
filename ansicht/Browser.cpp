#include "ansicht/Browser.hpp"

#include "plattform/Dateien.hpp"

#include <array>
#include <filesystem>

namespace mobilsteg {

namespace fs = std::filesystem;

namespace {

struct Eintrag {
    const char* name;
    const char* bundle;
    const char* app;
    const char* profil; ///< below the user's Application Support folder
};

constexpr std::array<Eintrag, 6> tabelle = {{
    {"Chrome", "com.google.Chrome", "/Applications/Google Chrome.app", "Google/Chrome"},
    {"Brave", "com.brave.Browser", "/Applications/Brave Browser.app", "BraveSoftware/Brave-Browser"},
    {"Edge", "com.microsoft.edgemac", "/Applications/Microsoft Edge.app", "Microsoft Edge"},
    {"Arc", "company.thebrowser.Browser", "/Applications/Arc.app", "Arc/User Data"},
    {"Vivaldi", "com.vivaldi.Vivaldi", "/Applications/Vivaldi.app", "Vivaldi"},
    {"Chromium", "org.chromium.Chromium", "/Applications/Chromium.app", "Chromium"},
}};

constexpr double oeffnenSekunden = 10;

/// Runs `pruefe` over the folder's entries until it says yes; a folder that cannot be listed has none.
template <typename Pruefung>
bool irgendeiner(const fs::path& ordner, Pruefung pruefe) {
    std::error_code fehler;
    for (fs::directory_iterator eintrag(ordner, fehler), ende; !fehler && eintrag != ende;
         eintrag.increment(fehler))
        if (pruefe(eintrag->path()))
            return true;
    return false;
}

bool istProfil(const fs::path& pfad) {
    const std::string name = pfad.filename().string();
    return name == "Default" || name.starts_with("Profile ");
}

} // namespace

Browser::Browser(Laeufer laeufer, Orte orte, const Einstellungen& einstellungen)
    : laeufer_(std::move(laeufer)), orte_(std::move(orte)), einstellungen_(einstellungen) {}

std::vector<Browser::Fund> Browser::finden() const {
    std::vector<Fund> funde;
    for (const auto& eintrag : tabelle) {
        std::string app = orte_.imSystem(eintrag.app);
        if (!existiert(app))
            app = orte_.imHeim(eintrag.app);
        if (!existiert(app))
            continue;
        const std::string profile =
            orte_.imHeim(std::string("/Library/Application Support/") + eintrag.profil);
        funde.push_back({eintrag.name, eintrag.bundle, hatFahrtwind(profile), app});
    }
    return funde;
}

bool Browser::hatFahrtwind(const std::string& profilwurzel) {
    // Told by its file, not by its store identifier: a developer's build counts as well.
    const auto istVersion = [](const fs::path& version) {
        return existiert((version / "notbetrieb.js").string());
    };
    const auto istErweiterung = [&](const fs::path& erweiterung) {
        return irgendeiner(erweiterung, istVersion);
    };
    return irgendeiner(profilwurzel, [&](const fs::path& profil) {
        return istProfil(profil) && irgendeiner(profil / "Extensions", istErweiterung);
    });
}

void Browser::hinzufuegen(const Fund& fund) const {
    const auto eigene = einstellungen_.text("fahrtwind.store");
    const std::string adresse = eigene && !eigene->empty() ? *eigene : MOBILSTEG_SEITE "/download/";
    (void)laeufer_(orte_.imSystem("/usr/bin/open"), {"-b", fund.bundle, adresse}, oeffnenSekunden);
}

} // namespace mobilsteg
