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
            std::visit(*this, teil);
    }
    template <typename Anderes>
    void operator()(const Anderes&) const {}
};

} // namespace

std::vector<Angebot> angebote(const Baum& baum) {
    std::vector<Angebot> liste;
    for (const auto& element : baum)
        std::visit(Sammler{liste}, element);
    return liste;
}

Ausfuehrung::Ausfuehrung(Kabel& kabel, std::function<void()> beenden)
    : kabel_(kabel), beenden_(std::move(beenden)) {}

void Ausfuehrung::bediene(const Aktion& aktion) {
    const bool an = aktion.wert == "an";
    switch (aktion.was) {
    case Bedienung::experte:
        return kabel_.setzeExperte(an);
    case Bedienung::proxy:
        return kabel_.proxyUmschalten();
    case Bedienung::automatisch:
        return kabel_.setzeProxyAutomatisch(an);
    case Bedienung::profil:
        return kabel_.setzeProfil(aktion.wert);
    case Bedienung::hinweisWeg:
        return kabel_.setzeBrowserHinweisWeg(true);
    case Bedienung::beenden:
        return beenden_();
    case Bedienung::volltunnel:
        return kabel_.setzeVolltunnelAn(an);
    case Bedienung::vpnDurch:
        return kabel_.setzeVpnDurch(an);
    case Bedienung::nurVPN:
        return kabel_.setzeNurVPN(an);
    case Bedienung::browser:
        return oeffneBrowser(aktion.wert);
    }
}

void Ausfuehrung::oeffneBrowser(const std::string& name) {
    for (const auto& fund : kabel_.speicher().zustand().browserOhne)
        if (fund.name == name)
            return kabel_.fahrtwindHinzufuegen(fund);
}

} // namespace mobilsteg
