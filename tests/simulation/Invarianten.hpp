#pragma once

#include "kabel/Anzeige.hpp"
#include "plattform/Dateien.hpp"
#include "tests/hilfe/KabelWelt.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace mobilsteg {

/// The controller's world, and what must hold in it whatever happens.
class Invarianten : public KabelWelt {
public:
    explicit Invarianten(std::uint64_t samen) : KabelWelt(samen) {
        standdienst.nachDokument = [this] { pruefeTick(); };
        welt.beobachte([this] { pruefeNachAuftrag(); });
    }

    std::map<std::string, int> zaehler; ///< what happened how often
    std::string verstoss;               ///< the first broken invariant; empty: none
    bool erzaehlt = false;              ///< prints what happens

protected:
    void geschieht(const std::string& was, const std::string& naeheres = "") {
        ++zaehler[was];
        const std::chrono::duration<double> zeit = welt.jetzt();
        if (erzaehlt)
            std::printf("%9.3f s  %s %s\n", zeit.count(), was.c_str(), naeheres.c_str());
    }

    void pruefe(bool haelt, const std::string& invariante) {
        if (!haelt && verstoss.empty())
            geschieht("Verstöße", verstoss = invariante);
    }

    /// The first usable phone carries; or, after a list that came late or a forward that could not be moved,
    /// the one to which the forward leads.
    [[nodiscard]] bool wegGueltig() const {
        const auto traegt = [](const auto& h) { return h.teilt && h.entscheid == "erlaubt"; };
        const auto bereit = [](const auto& h) { return h.zustand == "device"; };
        auto erstes = std::ranges::find_if(handys, [&](const auto& h) { return bereit(h) && h.amKabel; });
        if (erstes == handys.end())
            erstes = std::ranges::find_if(handys, bereit);
        const auto forward = forwards.find(socksPort);
        const auto* ziel = forward == forwards.end() ? nullptr : bereites(forward->second);
        return (erstes != handys.end() && traegt(*erstes)) || (ziel != nullptr && traegt(*ziel));
    }

    [[nodiscard]] bool unser(const std::string& dienst) const {
        const auto an = socksAn.find(dienst);
        return an != socksAn.end() && an->second &&
               socksZiel.at(dienst) == std::pair<std::string, int>("127.0.0.1", socksPort);
    }
    [[nodiscard]] bool proxyAn() const { return unser("Wi-Fi") || unser("USB LAN"); }

    void pruefeNichtsUebrig(const std::string& wann) {
        pruefe(!proxyAn(), wann + " ist kein Proxy gesetzt");
        pruefe(forwards.empty(), wann + " steht keine Weiterleitung");
        pruefe(helfer == 0, wann + " lebt kein Helfer");
    }

    /// Whoever comes after a death finds it.
    void pruefeMerkzettel() {
        const auto& voll = einstellungen.aufDerPlatte;
        const auto& platte = voll ? *voll : einstellungen.werte;
        const auto nennt = [&](const char* schluessel, const std::string& dienst) {
            const auto note = platte.find(schluessel);
            return note != platte.end() && std::get<std::string>(note->second).find(dienst) != dienst.npos;
        };
        for (const std::string dienst : {"Wi-Fi", "USB LAN"})
            pruefe(!unser(dienst) || nennt("proxy.dienst", dienst) || nennt("proxy.ungewiss", dienst),
                   "wo unser Proxy an ist, steht es auf dem Merkzettel");
    }

    bool endet_ = false; ///< the clean-up is under way
    int ticksOhneWeg_ = 0, ticksOhneStoerung_ = 0, ticksOhneProxy_ = 0;
    struct {
        int ticksOhneBeweis = 0;
        int offeneKlicks = 0;                 ///< whose work on the work queue is still to come
        bool nachTick = false;                ///< the document is this tick's and nothing happened since
        Dauer bewiesenBis{-1};                ///< an exit address came, and no tick lost the way until then
        std::optional<std::int64_t> gemeldet; ///< bytes, as the phone has told in this tick
    } leben_;                                 ///< each begins with a fresh one

private:
    /// On the work queue, right when a tick has written its document.
    void pruefeTick() {
        const auto dokument = nlohmann::json::parse(standdienst.dokument);
        if (dokument["phase"] == "Beendet")
            return;
        ++zaehler["Ticks"];
        ++ticksOhneStoerung_;
        ticksOhneWeg_ = wegGueltig() ? 0 : ticksOhneWeg_ + 1;
        const std::string phase = dokument["phase"], austritt = dokument["austritt"];
        if (phase != std::exchange(phase_, phase))
            geschieht("Phasenwechsel", phase);
        leben_.ticksOhneBeweis = austritt.empty() ? leben_.ticksOhneBeweis + 1 : 0;
        if (austritt.empty() || ticksOhneWeg_ >= 2)
            leben_.bewiesenBis = std::min(leben_.bewiesenBis, welt.jetzt());
        const auto* handy = anPort(socksPort);
        const bool mitProxy = handy != nullptr && handy->gruesst && !handy->serial.empty();
        ticksOhneProxy_ = mitProxy || !dokument["faehrt"] ? 0 : ticksOhneProxy_ + 1;
        if (dokument["faehrt"]) {
            ++zaehler["Ticks in „Fährt mit“"];
            pruefe(phase == "Fährt mit" && !austritt.empty(), "„Fährt mit“ nur mit Austrittsadresse");
            // The tick under way when the way was lost may still end well.
            pruefe(ticksOhneWeg_ < 2, "„Fährt mit“ nur, solange das Handy teilt und erlaubt");
            pruefe(ticksOhneProxy_ < 3, "„Fährt mit“ nur, solange der Proxy der des Handys ist");
        }
        pruefe(!dokument["proxy_gesetzt"] || unser(dokument["dienst"]),
               "wo der Stand einen Proxy nennt, ist einer");
        pruefe(!proxyAn() || std::max(ticksOhneWeg_, leben_.ticksOhneBeweis) < 2 || ticksOhneStoerung_ < 2,
               "zwei Ticks nach dem Verlust des Weges ist der Proxy aus");
        // A tick takes down the helper that it meets; only one that comes up at that moment sees the next.
        const bool vorher = std::exchange(marke_, existiert(stoppPfad() + ".laeuft"));
        pruefe(!vorher || !marke_ || ticksOhneWeg_ < 2,
               "zwei Ticks nach dem Verlust des Weges ist der Tunnel aus");
        leben_.nachTick = true;
    }

    void pruefeNachAuftrag() {
        pruefe(meisteHelfer <= 1, "nie lebt mehr als ein Helfer");
        pruefeMerkzettel();
        // A click or a started tunnel may change the state before the next document.
        if (!kabel || !welt.ruht() || endet_ || leben_.offeneKlicks > 0 ||
            !std::exchange(leben_.nachTick, false))
            return;
        const auto& z = zustand();
        const auto dokument = nlohmann::json::parse(standdienst.dokument);
        pruefe(z.phase.text() == dokument["phase"] && z.austritt == dokument["austritt"] &&
                   z.proxyGesetzt == dokument["proxy_gesetzt"],
               "der Stand gleicht dem Zustand: " + z.phase.text());
        if (leben_.gemeldet)
            pruefe(z.menge.starts_with(Anzeige::mengeText(*leben_.gemeldet)),
                   "die Menge ist die des Handys: " + z.menge);
        const bool verbunden = z.phase == Phase::Art::faehrt || z.phase == Phase::Art::pruefung ||
                               z.phase.art == Phase::Art::proxyFehler;
        pruefe(verbunden || (z.gleise.empty() && (z.austritt + z.klasse + z.rettung).empty()),
               "ohne Verbindung zeigt nichts mehr auf sie: " + z.phase.text());
    }

    bool marke_ = false; ///< the helper's lay there when the last tick ended
    std::string phase_;  ///< of the last document
};

} // namespace mobilsteg
