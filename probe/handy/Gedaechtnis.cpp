#include "probe/handy/Gedaechtnis.hpp"

#include "probe/handy/Text.hpp"

#include <algorithm>
#include <fstream>
#include <utility>

namespace mobilsteg::probehandy {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t hoechsterName = 180;

/// The sender chooses the name, so nothing in it may lead out of the folder or surprise a terminal.
std::string alsDateiname(std::string_view name) {
    std::string ergebnis(name.substr(0, hoechsterName));
    while (name.size() > ergebnis.size() && !ergebnis.empty() &&
           (static_cast<unsigned char>(name[ergebnis.size()]) & 0xc0U) == 0x80U) {
        ergebnis.pop_back(); // not in the middle of a character
    }
    for (char& zeichen : ergebnis) {
        const auto wert = static_cast<unsigned char>(zeichen);
        if (zeichen == '/' || zeichen == '\\' || wert < 0x20 || wert == 0x7f) {
            zeichen = '_';
        }
    }
    return ergebnis;
}

std::string dreistellig(unsigned nummer) {
    std::string ziffern = std::to_string(nummer);
    return ziffern.insert(0, ziffern.size() < 3 ? 3 - ziffern.size() : 0, '0');
}

} // namespace

std::error_code Gedaechtnis::oeffne(fs::path ordner) {
    std::error_code fehler;
    fs::create_directories(ordner / "berichte", fehler);
    if (fehler) {
        return fehler;
    }
    for (fs::directory_iterator stelle(ordner / "berichte", fehler), ende; !fehler && stelle != ende;
         stelle.increment(fehler)) {
        const std::string name = stelle->path().filename().string();
        const auto nummer = alsZahl<unsigned>(std::string_view(name).substr(0, name.find('-')));
        naechsteNummer_ = std::max(naechsteNummer_, nummer.value_or(0) + 1);
    }
    ordner_ = std::move(ordner);
    return fehler;
}

bool Gedaechtnis::merkeAnmeldung(std::string_view zeile) {
    if (!ordner_) {
        return true;
    }
    std::ofstream datei(*ordner_ / "anmeldungen.jsonl", std::ios::binary | std::ios::app);
    datei << zeile << '\n' << std::flush;
    return datei.good();
}

bool Gedaechtnis::legeBerichtAb(std::string_view name, std::string_view inhalt) {
    if (!ordner_) {
        return true;
    }
    const fs::path halb = *ordner_ / "berichte" / ".unfertig";
    std::ofstream datei(halb, std::ios::binary | std::ios::trunc);
    datei << inhalt;
    datei.close();
    std::error_code fehler;
    if (!datei.fail()) {
        fs::rename(halb, *ordner_ / "berichte" / (dreistellig(naechsteNummer_) + "-" + alsDateiname(name)),
                   fehler);
    }
    if (datei.fail() || fehler) {
        return false;
    }
    ++naechsteNummer_;
    return true;
}

} // namespace mobilsteg::probehandy
