#include "handy/Adb.hpp"

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <algorithm>
#include <utility>

namespace mobilsteg {

namespace {

constexpr double listeSekunden = 10;
constexpr double forwardSekunden = 5;

/// What is sold as "Samsung Galaxy …", by the stem of its model code behind "SM-".
constexpr std::pair<std::string_view, std::string_view> galaxys[] = {
    {"G991", "S21"},          {"G996", "S21+"},         {"G998", "S21 Ultra"}, {"G990", "S21 FE"},
    {"S901", "S22"},          {"S906", "S22+"},         {"S908", "S22 Ultra"}, {"S911", "S23"},
    {"S916", "S23+"},         {"S918", "S23 Ultra"},    {"S711", "S23 FE"},    {"S921", "S24"},
    {"S926", "S24+"},         {"S928", "S24 Ultra"},    {"S721", "S24 FE"},    {"S931", "S25"},
    {"S936", "S25+"},         {"S938", "S25 Ultra"},    {"S937", "S25 Edge"},  {"G980", "S20"},
    {"G981", "S20"},          {"G985", "S20+"},         {"G986", "S20+"},      {"G988", "S20 Ultra"},
    {"G780", "S20 FE"},       {"G781", "S20 FE"},       {"N980", "Note20"},    {"N981", "Note20"},
    {"N985", "Note20 Ultra"}, {"N986", "Note20 Ultra"}, {"F926", "Z Fold3"},   {"F936", "Z Fold4"},
    {"F946", "Z Fold5"},      {"F956", "Z Fold6"},      {"F966", "Z Fold7"},   {"F711", "Z Flip3"},
    {"F721", "Z Flip4"},      {"F731", "Z Flip5"},      {"F741", "Z Flip6"},   {"F766", "Z Flip7"},
    {"A528", "A52s"},         {"A536", "A53"},          {"A546", "A54"},       {"A556", "A55"},
    {"A566", "A56"},          {"A346", "A34"},          {"A356", "A35"},       {"A366", "A36"},
};

/// The name under which a phone is sold; of an unknown one its code, with the maker in front where it tells.
std::string verkaufsname(std::string_view modellcode) {
    const std::string gross = inGrossbuchstaben(modellcode);
    if (!gross.starts_with("SM-"))
        return (gross.starts_with("PIXEL") ? "Google " : "") + std::string(modellcode);
    // At most one letter behind the stem: it names the region that the phone was made for.
    const std::string stamm = ohneWeissraum(ersteZeichen(gross.substr(0, gross.find('/')), 8)).substr(3);
    for (const auto& [code, name] : galaxys)
        if (stamm.starts_with(code))
            return "Samsung Galaxy " + std::string(name);
    return "Samsung " + std::string(modellcode);
}

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

Adb::Adb(Laeufer laeufer, Orte orte, std::optional<std::string> ressourcen, Forwardliste forwardliste)
    : laeufer_(std::move(laeufer)), orte_(std::move(orte)), ressourcen_(std::move(ressourcen)),
      forwardliste_(std::move(forwardliste)) {}

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

std::string Adb::forwards(const std::string& pfad) const {
    const auto liste = forwardliste_ ? forwardliste_() : std::nullopt;
    return liste ? *liste : laeufer_(pfad, {"forward", "--list"}, forwardSekunden).ausgabe;
}

std::vector<Adb::Geraet> Adb::lies(std::string_view ausgabe) {
    const auto zeilen = teile(ausgabe, '\n');
    std::vector<Geraet> geraete;
    for (std::size_t i = 1; i < zeilen.size(); ++i) { // the first line is adb's heading
        const auto worte = teile(zeilen[i], ' ');
        if (worte.size() < 2)
            continue;
        const bool amKabel =
            std::any_of(worte.begin() + 2, worte.end(), [](auto w) { return w.starts_with("usb:"); });
        geraete.push_back(
            {std::string(worte[0]), std::string(worte[1]), verkaufsname(modellcode(worte)), amKabel});
    }
    return geraete;
}

} // namespace mobilsteg
