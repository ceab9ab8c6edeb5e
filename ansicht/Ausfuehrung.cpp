#include "ansicht/Ausfuehrung.hpp"

#include "kabel/Kabel.hpp"

namespace mobilsteg {

namespace {

struct Sammler {
    std::vector<Angebot>& liste;

    void operator()(const Schalter& s) const { liste.push_back({{s.was, s.an ? "aus" : "an"}, s.text}); }
    void operator()(const Knopf& k) const { liste.push_back({k.aktion, k.hilfe.empty() ? k.text : k.hilfe}); }
    void operator()(const Wahl& w) const {
        for (const auto& m : w.moeglichkeiten)
            if (m.wert != w.gewaehlt)
                liste.push_back({{w.was, m.wert}, w.bezeichnung + ": " + m.text});
    }
    void operator()(const Reihe& r) const {
        for (const auto& teil : r.teile)
            std::visit(*this, teil.inhalt);
    }
    template <typename Anderes>
    void operator()(const Anderes&) const {}
};

void oeffneBrowser(Kabel& kabel, const std::string& name) {
    for (const auto& fund : kabel.speicher().zustand().browserOhne)
        if (fund.name == name)
            return kabel.fahrtwindHinzufuegen(fund);
}

} // namespace

std::vector<Angebot> angebote(const Baum& baum) {
    std::vector<Angebot> liste;
    for (const auto& element : baum)
        std::visit(Sammler{liste}, element.inhalt);
    return liste;
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
    case Bedienung::beenden:
        return beende();
    }
}

} // namespace mobilsteg
