#include "handy/Adb.hpp"

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <algorithm>
#include <array>

namespace mobilsteg {

namespace {

constexpr double listeSekunden = 10;

struct Eintrag {
    std::string_view stamm;
    std::string_view name;
};

constexpr std::array<Eintrag, 48> samsung = {{
    {"SM-G991", "Samsung Galaxy S21"},          {"SM-G996", "Samsung Galaxy S21+"},
    {"SM-G998", "Samsung Galaxy S21 Ultra"},    {"SM-G990", "Samsung Galaxy S21 FE"},
    {"SM-S901", "Samsung Galaxy S22"},          {"SM-S906", "Samsung Galaxy S22+"},
    {"SM-S908", "Samsung Galaxy S22 Ultra"},    {"SM-S911", "Samsung Galaxy S23"},
    {"SM-S916", "Samsung Galaxy S23+"},         {"SM-S918", "Samsung Galaxy S23 Ultra"},
    {"SM-S711", "Samsung Galaxy S23 FE"},       {"SM-S921", "Samsung Galaxy S24"},
    {"SM-S926", "Samsung Galaxy S24+"},         {"SM-S928", "Samsung Galaxy S24 Ultra"},
    {"SM-S721", "Samsung Galaxy S24 FE"},       {"SM-S931", "Samsung Galaxy S25"},
    {"SM-S936", "Samsung Galaxy S25+"},         {"SM-S938", "Samsung Galaxy S25 Ultra"},
    {"SM-S937", "Samsung Galaxy S25 Edge"},     {"SM-G980", "Samsung Galaxy S20"},
    {"SM-G981", "Samsung Galaxy S20"},          {"SM-G985", "Samsung Galaxy S20+"},
    {"SM-G986", "Samsung Galaxy S20+"},         {"SM-G988", "Samsung Galaxy S20 Ultra"},
    {"SM-G780", "Samsung Galaxy S20 FE"},       {"SM-G781", "Samsung Galaxy S20 FE"},
    {"SM-N980", "Samsung Galaxy Note20"},       {"SM-N981", "Samsung Galaxy Note20"},
    {"SM-N985", "Samsung Galaxy Note20 Ultra"}, {"SM-N986", "Samsung Galaxy Note20 Ultra"},
    {"SM-F926", "Samsung Galaxy Z Fold3"},      {"SM-F936", "Samsung Galaxy Z Fold4"},
    {"SM-F946", "Samsung Galaxy Z Fold5"},      {"SM-F956", "Samsung Galaxy Z Fold6"},
    {"SM-F966", "Samsung Galaxy Z Fold7"},      {"SM-F711", "Samsung Galaxy Z Flip3"},
    {"SM-F721", "Samsung Galaxy Z Flip4"},      {"SM-F731", "Samsung Galaxy Z Flip5"},
    {"SM-F741", "Samsung Galaxy Z Flip6"},      {"SM-F766", "Samsung Galaxy Z Flip7"},
    {"SM-A528", "Samsung Galaxy A52s"},         {"SM-A536", "Samsung Galaxy A53"},
    {"SM-A546", "Samsung Galaxy A54"},          {"SM-A556", "Samsung Galaxy A55"},
    {"SM-A566", "Samsung Galaxy A56"},          {"SM-A346", "Samsung Galaxy A34"},
    {"SM-A356", "Samsung Galaxy A35"},          {"SM-A366", "Samsung Galaxy A36"},
}};

std::optional<std::string_view> nachschlagen(std::string_view stamm) {
    const auto* treffer =
        std::find_if(samsung.begin(), samsung.end(), [&](const Eintrag& e) { return e.stamm == stamm; });
    return treffer == samsung.end() ? std::nullopt : std::optional(treffer->name);
}

constexpr std::size_t laengsterCode = 8;

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

std::string Geraetename::schoen(std::string_view modellcode) {
    const std::string gross = inGrossbuchstaben(modellcode);
    if (!gross.starts_with("SM-"))
        return (gross.starts_with("PIXEL") ? "Google " : "") + std::string(modellcode);

    const std::string_view ohneZusatz = std::string_view(gross).substr(0, gross.find('/'));
    std::string stamm = ohneWeissraum(ersteZeichen(ohneZusatz, laengsterCode));
    // The last letter names the region the phone was made for.
    if (!nachschlagen(stamm) && zeichenzahl(stamm) >= laengsterCode)
        stamm = ersteZeichen(stamm, laengsterCode - 1);
    if (const auto name = nachschlagen(stamm))
        return std::string(*name);
    return "Samsung " + std::string(modellcode);
}

} // namespace mobilsteg
