#include "plattform/Orte.hpp"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace mobilsteg {

std::string eigenesHeim() {
    if (const char* heim = std::getenv("HOME"); heim != nullptr && *heim == '/')
        return absoluterPfad(heim);
    if (const passwd* konto = getpwuid(getuid()); konto != nullptr && konto->pw_dir != nullptr)
        return absoluterPfad(konto->pw_dir);
    return {};
}

std::string absoluterPfad(const std::string& pfad) {
    std::error_code fehler;
    auto absolut = std::filesystem::absolute(pfad, fehler).lexically_normal().string();
    if (fehler)
        absolut = pfad;
    while (absolut.size() > 1 && absolut.back() == '/')
        absolut.pop_back();
    return absolut == "/" ? std::string() : absolut;
}

} // namespace mobilsteg
