#include "plattform/Buendel.hpp"

#ifdef __APPLE__
#include <mach-o/dyld.h>

#include <array>
#include <climits>
#include <cstdint>
#endif

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
#ifdef __APPLE__
    std::array<char, PATH_MAX> pfad{};
    std::uint32_t platz = pfad.size();
    return ::_NSGetExecutablePath(pfad.data(), &platz) == 0 ? pfad.data() : std::string();
#else
    std::error_code fehler;
    const fs::path pfad = fs::read_symlink("/proc/self/exe", fehler);
    return fehler ? std::string() : pfad.string();
#endif
}

} // namespace mobilsteg
