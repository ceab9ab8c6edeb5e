#include "ansicht/Inhalt.hpp"

#include "plattform/Text.hpp"

namespace mobilsteg {

namespace {

std::string oderLeer(const std::string& text) {
    return text.empty() ? leer : text;
}

std::string titel(const Zustand& z, bool bundleB2B) {
    if (bundleB2B)
        return "Mobilsteg VPN-Lotse";
    return z.profilIstVpn() ? "Mobilsteg Bordlotse · VPN" : "Mobilsteg Bordlotse";
}

Farbe punktfarbe(const Phase& phase) {
    switch (phase.art) {
    case Phase::Art::start:
    case Phase::Art::wartetAufHandy:
    case Phase::Art::pruefung:
        return Farbe::gelb;
    case Phase::Art::faehrt:
        return Farbe::gruen;
    default:
        return Farbe::rot;
    }
}

void fuegeAn(Baum& baum, Baum teil) {
    for (auto& element : teil)
        baum.push_back(std::move(element));
}

Baum kopf(const Zustand& z, bool bundleB2B) {
    Baum b;
    b.emplace_back(Kopf{titel(z, bundleB2B), punktfarbe(z.phase)});
    if (z.profilIstVpn())
        b.emplace_back(Satz{"Ihr VPN übersteht Funklöcher", Schrift::klein, Farbe::sekundaer});
    b.emplace_back(Satz{z.phase.text(), Schrift::normal, Farbe::normal});
    if (z.profilIstVpn()) {
        b.emplace_back(Trenner{});
        fuegeAn(b, vpnBlock(z));
    }
    return b;
}

Baum linkwerte(const Zustand& z) {
    Baum b;
    b.emplace_back(Trenner{});
    b.emplace_back(Zeile{"Handy", oderLeer(z.handy)});
    b.emplace_back(Zeile{"Klasse", z.klasse.empty() ? leer : z.klasse + (z.notlage ? " · Notlage" : "")});
    for (std::size_t i = 0; i < z.gleise.size(); ++i)
        b.emplace_back(Zeile{"Gleis " + std::to_string(i + 1), z.gleise[i]});
    b.emplace_back(Zeile{"Durchs Handy", oderLeer(z.menge)});
    if (!z.rettung.empty())
        b.emplace_back(Symbolzeile{"checkmark.shield.fill", Farbe::gruen, z.rettung, ""});
    return b;
}

Baum einfacheBedienung(const Zustand& z) {
    Baum b;
    if (z.experte)
        return b;
    if (!z.profilIstVpn() && z.volltunnelLaeuft)
        b.emplace_back(Zeile{"Volltunnel", "aktiv — alles fährt mit"});
    if (z.profilIstVpn()) {
        b.emplace_back(
            Schalter{Bedienung::volltunnel, "Funkloch-Schutz (Volltunnel, Admin-Passwort)", z.volltunnelAn});
        b.emplace_back(
            Schalter{Bedienung::nurVPN, "Nur den VPN durchs Handy — alles andere direkt", z.nurVPN});
    }
    return b;
}

Knopf knopf(Bedienung was, const char* text) {
    Knopf k;
    k.aktion.was = was;
    k.text = text;
    return k;
}

Satz fussnote(const char* text) {
    return {text, Schrift::kleinste, Farbe::sekundaer};
}

Baum messung(const Zustand& z) {
    Baum b;
    if (!z.durch.empty())
        b.emplace_back(Zeile{"Durch Proxy", verbunden(z.durch, ", ")});
    if (!z.vorbei.empty()) {
        b.emplace_back(Zeile{"Am Proxy vorbei", verbunden(z.vorbei, ", ")});
        b.emplace_back(
            fussnote("Diese Programme beachten den System-Proxy nicht oder halten alte Verbindungen. "
                     "Browser einmal neu starten; Terminal: ALL_PROXY=socks5://127.0.0.1:1080"));
    }
    return b;
}

Baum tunnelbedienung(const Zustand& z) {
    Baum b;
    b.emplace_back(Schalter{Bedienung::volltunnel, "Volltunnel: alles vom Mac durchs Handy (Admin-Passwort)",
                            z.volltunnelAn});
    b.emplace_back(Zeile{"Volltunnel", z.volltunnelLaeuft ? "aktiv — Standardroute über utun" : "aus"});
    b.emplace_back(Schalter{Bedienung::vpnDurch,
                            "VPNs durch das Handy (Tailscale, Firmen-VPN) — sonst direkt", z.vpnDurch});
    b.emplace_back(
        Schalter{Bedienung::nurVPN, "Nur VPNs durchs Handy (Standardroute bleibt, Rest direkt)", z.nurVPN});
    b.emplace_back(
        fussnote("An: VPN-Clients fahren gebündelt mit und überleben Funklöcher; Screen Sharing über "
                 "Tailscale läuft dann auch durchs Handy. Aus: Tailscale & Co. gehen direkt über das "
                 "WLAN."));
    return b;
}

Baum expertenblock(const Zustand& z) {
    Baum b;
    b.emplace_back(Trenner{});
    b.emplace_back(Zeile{"Proxy am Mac", z.proxyGesetzt ? "127.0.0.1:1080 an" : "aus"});
    b.emplace_back(Zeile{"Draußen als", oderLeer(z.austritt)});
    fuegeAn(b, messung(z));
    b.emplace_back(Schalter{Bedienung::automatisch, "System-Proxy automatisch setzen", z.proxyAutomatisch});
    b.emplace_back(knopf(Bedienung::proxy, z.proxyGesetzt ? "Proxy entfernen" : "Proxy jetzt setzen"));
    fuegeAn(b, tunnelbedienung(z));
    b.emplace_back(
        fussnote("Protokoll: ~/Library/Logs/MobilstegBordlotse.log · Zustand: 127.0.0.1:1081/stand"));
    b.emplace_back(Wahl{Bedienung::profil,
                        "Profil",
                        {{"reise", "Reise (Bordlotse)"}, {"vpn", "Firmen-VPN (VPN-Lotse)"}},
                        z.profil});
    return b;
}

} // namespace

Baum inhalt(const Zustand& z, bool bundleB2B) {
    Baum b = kopf(z, bundleB2B);
    fuegeAn(b, linkwerte(z));
    fuegeAn(b, einfacheBedienung(z));
    if (!z.meldung.empty())
        b.emplace_back(Satz{z.meldung, Schrift::klein, Farbe::sekundaer});
    if (!z.profilIstVpn() && !z.browserOhne.empty() && !z.browserHinweisWeg)
        fuegeAn(b, browserHinweis(z));
    if (z.experte)
        fuegeAn(b, expertenblock(z));
    b.emplace_back(Reihe{
        {Schalter{Bedienung::experte, "Expertenmodus", z.experte}, knopf(Bedienung::beenden, "Beenden")}});
    return b;
}

} // namespace mobilsteg
