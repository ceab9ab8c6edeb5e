#include "app/Delegate.hpp"

#include "kabel/Kabel.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <csignal>
#include <future>
#include <memory>
#include <thread>

namespace mobilsteg {

// --- the first start's questions --------------------------------------------------------------------------

Frage profilfrage() {
    return {
        "Nutzt du unterwegs einen Firmen-VPN?",
        "Ja: Der Lotse schützt deinen VPN vor Funklöchern — "
        "er fährt über das Handy, das WLAN und Mobilfunk bündelt, und bleibt verbunden, wenn ein Weg ausfällt. "
        "Das steht dann im Vordergrund.\n"
        "\n"
        "Nein: Du bekommst den Bordlotse für schnelleres Internet unterwegs; "
        "die VPN-Themen bleiben ausgeblendet. "
        "Umschalten geht jederzeit im Expertenmodus.",
        {"Ja, VPN schützen", "Nein, nur schneller unterwegs"}};
}

Frage willkommen(const std::string& anzeigename) {
    return {"Willkommen beim " + anzeigename,
            "Der VPN-Lotse verbindet Ihren Mac über das USB-Kabel mit der Mobilsteg-App auf dem Handy. "
            "Das Handy bündelt WLAN und Mobilfunk; fällt eines aus, läuft Ihr VPN auf dem anderen weiter — "
            "ohne Abbruch, ohne neue Anmeldung.\n"
            "\n"
            "Dafür legt der Lotse einmal pro Fahrt mit Administratorrechten eine Netzwerkschnittstelle an "
            "(macOS fragt nach Ihrem Passwort). "
            "Ihren VPN verbinden Sie danach wie gewohnt; der Aufklapper zeigt, ob er gesichert fährt.",
            {"Verstanden"}};
}

namespace {

void frageNachProfil(Kabel& kabel, Einstellungen& einstellungen, Dialog& dialog) {
    if (einstellungen.text("profil") || kabel.variante().bundleB2B())
        return;
    const int antwort = dialog.frage(profilfrage());
    if (antwort < 0)
        return; // closed: the next start asks again
    const bool vpn = antwort == 0;
    einstellungen.setzeText("profil", vpn ? "vpn" : "reise");
    if (!vpn)
        return;
    for (const char* schalter : {"volltunnel", "vpnDurch", "nurVPN"})
        if (!einstellungen.flagge(schalter))
            einstellungen.setzeFlagge(schalter, true);
    kabel.profilUebernehmen();
}

} // namespace

void erststart(Kabel& kabel, Einstellungen& einstellungen, Dialog& dialog) {
    frageNachProfil(kabel, einstellungen, dialog);
    if (kabel.variante().aktuell() != Variante::Art::vpn ||
        einstellungen.flagge("b2b.erklaert").value_or(false))
        return;
    if (dialog.frage(willkommen(kabel.variante().anzeigename())) < 0)
        return;
    einstellungen.setzeFlagge("b2b.erklaert", true);
    einstellungen.setzeFlagge("volltunnel.erklaert", true);
}

// --- beginning and ends ----------------------------------------------------------------------------------

struct Delegate::Verlauf {
    std::promise<void> begonnen, beendet;
};

Delegate::Delegate(Einstellungen& einstellungen, Dialog& dialog, std::function<void(int)> beende,
                   Fristen fristen)
    : einstellungen_(einstellungen), dialog_(dialog), beende_(std::move(beende)), fristen_(fristen) {}

void Delegate::applicationDidFinishLaunching() {
    erststart(Kabel::gemeinsam(), einstellungen_, dialog_);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        signalQuellen_.push_back(beiSignal(signal, signalQ_, [this](int s) { beendeNachSignal(s); }));
    Kabel::gemeinsam().start();
}

void Delegate::applicationWillTerminate() {
    Kabel& kabel = Kabel::gemeinsam();
    const auto verlauf = std::make_shared<Verlauf>();
    std::thread([this, verlauf] { wache(*verlauf); }).detach();
    kabel.kuendigeEndeAn();
    kabel.q().sync([&] {
        verlauf->begonnen.set_value();
        const auto vorher = liesEnde(kabel.protokollPfad(), 0, 0);
        kabel.aufraeumen();
        if (const auto neues = liesEnde(kabel.protokollPfad(), vorher ? vorher->laenge : 0, 4096))
            aufgeraeumtes_ += neues->bytes;
    });
    verlauf->beendet.set_value();
}

/// Ends the process without the work queue when a tool that is deaf to everything holds that.
void Delegate::wache(Verlauf& verlauf) {
    if (verlauf.begonnen.get_future().wait_for(fristen_.beginn) == std::future_status::ready &&
        verlauf.beendet.get_future().wait_for(fristen_.ende) == std::future_status::ready)
        return;
    std::promise<void> getan;
    auto wann = getan.get_future();
    // On one more thread: what hangs may be the very tool that it needs.
    std::thread([getan = std::move(getan)]() mutable {
        Kabel::gemeinsam().nimmProxyNotfallsWeg();
        getan.set_value();
    }).detach();
    (void)wann.wait_for(fristen_.notfall);
    beende_(0);
}

std::string Delegate::schlusswort() const {
    std::vector<std::string> taten;
    for (const auto zeile : teile(aufgeraeumtes_, '\n'))
        if (const auto tat = zeile.find("  ");
            tat != std::string_view::npos && zeile.substr(tat + 2) != "Beendet")
            taten.emplace_back(zeile.substr(tat + 2));
    if (const auto dienst = einstellungen_.text("proxy.dienst")) // the log tells a failure only once
        taten.push_back("System-Proxy an „" + *dienst +
                        "“ steht noch: mit --aufraeumen noch einmal versuchen");
    return "Beendet. " + (taten.empty() ? "Am Mac war nichts zurückzunehmen." : verbunden(taten, " · "));
}

void Delegate::beendeNachSignal(int signal) {
    Kabel::gemeinsam().protokoll("Signal " + std::to_string(signal) + " -- räume auf und beende");
    applicationWillTerminate();
    beende_(0);
}

} // namespace mobilsteg
