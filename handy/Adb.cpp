#include "handy/Adb.hpp"

#include "handy/Geraetename.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <algorithm>

namespace mobilsteg {

namespace {

constexpr double listeSekunden = 10;

std::string modellcode(const std::vector<std::string_view>& worte) {
    constexpr std::string_view marke = "model:";
    const auto wort = std::find_if(worte.begin(), worte.end(), [&](auto w) { return w.starts_with(marke); });
    if (wort == worte.end())
        return "";
    std::string code(wort->substr(marke.size()));
    // adb prints every character but letters and digits as an underscore.
    std::replace(code.begin(), code.end(), '_', '-');
    return code;
}

} // namespace

Adb::Adb(Laeufer laeufer, Orte orte, std::optional<std::string> ressourcen)
    : laeufer_(std::move(laeufer)), orte_(std::move(orte)), ressourcen_(std::move(ressourcen)) {}

std::vector<std::string> Adb::kandidaten() const {
    std::vector<std::string> pfade;
    if (ressourcen_)
        pfade.push_back(*ressourcen_ + "/adb");
    pfade.push_back(orte_.imSystem("/opt/homebrew/bin/adb"));
    pfade.push_back(orte_.imHeim("/Library/Android/sdk/platform-tools/adb"));
    pfade.push_back(orte_.imSystem("/usr/local/bin/adb"));
    pfade.push_back(orte_.imSystem("/opt/homebrew/share/android-commandlinetools/platform-tools/adb"));
    return pfade;
}

std::optional<std::string> Adb::finden() const {
    for (const auto& pfad : kandidaten())
        if (istAusfuehrbar(pfad))
            return pfad;
    return std::nullopt;
}

std::vector<Adb::Geraet> Adb::geraete(const std::string& pfad) const {
    return lies(laeufer_(pfad, {"devices", "-l"}, listeSekunden).ausgabe);
}

std::vector<Adb::Geraet> Adb::lies(std::string_view ausgabe) {
    const auto zeilen = teile(ausgabe, '\n');
    std::vector<Geraet> geraete;
    for (std::size_t i = 1; i < zeilen.size(); ++i) { // the first line is adb's heading
        const auto worte = teile(zeilen[i], ' ');
        if (worte.size() < 2)
            continue;
        geraete.push_back(
            {std::string(worte[0]), std::string(worte[1]), Geraetename::schoen(modellcode(worte))});
    }
    return geraete;
}

} // namespace mobilsteg
