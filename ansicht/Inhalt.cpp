#include "ansicht/Inhalt.hpp"

#include "kabel/Kabel.hpp"
#include "netz/Variante.hpp"
#include "plattform/Text.hpp"

#include <set>

namespace mobilsteg {

namespace {

constexpr const char* leer = "—";

std::string oderLeer(const std::string& text) {
    return text.empty() ? leer : text;
}

Element trenner(const char* schluessel) {
    return {std::string("trenner.") + schluessel, Trenner{}};
}

Element satz(const char* schluessel, const std::string& text, Schrift schrift, Farbe farbe) {
    return {std::string("satz.") + schluessel, Satz{text, schrift, farbe}};
}

Element fussnote(const char* schluessel, const char* text) {
    return satz(schluessel, text, Schrift::kleinste, Farbe::sekundaer);
}

Element zeile(const std::string& bezeichnung, const std::string& wert) {
    return {"zeile." + bezeichnung, Zeile{bezeichnung, wert}};
}

Element schalter(Bedienung was, const char* text, bool an) {
    return {"schalter." + std::string(wort(was).wort), Schalter{was, text, an}};
}

Element knopf(Bedienung was, const char* text) {
    Knopf k;
    k.aktion.was = was;
    k.text = text;
    return {"knopf." + std::string(wort(was).wort), std::move(k)};
}

void fuegeAn(Baum& baum, Baum teil) {
    for (auto& element : teil)
        baum.push_back(std::move(element));
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

Baum kopf(const Zustand& z, bool bundleB2B) {
    Baum b;
    b.push_back({"kopf", Kopf{anzeigename(bundleB2B, z.profilIstVpn()), punktfarbe(z.phase)}});
    if (z.profilIstVpn())
        b.push_back(satz("vpn", "Ihr VPN übersteht Funklöcher", Schrift::klein, Farbe::sekundaer));
    b.push_back(satz("phase", z.phase.text(), Schrift::normal, Farbe::normal));
    if (z.profilIstVpn()) {
        b.push_back(trenner("vpn"));
        fuegeAn(b, vpnBlock(z));
    }
    return b;
}

Baum linkwerte(const Zustand& z) {
    Baum b;
    b.push_back(trenner("link"));
    b.push_back(zeile("Handy", oderLeer(z.handy)));
    b.push_back(zeile("Klasse", z.klasse.empty() ? leer : z.klasse + (z.notlage ? " · Notlage" : "")));
    for (std::size_t i = 0; i < z.gleise.size(); ++i)
        b.push_back(zeile("Gleis " + std::to_string(i + 1), z.gleise[i]));
    b.push_back(zeile("Durchs Handy", oderLeer(z.menge)));
    if (!z.rettung.empty())
        b.push_back({"rettung", Symbolzeile{"checkmark.shield.fill", Farbe::gruen, z.rettung, ""}});
    return b;
}

Baum einfacheBedienung(const Zustand& z) {
    Baum b;
    if (z.experte)
        return b;
    if (!z.profilIstVpn() && z.volltunnelLaeuft)
        b.push_back(zeile("Volltunnel", "aktiv — alles fährt mit"));
    if (z.profilIstVpn()) {
        b.push_back(
            schalter(Bedienung::volltunnel, "Funkloch-Schutz (Volltunnel, Admin-Passwort)", z.volltunnelAn));
        b.push_back(schalter(Bedienung::nurVPN, "Nur den VPN durchs Handy — alles andere direkt", z.nurVPN));
    }
    return b;
}

/// The hint at browsers that lack the extension, with a button for each.
Baum browserHinweis(const Zustand& z) {
    Reihe reihe;
    for (const auto& fund : z.browserOhne) {
        Knopf hinzu;
        hinzu.aktion = {Bedienung::browser, fund.name};
        hinzu.text = "In " + fund.name + " hinzufügen";
        hinzu.appPfad = fund.appPfad;
        hinzu.rahmenlos = true;
        reihe.teile.push_back({"browser." + fund.name, std::move(hinzu)});
    }
    Element weg = knopf(Bedienung::hinweisWeg, "×");
    auto& kreuz = std::get<Knopf>(weg.inhalt);
    kreuz.hilfe = "Hinweis nicht mehr zeigen";
    kreuz.rahmenlos = true;
    kreuz.farbe = Farbe::sekundaer;
    reihe.teile.push_back(std::move(weg));

    Baum b;
    b.push_back(trenner("browser"));
    b.push_back(
        satz("browser",
             "fahrtwind fehlt im Browser — die Erweiterung zeigt die Mobilsteg-Leiste über jeder Seite und "
             "spart Daten, wenn es eng wird.",
             Schrift::klein, Farbe::normal));
    b.push_back({"reihe.browser", std::move(reihe)});
    return b;
}

Baum messung(const Zustand& z) {
    Baum b;
    if (!z.durch.empty())
        b.push_back(zeile("Durch Proxy", verbunden(z.durch, ", ")));
    if (!z.vorbei.empty()) {
        b.push_back(zeile("Am Proxy vorbei", verbunden(z.vorbei, ", ")));
        b.push_back(fussnote("vorbei",
                             "Diese Programme beachten den System-Proxy nicht oder halten alte Verbindungen. "
                             "Browser einmal neu starten; Terminal: ALL_PROXY=socks5://127.0.0.1:1080"));
    }
    return b;
}

Baum tunnelbedienung(const Zustand& z) {
    Baum b;
    b.push_back(schalter(Bedienung::volltunnel, "Volltunnel: alles vom Mac durchs Handy (Admin-Passwort)",
                         z.volltunnelAn));
    b.push_back(zeile("Volltunnel", z.volltunnelLaeuft ? "aktiv — Standardroute über utun" : "aus"));
    b.push_back(schalter(Bedienung::vpnDurch, "VPNs durch das Handy (Tailscale, Firmen-VPN) — sonst direkt",
                         z.vpnDurch));
    b.push_back(
        schalter(Bedienung::nurVPN, "Nur VPNs durchs Handy (Standardroute bleibt, Rest direkt)", z.nurVPN));
    b.push_back(fussnote("vpn-durch",
                         "An: VPN-Clients fahren gebündelt mit und überleben Funklöcher; Screen Sharing "
                         "über Tailscale läuft dann auch durchs Handy. Aus: Tailscale & Co. gehen direkt "
                         "über das WLAN."));
    return b;
}

Baum expertenblock(const Zustand& z) {
    Baum b;
    b.push_back(trenner("experte"));
    b.push_back(zeile("Proxy am Mac", z.proxyGesetzt ? "127.0.0.1:1080 an" : "aus"));
    b.push_back(zeile("Draußen als", oderLeer(z.austritt)));
    fuegeAn(b, messung(z));
    b.push_back(schalter(Bedienung::automatisch, "System-Proxy automatisch setzen", z.proxyAutomatisch));
    b.push_back(knopf(Bedienung::proxy, z.proxyGesetzt ? "Proxy entfernen" : "Proxy jetzt setzen"));
    fuegeAn(b, tunnelbedienung(z));
    b.push_back(fussnote("dateien",
                         "Protokoll: ~/Library/Logs/MobilstegBordlotse.log · Zustand: 127.0.0.1:1081/stand"));
    std::get<Satz>(b.back().inhalt).beimKlick = {Bedienung::protokoll, ""};
    b.push_back({"wahl.profil", Wahl{Bedienung::profil,
                                     "Profil",
                                     {{"reise", "Reise (Bordlotse)"}, {"vpn", "Firmen-VPN (VPN-Lotse)"}},
                                     z.profil}});
    return b;
}

/// One row per name, under a key that begins with `art`.
void fuegeVpnsAn(Baum& baum, const char* art, const std::vector<std::string>& namen, Symbolzeile zeile) {
    std::set<std::string_view> gesehen;
    for (const auto& name : namen) {
        if (!gesehen.insert(name).second)
            continue;
        zeile.text = name;
        baum.push_back({art + name, zeile});
    }
}

void oeffneBrowser(Kabel& kabel, const std::string& name) {
    for (const auto& fund : kabel.speicher().zustand().browserOhne)
        if (fund.name == name)
            return kabel.fahrtwindHinzufuegen(fund);
}

} // namespace

Baum vpnBlock(const Zustand& z) {
    Baum b;
    fuegeVpnsAn(b, "gesichert.", z.vpnsGesichert, {"lock.shield.fill", Farbe::gruen, "", "gesichert"});
    if (!z.vpnsGesichert.empty())
        b.push_back(fussnote("gesichert",
                             "Fällt WLAN oder Mobilfunk aus, läuft der VPN auf dem anderen Weg weiter."));
    fuegeVpnsAn(
        b, "offen.", z.vpnsOffen,
        {"shield.slash", Farbe::orange, "", z.volltunnelLaeuft ? "noch nicht gesichert" : "ungesichert"});
    if (!z.vpnsOffen.empty() && !z.volltunnelLaeuft)
        b.push_back(
            fussnote("offen", z.phase == Phase::Art::faehrt
                                  ? "Funkloch-Schutz einschalten, dann fährt der VPN durch das Handy."
                                  : "Sobald das Handy am Kabel freigibt, fährt der VPN durch das Handy."));
    if (z.vpnsGesichert.empty() && z.vpnsOffen.empty())
        b.push_back(satz("keinVpn",
                         z.volltunnelLaeuft
                             ? "Kein VPN verbunden — verbinden Sie Ihren VPN wie gewohnt, er fährt "
                               "dann durch das Handy."
                             : "Kein VPN verbunden.",
                         Schrift::klein, Farbe::sekundaer));
    return b;
}

Baum inhalt(const Zustand& z, bool bundleB2B) {
    Baum b = kopf(z, bundleB2B);
    fuegeAn(b, linkwerte(z));
    fuegeAn(b, einfacheBedienung(z));
    if (!z.meldung.empty())
        b.push_back(satz("meldung", z.meldung, Schrift::klein, Farbe::sekundaer));
    if (!z.profilIstVpn() && !z.browserOhne.empty() && !z.browserHinweisWeg)
        fuegeAn(b, browserHinweis(z));
    if (z.experte)
        fuegeAn(b, expertenblock(z));
    b.push_back({"reihe.unten", Reihe{{schalter(Bedienung::experte, "Expertenmodus", z.experte),
                                       knopf(Bedienung::beenden, "Beenden")}}});
    return b;
}

void fuehreAus(const Aktion& aktion, Kabel& kabel, const std::function<void()>& beende) {
    const bool an = aktion.wert == "an";
    switch (aktion.was) {
    case Bedienung::experte:
        return kabel.setzeExperte(an);
    case Bedienung::proxy:
        return kabel.proxyUmschalten();
    case Bedienung::automatisch:
        return kabel.setzeProxyAutomatisch(an);
    case Bedienung::volltunnel:
        return kabel.setzeVolltunnelAn(an);
    case Bedienung::vpnDurch:
        return kabel.setzeVpnDurch(an);
    case Bedienung::nurVPN:
        return kabel.setzeNurVPN(an);
    case Bedienung::profil:
        return kabel.setzeProfil(aktion.wert);
    case Bedienung::browser:
        return oeffneBrowser(kabel, aktion.wert);
    case Bedienung::hinweisWeg:
        return kabel.setzeBrowserHinweisWeg(true);
    case Bedienung::protokoll:
        return kabel.protokollZeigen();
    case Bedienung::beenden:
        return beende();
    }
}

} // namespace mobilsteg
