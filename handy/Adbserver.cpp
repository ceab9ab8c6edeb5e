#include "handy/Adbserver.hpp"

#include "plattform/Loopback.hpp"

#include <charconv>
#include <chrono>
#include <cstdlib>
#include <utility>

namespace mobilsteg {

namespace {

constexpr std::string_view zusage = "OKAY";
constexpr std::size_t laengenfeld = 4;

} // namespace

std::optional<std::uint16_t> adbServerport() {
    if (std::getenv("ADB_SERVER_SOCKET") != nullptr || std::getenv("ANDROID_ADB_SERVER_ADDRESS") != nullptr)
        return std::nullopt;
    const char* eigener = std::getenv("ANDROID_ADB_SERVER_PORT");
    const std::string_view text = eigener == nullptr || *eigener == 0 ? "5037" : eigener;
    std::uint16_t port = 0;
    const auto gelesen = std::from_chars(text.data(), text.data() + text.size(), port);
    if (gelesen.ec != std::errc() || gelesen.ptr != text.data() + text.size())
        return std::nullopt;
    return port;
}

bool Adbmeldungen::nimm(std::string_view bytes) {
    rest_ += bytes;
    if (!zugesagt_) {
        if (!rest_.starts_with(zusage.substr(0, rest_.size())))
            return false;
        if (rest_.size() < zusage.size())
            return true;
        rest_.erase(0, zusage.size());
        zugesagt_ = true;
    }
    std::string_view offen = rest_;
    std::optional<std::string_view> letzte;
    while (offen.size() >= laengenfeld) {
        std::size_t laenge = 0;
        const auto gelesen = std::from_chars(offen.data(), offen.data() + laengenfeld, laenge, 16);
        if (gelesen.ptr != offen.data() + laengenfeld)
            return false;
        if (offen.size() < laengenfeld + laenge)
            break;
        letzte = offen.substr(laengenfeld, laenge);
        offen.remove_prefix(laengenfeld + laenge);
    }
    if (letzte)
        neueste_ = *letzte;
    rest_.erase(0, rest_.size() - offen.size());
    return true;
}

std::optional<std::string> Adbmeldungen::neueste() {
    return std::exchange(neueste_, std::nullopt);
}

std::optional<std::string> forwardsVomServer() {
    const auto port = adbServerport();
    std::optional<std::string> liste;
    Adbmeldungen meldungen;
    if (port)
        frageLoopback(*port, nenneForwards, std::chrono::seconds(1), [&](std::string_view bytes) {
            if (!meldungen.nimm(bytes))
                return false;
            liste = meldungen.neueste();
            return !liste;
        });
    return liste;
}

} // namespace mobilsteg
