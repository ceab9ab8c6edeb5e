// What happens in the world, and what the user does. Nothing here sleeps: a process that dies takes its own
// jobs with it, and the world's must not be among them.

#include "plattform/Dateien.hpp"
#include "tests/simulation/Sturmwelt.hpp"

#include <algorithm>

namespace mobilsteg {

void Sturmwelt::schlageZu() {
    if (wuerfel(0.15))
        aendereDieWelt();
    if (wuerfel(0.06) && kabel)
        haupt.async([this] {
            if (!kabel)
                return;
            ++offeneKlicks_;
            klicke();
            q->async([this] {
                --offeneKlicks_;
                nachTick_ = false;
            });
        });
    if (luege_ == Luege::vergesslich && !gesetzt_.empty())
        einstellungen.werte.erase(gesetzt_.begin()->first);
    if (luege_ == Luege::doppelteZeile) {
        const std::string pfad = ordner.pfad() + "/heim/Library/Logs/MobilstegBordlotse.log";
        const auto text = liesDatei(pfad).value_or("");
        if (text.size() > 1)
            (void)haengeAn(pfad, text.substr(text.rfind('\n', text.size() - 2) + 1));
    }
}

Modellhandy Sturmwelt::neuesHandy() {
    Modellhandy handy;
    handy.serial = wuerfel(0.7) ? "R5CT1" : "ZY22";
    handy.zustand = wuerfel(0.8) ? "device" : wuerfel(0.5) ? "unauthorized" : "offline";
    handy.teilt = wuerfel(0.8);
    handy.entscheid = wuerfel(0.7) ? "erlaubt" : wuerfel(0.5) ? "wartet" : "abgelehnt";
    if (wuerfel(0.1))
        handy.austritt.reset();
    if (wuerfel(0.6))
        handy.status = R"({"alles":false,"notlage":true,"notlage_grund":"Bahn","paths":[{"iface":"wlan0",)"
                       R"("healthy":false,"rtt_ms":90,"rtt_ruhe_ms":40}],"kunden":[]})";
    return handy;
}

/// What adb does by itself when a phone is no longer usable.
void Sturmwelt::vergissForwards() {
    std::erase_if(forwards, [this](const auto& forward) {
        return std::none_of(handys.begin(), handys.end(), [&](const auto& h) {
            return h.serial == forward.second && h.zustand == "device";
        });
    });
}

void Sturmwelt::aendereDieWelt() {
    auto* handy = handys.empty() ? nullptr : &handys.front();
    const auto ereignis = waehle(20);
    switch (ereignis) {
    case 0:
    case 1:
        handys.clear();
        break;
    case 2:
    case 3:
    case 4:
    case 5:
        handys = {neuesHandy()};
        break;
    case 6:
        handys.resize(std::min<std::size_t>(handys.size(), 1));
        handys.push_back(neuesHandy());
        handys.back().serial = handys.front().serial == "ZWEITES" ? "DRITTES" : "ZWEITES";
        break;
    case 7:
        if (handy != nullptr)
            handy->zustand = wuerfel(0.7) ? "device" : "unauthorized";
        break;
    case 8:
    case 9:
        if (handy != nullptr)
            handy->entscheid = wuerfel(0.7) ? "erlaubt" : wuerfel(0.5) ? "wartet" : "abgelehnt";
        break;
    case 10:
        if (handy != nullptr)
            handy->teilt = !handy->teilt;
        break;
    case 11: // the adb server was started anew
        forwards.clear();
        break;
    case 12: {
        const int port = std::array{1080, 8080, 18080, 18081}[waehle(4)];
        if (belegtePorts.erase(port) == 0 && !forwards.contains(port) && wuerfel(0.5))
            belegtePorts.insert(port);
        break;
    }
    case 13:
        schnittstelle = std::array{"", "en0", "en7"}[waehle(3)];
        break;
    case 14:
        if (helfer > 0 && !helferleben.empty() && helferleben.back())
            helferBautZurueck(wuerfel(0.5) ? "kein Netz" : "");
        break;
    case 15:
        welt.stelleWanduhr(std::chrono::seconds(static_cast<int>(waehle(20000)) - 10000));
        break;
    case 16:
        forwardFehler = wuerfel(0.3) ? "adb: error: closed" : "";
        break;
    case 17:
        networksetupFehler = wuerfel(0.3) ? "** Error: Command requires admin privileges." : "";
        break;
    case 18:
        tunnel = {};
        tunnel.passwort = dauer(20);
        tunnel.bisLaeuft = dauer(50);
        tunnel.stumm = wuerfel(0.1);
        tunnel.bisWeg = dauer(9); // more, and two ticks would not do
        if (wuerfel(0.2))
            tunnel.zurueckgebaut = "kein Netz";
        if (wuerfel(0.2))
            tunnel.skriptfehler = Skriptfehler{false, -128, "Abgebrochen."};
        break;
    default:
        nimmtBerichte = !nimmtBerichte;
        ausgaben["scutil"] =
            wuerfel(0.5) ? "* (Connected) 1-2 PPP --> Firma \"Firma (West)\" [PPP:L2TP]\n" : "";
        ausgaben["pgrep"] = "42\n";
        ausgaben["lsof"] = "COMMAND PID USER FD TYPE DEVICE SIZE/OFF NODE NAME\nssh 7 u 3u IPv4 0x1 0t0 TCP "
                           "10.0.0.2:50000->198.51.100.1:22 (ESTABLISHED)\n";
        break;
    }
    std::string lage;
    for (const auto& h : handys)
        lage += " " + h.serial + " " + h.zustand + " " + h.entscheid + (h.teilt ? "" : " (teilt nicht)");
    erzaehle("Schicksal " + std::to_string(ereignis) + lage);
    stecke(handys);
}

void Sturmwelt::stecke(std::vector<Modellhandy> neue) {
    handys = std::move(neue);
    vergissForwards();
    if (wegGueltig())
        ticksOhneWeg_ = -1;
    else if (ticksOhneWeg_ < 0)
        ticksOhneWeg_ = 0;
}

/// Only what the user sets and the program stores without asking is remembered here.
void Sturmwelt::setzt(const std::string& schluessel, SpeicherEinstellungen::Wert wert) {
    gesetzt_[schluessel] = std::move(wert);
}

void Sturmwelt::klicke() {
    const bool an = wuerfel(0.6);
    const auto knopf = waehle(10);
    erzaehle("Klick " + std::to_string(knopf) + (an ? " an" : " aus"));
    // While the call is under way the process may die before or after it stored the value.
    const auto setze = [&](const char* schluessel, void (Kabel::*schalter)(bool)) {
        gesetzt_.erase(schluessel);
        (kabel.get()->*schalter)(an);
        setzt(schluessel, an);
    };
    switch (knopf) {
    case 0:
    case 1:
        return kabel->proxyUmschalten();
    case 2:
        return setze("proxy.automatisch", &Kabel::setzeProxyAutomatisch);
    case 3:
        return setze("experte", &Kabel::setzeExperte);
    case 4:
    case 5:
        return kabel->setzeVolltunnelAn(an);
    case 6:
        return setze("vpnDurch", &Kabel::setzeVpnDurch);
    case 7:
        return setze("nurVPN", &Kabel::setzeNurVPN);
    case 8:
        if (wuerfel(0.3)) {
            gesetzt_.clear(); // the profile's own switches follow
            return kabel->profilUebernehmen();
        }
        gesetzt_.erase("profil");
        kabel->setzeProfil(an ? "vpn" : "reise");
        return setzt("profil", std::string(an ? "vpn" : "reise"));
    default:
        return setze("browser.hinweisWeg", &Kabel::setzeBrowserHinweisWeg);
    }
}

} // namespace mobilsteg
