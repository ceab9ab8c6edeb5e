#include "plattform/Orte.hpp"

#include "plattform/Adapter.hpp"
#include "plattform/Dateien.hpp"

#ifdef __APPLE__
#include <mach-o/dyld.h>
#endif

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <filesystem>

namespace mobilsteg {

namespace fs = std::filesystem;

std::string rueckbaunotiz(const std::string& wurzel) {
    const std::string mac = wurzel + "/var/db";
    return (existiert(mac) ? mac : wurzel + "/var/lib") + "/mobilsteg-volltunnel.rueckbau";
}

std::string eigenesHeim() {
    // The account's first: paths below it are handed to a helper with all rights, and anybody may set HOME.
    if (const passwd* konto = getpwuid(getuid());
        konto != nullptr && konto->pw_dir != nullptr && *konto->pw_dir == '/')
        return absoluterPfad(konto->pw_dir);
    if (const char* heim = std::getenv("HOME"); heim != nullptr && *heim == '/')
        return absoluterPfad(heim);
    return {};
}

std::string eigenesProgramm() {
#ifdef __APPLE__
    std::array<char, PATH_MAX> pfad{};
    std::uint32_t platz = pfad.size();
    return ::_NSGetExecutablePath(pfad.data(), &platz) == 0 ? pfad.data() : std::string();
#else
    std::error_code fehler;
    return fs::read_symlink("/proc/self/exe", fehler).string();
#endif
}

std::string absoluterPfad(const std::string& pfad) {
    std::error_code fehler;
    auto absolut = fs::absolute(pfad, fehler).lexically_normal().string();
    if (fehler)
        absolut = pfad;
    while (absolut.ends_with('/'))
        absolut.pop_back();
    return absolut;
}

std::string rechnername() {
    if (auto eigener = nativerRechnername(); eigener && !eigener->empty())
        return *eigener;
    std::array<char, 256> name{};
    (void)!gethostname(name.data(), name.size() - 1);
    return name[0] == '\0' ? "Mac" : name.data();
}

} // namespace mobilsteg
