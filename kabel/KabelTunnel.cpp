// The controller's side of the full tunnel. Who waits for whom: the start waits on its own queue for the main
// queue (the password dialog) and for the helper; the work queue never waits for either, and the main queue
// never waits for the start. Only the clean-up makes others wait for the work queue.

#include "kabel/Kabel.hpp"
#include "plattform/Einstellungen.hpp"

namespace mobilsteg {

Frage tunnelerklaerung() {
    return {"Volltunnel: gleich fragt macOS nach deinem Administrator-Passwort",
            "Der Volltunnel legt eine eigene Netzwerkschnittstelle an und setzt Routen und DNS, "
            "damit alles vom Mac durch das Handy fährt — nicht nur Programme, die den System-Proxy beachten. "
            "Das darf nur ein Administrator, deshalb die Abfrage (einmal je Aktivierung). "
            "Beim Abstecken, Ausschalten oder Beenden baut der Bordlotse alles wieder zurück; "
            "kommt kein Netz durch den Tunnel, baut er sich nach 15 Sekunden selbst zurück.",
            {"Weiter", "Abbrechen"}};
}

namespace {

std::string laufzeile(const Tunnelauftrag& auftrag) {
    if (auftrag.nurVPN)
        return "Volltunnel läuft: nur VPN-Server fahren durchs Handy, Standardroute bleibt";
    return std::string("Volltunnel läuft: Standardroute des Mac geht durchs Handy") +
           (auftrag.vpnDurch ? " (VPNs durch das Handy)" : " (Tailscale/VPNs direkt)");
}

} // namespace

// --- the user's switches: main queue ---------------------------------------------------------------------

void Kabel::setzeVolltunnelAn(bool an) {
    const bool alt = speicher_.zustand().volltunnelAn;
    speicher_.aendere([&](Zustand& z) { z.volltunnelAn = an; });
    volltunnelAnGeaendert(alt, true);
}

void Kabel::volltunnelAnGeaendert(bool alt, bool speichern) {
    auto& einstellungen = anschluesse_.einstellungen;
    if (speicher_.zustand().volltunnelAn && !alt &&
        !einstellungen.flagge("volltunnel.erklaert").value_or(false)) {
        if (anschluesse_.dialog.frage(tunnelerklaerung()) != 0) {
            speicher_.aendere([](Zustand& zustand) { zustand.volltunnelAn = false; });
            return volltunnelAnGeaendert(true, speichern);
        }
        einstellungen.setzeFlagge("volltunnel.erklaert", true);
    }
    if (speichern)
        einstellungen.setzeFlagge("volltunnel", speicher_.zustand().volltunnelAn);
    uebergibSchalter(&Kabel::volltunnelNachziehen);
}

/// Switches it off as by the user's hand, but for what is stored.
void Kabel::schalteVolltunnelAus(bool speichern) {
    const bool alt = speicher_.zustand().volltunnelAn;
    speicher_.aendere([](Zustand& z) { z.volltunnelAn = false; });
    volltunnelAnGeaendert(alt, speichern);
}

// --- the tunnel: work queue ------------------------------------------------------------------------------

void Kabel::volltunnelNachziehen() {
    if (!schalterIntern_.volltunnelAn) {
        if (tunnel_.laeuft())
            volltunnelWeg();
        return;
    }
    if (!verbindung_.zuletztGueltig() || tunnel_.stand() != Volltunnel::Stand::ruht)
        return;
    tunnel_.beginne();
    const auto& dienst = proxy_.gesetzterDienst();
    const Tunnelauftrag auftrag{dienst ? *dienst : proxy_.dienst().value_or("Wi-Fi"),
                                schalterIntern_.vpnDurch, schalterIntern_.nurVPN};
    protokoll("Volltunnel: starte (Admin-Passwort)…");
    // Behind what this step hands over: the password dialog holds the main queue, and the panel with it.
    aufQ([this, auftrag] {
        if (!schalterIntern_.volltunnelAn || !verbindung_.zuletztGueltig())
            return tunnel_.beendeStart(false); // a tick or a click came between
        anschluesse_.volltunnelQ.async([this, auftrag] {
            const auto grund = tunnel_.start(auftrag);
            aufQ([this, auftrag, grund] { volltunnelGestartet(auftrag, grund); });
        });
    });
}

void Kabel::volltunnelNeuStarten() {
    if (!tunnel_.laeuft())
        return;
    volltunnelWeg();
    volltunnelNachziehen();
}

void Kabel::volltunnelGestartet(const Tunnelauftrag& auftrag, const std::optional<std::string>& grund) {
    tunnel_.beendeStart(!grund);
    if (grund) {
        protokoll("Volltunnel nicht gestartet: " + *grund);
        lageIntern_.meldung =
            *grund == "Abgebrochen"
                ? "Volltunnel: Passwortdialog abgebrochen — Haken wieder setzen, wenn es losgehen "
                  "soll; beim nächsten Start fragt die App erneut"
                : "Volltunnel: " + *grund;
        schalterIntern_.volltunnelAn = false; // until the main queue has switched it off, too
        // The stored wish stays: the next start of the program tries again.
        anschluesse_.haupt.async([this] { schalteVolltunnelAus(false); });
        return;
    }
    if (!tunnel_.laeuft()) { // it came up and has gone again before we heard: by our request, or by itself
        if (tunnel_.stoppGebeten())
            return volltunnelNachziehen();
        return volltunnelZurueckgebaut(tunnel_.grund());
    }
    protokoll(laufzeile(auftrag));
    lageIntern_.volltunnelLaeuft = true;
    lageIntern_.meldung.clear();
    // While the dialog stood open, the link may have gone and the user may have changed everything.
    const auto& s = schalterIntern_;
    if (!s.volltunnelAn || !verbindung_.zuletztGueltig() || auftrag.vpnDurch != s.vpnDurch ||
        auftrag.nurVPN != s.nurVPN) {
        volltunnelWeg();
        volltunnelNachziehen();
    }
}

void Kabel::volltunnelWeg() {
    meldeTunnelende(tunnel_.nimmWeg());
}

void Kabel::meldeTunnelende(Volltunnel::Ende ende) {
    if (ende == Volltunnel::Ende::keinHelfer)
        return;
    protokoll("Volltunnel beendet, Routen und DNS zurückgebaut");
    lageIntern_.volltunnelLaeuft = false;
}

void Kabel::volltunnelPruefen() {
    if (const auto grund = tunnel_.zurueckgebaut())
        volltunnelZurueckgebaut(*grund);
}

void Kabel::volltunnelZurueckgebaut(const std::string& grund) {
    protokoll("Volltunnel: Helfer hat sich zurückgebaut" + (grund.empty() ? "" : " — " + grund));
    lageIntern_.volltunnelLaeuft = false;
    lageIntern_.meldung = "Volltunnel hat sich zurückgebaut" +
                          (grund.empty() ? std::string(" (kein Netz durch den Tunnel)") : ": " + grund);
    schalterIntern_.volltunnelAn = false;
    uebergib();
    // Stored: it would only roll back again.
    anschluesse_.haupt.async([this] { schalteVolltunnelAus(true); });
}

} // namespace mobilsteg
