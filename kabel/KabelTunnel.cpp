// The controller's side of the full tunnel. Who waits for whom: the start waits on its own queue for the main
// queue (the password dialog) and for the helper; the work queue never waits for either, and the main queue
// never waits for the start. Only the clean-up makes others wait for the work queue.

#include "kabel/Kabel.hpp"

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

constexpr const char* wartehinweis = "Volltunnel wartet: ein anderer Helfer läuft noch";

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
    volltunnelAnGeaendert(alt);
}

void Kabel::volltunnelAnGeaendert(bool alt) {
    const auto& z = speicher_.zustand();
    if (z.volltunnelAn && !alt && !a_.einstellungen.flagge("volltunnel.erklaert").value_or(false)) {
        if (a_.dialog.frage(tunnelerklaerung()) != 0) {
            speicher_.aendere([](Zustand& zustand) { zustand.volltunnelAn = false; });
            return volltunnelAnGeaendert(true);
        }
        a_.einstellungen.setzeFlagge("volltunnel.erklaert", true);
    }
    if (!volltunnelOhneSpeichern_)
        a_.einstellungen.setzeFlagge("volltunnel", z.volltunnelAn);
    a_.q.async([this, an = z.volltunnelAn] {
        tunnel_.wunsch.an = an;
        volltunnelNachziehen();
    });
}

/// Switches it off as by the user's hand, but for what is stored.
void Kabel::schalteVolltunnelAus(bool speichern) {
    const bool alt = speicher_.zustand().volltunnelAn;
    speicher_.aendere([](Zustand& z) { z.volltunnelAn = false; });
    volltunnelOhneSpeichern_ = !speichern;
    volltunnelAnGeaendert(alt);
    volltunnelOhneSpeichern_ = false;
}

void Kabel::setzeVpnDurch(bool an) {
    speicher_.aendere([&](Zustand& z) { z.vpnDurch = an; });
    a_.einstellungen.setzeFlagge("vpnDurch", an);
    a_.q.async([this, an] {
        tunnel_.wunsch.vpnDurch = an;
        volltunnelNeuStarten();
    });
}

void Kabel::setzeNurVPN(bool an) {
    speicher_.aendere([&](Zustand& z) { z.nurVPN = an; });
    a_.einstellungen.setzeFlagge("nurVPN", an);
    a_.q.async([this, an] {
        tunnel_.wunsch.nurVPN = an;
        volltunnelNeuStarten();
    });
}

// --- the tunnel: work queue ------------------------------------------------------------------------------

void Kabel::volltunnelNachziehen() {
    if (aufgeraeumt_)
        return;
    if (!tunnel_.wunsch.an) {
        // A mark alone may be another copy's helper; one of ours that is only coming up is seen when it is
        // there.
        if (tunnel_.laeuft())
            volltunnelWeg();
        speicher_.veroeffentliche([](Zustand& z) {
            if (z.meldung == wartehinweis)
                z.meldung.clear();
        });
        return;
    }
    if (!tunnel_.startFaellig(verbindung_.bewiesen())) {
        if (tunnel_.wartetAufFremden()) {
            protokoll(wartehinweis);
            speicher_.veroeffentliche([](Zustand& z) { z.meldung = wartehinweis; });
        }
        return;
    }
    const auto auftrag = tunnel_.beginne(proxy_.dienstFuerTunnel());
    protokoll("Volltunnel: starte (Admin-Passwort)…");
    a_.volltunnelQ.async([this, auftrag] {
        const auto grund = tunnel_.fuehreAus(auftrag);
        a_.q.async([this, auftrag, grund] { volltunnelGestartet(auftrag, grund); });
    });
}

void Kabel::volltunnelNeuStarten() {
    if (!tunnel_.laeuft())
        return;
    volltunnelWeg();
    volltunnelNachziehen();
}

void Kabel::volltunnelGestartet(const Tunnelauftrag& auftrag, const std::optional<std::string>& grund) {
    const bool laeuft = tunnel_.beendeStart(!grund);
    if (grund) {
        protokoll("Volltunnel nicht gestartet: " + *grund);
        const std::string hinweis =
            *grund == "Abgebrochen"
                ? "Volltunnel: Passwortdialog abgebrochen — Haken wieder setzen, wenn es losgehen "
                  "soll; beim nächsten Start fragt die App erneut"
                : "Volltunnel: " + *grund;
        a_.haupt.async([this, hinweis] {
            speicher_.aendere([&](Zustand& z) { z.meldung = hinweis; });
            schalteVolltunnelAus(false); // the stored wish stays: the next start of the program tries again
        });
        return;
    }
    if (!laeuft) { // it came up and has gone again before we heard: by our request, or by itself
        if (tunnel_.volltunnel().stoppGebeten())
            return volltunnelNachziehen();
        return volltunnelZurueckgebaut(tunnel_.volltunnel().grund());
    }
    protokoll(laufzeile(auftrag));
    speicher_.veroeffentliche([](Zustand& z) {
        z.volltunnelLaeuft = true;
        z.meldung.clear();
    });
    // While the dialog stood open, the link may have gone and the user may have changed everything.
    if (aufgeraeumt_ || tunnel_.ueberholt(auftrag, verbindung_.bewiesen())) {
        volltunnelWeg();
        volltunnelNachziehen();
    }
}

void Kabel::volltunnelWeg() {
    if (!tunnel_.nimmWeg())
        return;
    protokoll("Volltunnel beendet, Routen und DNS zurückgebaut");
    speicher_.veroeffentliche([](Zustand& z) { z.volltunnelLaeuft = false; });
}

void Kabel::volltunnelPruefen() {
    if (const auto grund = tunnel_.zurueckgebaut())
        return volltunnelZurueckgebaut(*grund);
    if (tunnel_.aufgeschobenerFaellig(verbindung_.bewiesen()))
        volltunnelNachziehen();
}

void Kabel::volltunnelZurueckgebaut(const std::string& grund) {
    protokoll("Volltunnel: Helfer hat sich zurückgebaut" + (grund.empty() ? "" : " — " + grund));
    a_.haupt.async([this, grund] {
        speicher_.aendere([](Zustand& z) { z.volltunnelLaeuft = false; });
        schalteVolltunnelAus(true); // it would only roll back again
        speicher_.aendere([&](Zustand& z) {
            z.meldung = "Volltunnel hat sich zurückgebaut" +
                        (grund.empty() ? std::string(" (kein Netz durch den Tunnel)") : ": " + grund);
        });
    });
}

} // namespace mobilsteg
