#include "probe/handy/Kabel.hpp"

#include "probe/handy/AdbVerbindung.hpp"
#include "probe/handy/Netz.hpp"

#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>
#include <utility>

namespace mobilsteg::probehandy {

namespace {

/// Longer than the ten seconds that adb gives a device to introduce itself.
constexpr timeval antwortfrist{15, 0};
constexpr std::chrono::seconds pruefabstand{1};

std::vector<std::shared_ptr<AdbVerbindung>> alleVerbindungen(Handy& handy) {
    const std::scoped_lock sperre(handy.schloss);
    return handy.verbindungen;
}

} // namespace

Kabel::Kabel(Handy& handy, Deskriptor horcher, int adbServer)
    : handy_(handy), horcher_(std::move(horcher)), adbServer_(adbServer) {}

void Kabel::starte() {
    std::thread([this] {
        while (true) {
            auto buchse = std::make_shared<Deskriptor>(nimmVerbindungAn(horcher_));
            std::thread([this, buchse] { bediene(std::move(*buchse)); }).detach();
        }
    }).detach();
    if (adbServer_ == 0)
        return;
    std::thread([this] {
        while (true) {
            {
                const std::scoped_lock sperre(meldung_);
                if (fehlt())
                    (void)melde();
            }
            std::this_thread::sleep_for(pruefabstand);
        }
    }).detach();
}

std::string Kabel::stecke() {
    const std::scoped_lock sperre(meldung_);
    {
        const std::scoped_lock handysperre(handy_.schloss);
        handy_.gesteckt = true;
    }
    return adbServer_ != 0 && fehlt() ? melde() : "";
}

void Kabel::ziehe() {
    const std::scoped_lock sperre(meldung_);
    {
        const std::scoped_lock handysperre(handy_.schloss);
        handy_.gesteckt = false;
    }
    if (adbServer_ != 0)
        (void)frageAdbServer("host:disconnect:");
    for (const auto& verbindung : alleVerbindungen(handy_))
        verbindung->trenne();
}

void Kabel::wendeAn() {
    bool weitergabe = false;
    bool debugging = false;
    {
        const std::scoped_lock sperre(handy_.schloss);
        weitergabe = handy_.weitergabe;
        debugging = handy_.debugging;
    }
    for (const auto& verbindung : alleVerbindungen(handy_)) {
        if (!weitergabe)
            verbindung->kappeStroeme();
        if (debugging)
            verbindung->gibFrei();
    }
}

void Kabel::bediene(Deskriptor buchse) {
    const auto verbindung = std::make_shared<AdbVerbindung>(handy_, std::move(buchse));
    {
        const std::scoped_lock sperre(handy_.schloss);
        if (!handy_.gesteckt)
            return;
        handy_.verbindungen.push_back(verbindung);
    }
    verbindung->betreibe();
    const std::scoped_lock sperre(handy_.schloss);
    std::erase(handy_.verbindungen, verbindung);
}

bool Kabel::verbunden() {
    const std::scoped_lock sperre(handy_.schloss);
    return std::any_of(handy_.verbindungen.begin(), handy_.verbindungen.end(),
                       [](const auto& verbindung) { return verbindung->begruesst(); });
}

bool Kabel::fehlt() {
    const bool da = verbunden();
    const std::scoped_lock sperre(handy_.schloss);
    return handy_.gesteckt && !da;
}

std::string Kabel::melde() {
    std::string antwort = frageAdbServer("host:connect:");
    if (!verbunden() && antwort.find("already") != std::string::npos) {
        // The server still lists the phone that it lost and would come back to it in its own time.
        (void)frageAdbServer("host:disconnect:");
        antwort = frageAdbServer("host:connect:");
    }
    return verbunden() ? "" : "der adb-Server hat sich nicht verbunden: " + antwort;
}

std::string Kabel::frageAdbServer(const std::string& dienst) const {
    const Deskriptor buchse = verbinde(adbServer_);
    if (!buchse)
        return "kein adb-Server erreichbar";
    ::setsockopt(buchse.nummer(), SOL_SOCKET, SO_RCVTIMEO, &antwortfrist, sizeof antwortfrist);
    const std::string frage = dienst + "127.0.0.1:" + std::to_string(portVon(horcher_));
    char laenge[8];
    std::snprintf(laenge, sizeof laenge, "%04zx", frage.size());
    sende(buchse, laenge + frage);
    return liesAlles(buchse); // it closes behind its answer
}

} // namespace mobilsteg::probehandy
