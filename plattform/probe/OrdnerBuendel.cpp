#include "plattform/Buendel.hpp"

#include <filesystem>

namespace mobilsteg {

namespace fs = std::filesystem;

Buendel ordnerBuendel(std::string kennung, const std::string& programm) {
    Buendel buendel;
    buendel.kennung = std::move(kennung);
    buendel.version = MOBILSTEG_VERSION;
    buendel.bauversion = MOBILSTEG_BAU;
    const fs::path ressourcen = fs::path(programm).parent_path().parent_path() / "Resources";
    std::error_code fehler;
    if (fs::is_directory(ressourcen, fehler))
        buendel.ressourcen = ressourcen.string();
    return buendel;
}

std::string eigenesProgramm() {
    std::error_code fehler;
    const fs::path pfad = fs::read_symlink("/proc/self/exe", fehler);
    return fehler ? std::string() : pfad.string();
}

} // namespace mobilsteg
