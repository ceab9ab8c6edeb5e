#include "plattform/Uhr.hpp"

#include <array>
#include <ctime>

namespace mobilsteg {

namespace {

std::string geformt(const std::tm& zeit, const char* muster) {
    std::array<char, 64> text{};
    const std::size_t laenge = std::strftime(text.data(), text.size(), muster, &zeit);
    return {text.data(), laenge};
}

} // namespace

std::string ortszeit(Uhr::Zeitpunkt zeit) {
    const std::time_t sekunden = std::chrono::system_clock::to_time_t(zeit);
    std::tm teile{};
    tzset(); // localtime_r alone may keep the zone of the program's start
    localtime_r(&sekunden, &teile);
    return geformt(teile, "%d.%m.%Y %H:%M:%S");
}

std::string isoZeit(Uhr::Zeitpunkt zeit) {
    const std::time_t sekunden = std::chrono::system_clock::to_time_t(zeit);
    std::tm teile{};
    gmtime_r(&sekunden, &teile);
    return geformt(teile, "%Y-%m-%dT%H:%M:%SZ");
}

} // namespace mobilsteg
