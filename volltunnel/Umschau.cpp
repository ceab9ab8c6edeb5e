#include "volltunnel/Umschau.hpp"

#include "plattform/Text.hpp"

#include <asio/post.hpp>

#include <netdb.h>

#include <algorithm>

#include "volltunnel/Werkzeug.hpp"

namespace mobilsteg::volltunnel {

namespace {

constexpr std::chrono::seconds abstand{3};

std::optional<Adresse> alsAdresse(std::string_view text) {
    std::error_code fehler;
    const auto adresse = asio::ip::make_address(std::string(text), fehler);
    return fehler ? std::nullopt : std::optional(adresse);
}

/// The address in "10.0.0.1:443" or "[fd00::1]:443".
std::optional<Adresse> ohnePort(std::string_view text) {
    const auto ende = text.rfind(':');
    if (ende == std::string_view::npos)
        return std::nullopt;
    text = text.substr(0, ende);
    if (text.starts_with('[') && text.ends_with(']'))
        text = text.substr(1, text.size() - 2);
    return alsAdresse(text);
}

} // namespace

std::vector<Vpn> liesVpnliste(std::string_view text) {
    std::vector<Vpn> vpns;
    for (const auto zeile : teile(text, '\n')) {
        const auto von = zeile.find('"');
        const auto bis = von == std::string_view::npos ? von : zeile.find('"', von + 1);
        if (bis == std::string_view::npos || inKleinbuchstaben(zeile).find("tailscale") != std::string::npos)
            continue;
        vpns.push_back({std::string(zeile.substr(von + 1, bis - von - 1)),
                        {},
                        zeile.find("(Connected)") != std::string_view::npos});
    }
    return vpns;
}

std::string liesServer(std::string_view text) {
    for (const auto zeile : teile(text, '\n')) {
        const auto trenner = zeile.find(" : ");
        if (trenner == std::string_view::npos)
            continue;
        const auto feld = beschnitten(zeile.substr(0, trenner)); // "CommRemoteAddress" in older kinds
        if (feld.ends_with("RemoteAddress") || feld == "ServerAddress")
            return std::string(beschnitten(zeile.substr(trenner + 3)));
    }
    return "";
}

std::vector<Openvpn> liesOpenvpn(std::string_view text) {
    std::vector<Openvpn> verbindungen;
    for (const auto zeile : teile(text, '\n'))
        for (const auto wort : teile(zeile, ' ')) {
            const auto pfeil = wort.find("->");
            if (!wort.starts_with('n') || pfeil == std::string_view::npos)
                continue;
            const auto hier = ohnePort(wort.substr(1, pfeil - 1));
            const auto dort = ohnePort(wort.substr(pfeil + 2));
            if (hier && dort && !dort->is_loopback()) // its own control port
                verbindungen.push_back({*hier, *dort});
        }
    return verbindungen;
}

Vpnbefund Vpnwege::werte(const std::vector<Vpn>& vpns, const std::vector<Openvpn>& openvpn,
                         const std::function<bool(const Adresse&)>& lebt) {
    Vpnbefund befund;
    const auto weg = [&](const Adresse& server, bool verbunden) {
        const bool geht = lebt(server);
        if ((geht || (!verbunden && durch_)) == nurVPN_)
            befund.wege.insert(server);
        return geht;
    };
    for (const Vpn& vpn : vpns) {
        const Adresse* gehende = nullptr;
        for (const Adresse& server : vpn.server)
            if (weg(server, vpn.verbunden))
                gehende = &server;
        if (gehende != nullptr)
            befund.gesichert.emplace_back(vpn.name, gehende->to_string());
    }
    std::set<Adresse> verbundene;
    for (const Openvpn& eine : openvpn)
        verbundene.insert(eine.server);
    gemerkt_.insert(verbundene.begin(), verbundene.end());
    for (const Adresse& server : gemerkt_)
        if (weg(server, verbundene.contains(server)) && verbundene.contains(server))
            befund.gesichert.emplace_back("OpenVPN", server.to_string());
    return befund;
}

Umschau::Umschau(asio::io_context& kontext, std::string wurzel, std::function<void(std::vector<Vpn>)> neues)
    : wurzel_(std::move(wurzel)), faden_([this, &kontext, neues = std::move(neues)] {
          std::unique_lock wache(schloss_);
          while (!halt_) {
              wache.unlock();
              asio::post(kontext, [neues, vpns = sieh()] { neues(vpns); });
              wache.lock();
              wecker_.wait_for(wache, abstand, [this] { return halt_; });
          }
      }) {}

Umschau::~Umschau() {
    {
        const std::lock_guard wache(schloss_);
        halt_ = true;
    }
    wecker_.notify_one();
    faden_.join();
}

std::vector<Vpn> Umschau::sieh() {
    const std::string scutil = wurzel_ + "/usr/sbin/scutil";
    auto vpns = liesVpnliste(fuehreAus({scutil, "--nc", "list"}, std::chrono::seconds(5)).ausgabe);
    for (Vpn& vpn : vpns)
        vpn.server = adressen(
            liesServer(fuehreAus({scutil, "--nc", "show", vpn.name}, std::chrono::seconds(5)).ausgabe));
    return vpns;
}

std::vector<Adresse> Umschau::adressen(const std::string& server) {
    if (server.empty())
        return {};
    if (const auto adresse = alsAdresse(server))
        return {*adresse};
    auto& alle = aufgeloest_[server];
    addrinfo wunsch{};
    wunsch.ai_socktype = SOCK_STREAM;
    addrinfo* gefundene = nullptr;
    if (::getaddrinfo(server.c_str(), nullptr, &wunsch, &gefundene) == 0) {
        for (const addrinfo* a = gefundene; a != nullptr; a = a->ai_next) {
            Stelle stelle;
            if (a->ai_addrlen > stelle.capacity())
                continue;
            stelle.resize(a->ai_addrlen);
            std::copy_n(reinterpret_cast<const std::uint8_t*>(a->ai_addr), a->ai_addrlen,
                        reinterpret_cast<std::uint8_t*>(stelle.data()));
            alle.insert(stelle.address());
        }
        ::freeaddrinfo(gefundene);
    }
    return {alle.begin(), alle.end()};
}

} // namespace mobilsteg::volltunnel
