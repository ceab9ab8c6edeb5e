#include "volltunnel/Tunnel.hpp"

#include "plattform/AsioSchlange.hpp"
#include "plattform/Text.hpp"
#include "plattform/Tunnelgeraet.hpp"

#include <asio/local/stream_protocol.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/post.hpp>
#include <asio/read_until.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>
#include <nlohmann/json.hpp>

#include <unistd.h>

#include "volltunnel/Namen.hpp"
#include "volltunnel/Umschau.hpp"
#include "volltunnel/Weiterleitung.hpp"

namespace mobilsteg::volltunnel {

namespace {

using asio::ip::tcp;
using Uhrzeit = std::chrono::steady_clock;

constexpr int paketeAmStueck = 64; // before the connections have their turn
constexpr std::chrono::seconds takt{1};
constexpr std::chrono::seconds vpnabstand{3};
constexpr std::chrono::seconds beweisfrist{15};
constexpr std::chrono::milliseconds abschiedsdauer{150};
constexpr std::uint16_t dns = 53;

class Tunnel {
public:
    Tunnel(const Tunnelteile& teile, const Auftrag& auftrag, const Nutzerordner& ordner)
        : auftrag_(auftrag), ordner_(ordner), geraet_(kontext_, teile.geraet),
          kanal_(kontext_, asio::local::stream_protocol(), teile.kanal), puffer_(groesstesPaket()),
          namen_(kontext_, {auftrag.proxy,
                            [this](const Stelle& server, const Stelle& fragender, std::string_view antwort) {
                                if (const auto paket = udpPaket(server, fragender, antwort))
                                    schreib(*paket);
                            },
                            [this](Ausgang ausgang, Zeit beginn) { melde(ausgang, beginn); }}),
          weiterleitung_(kontext_, tabelle_,
                         {auftrag.proxy, [this](const Tabelle::Fluss& fluss) { return ziel(fluss); },
                          [this](const Tabelle::Fluss& fluss, Ausgang ausgang, Zeit beginn) {
                              istBeweis(fluss) ? nimmBeweis(fluss, ausgang) : melde(ausgang, beginn);
                          }}),
          vpnwege_(auftrag.nurVPN, auftrag.vpnDurch), suche_(auftrag.wurzel) {
        horche(teile.horcher4, false);
        horche(teile.horcher6, true);
        warteAufPaket();
        warteAufZeile();
        ticke();
        beweise();
        umschau_ = schau_.wiederhole(Dauer(0), vpnabstand, [this] {
            asio::post(kontext_, [this, vpns = suche_.sieh()] {
                vpns_ = vpns;
                werteVpns();
            });
        });
    }

    void laufe() { kontext_.run(); }

private:
    struct Familie {
        std::uint16_t horcher = 0; ///< 0: the machine does not have this family
        bool bewiesen = false;
    };

    void horche(int nummer, bool sechs) {
        Familie& f = familien_[sechs ? 1 : 0];
        if (nummer < 0) {
            f.bewiesen = true;
            return;
        }
        tcp::acceptor horcher(kontext_, sechs ? tcp::v6() : tcp::v4(), nummer);
        f.horcher = horcher.local_endpoint().port();
        weiterleitung_.horche(std::move(horcher));
    }

    void warteAufPaket() {
        geraet_.async_wait(asio::posix::descriptor_base::wait_read, [this](std::error_code) {
            for (int i = 0; i < paketeAmStueck; ++i) {
                const auto n = liesVomGeraet(geraet_.native_handle(), puffer_);
                if (!n)
                    return gibAuf("das Gerät des Tunnels ist verschwunden");
                if (*n == 0)
                    break;
                nimm({puffer_.data(), *n});
            }
            warteAufPaket();
        });
    }

    void nimm(Bytes bytes) {
        auto paket = liesPaket(bytes);
        if (!paket)
            return;
        const bool sechs = paket->von.address().is_v6();
        if (paket->art == Art::tcp && familien_[sechs ? 1 : 0].horcher != 0 &&
            traegt(paket->nach.address())) {
            if (const auto neu = umgelenkt(*paket, tunnelenden(sechs), familien_[sechs ? 1 : 0].horcher)) {
                schreibeUm(*paket, neu->von, neu->nach);
                return schreibAufGeraet(geraet_.native_handle(), paket->bytes);
            }
        } else if (paket->art == Art::udp && paket->nach.port() == dns && traegt(paket->nach.address())) {
            const Bytes frage = paket->bytes.subspan(paket->last);
            return namen_.frage(paket->von, paket->nach,
                                {reinterpret_cast<const char*>(frage.data()), frage.size()});
        }
        if (const auto nein = absage(*paket))
            schreib(*nein);
    }

    /// The ends that a TCP packet gets: on its way out the listener's, on its way back those it once had.
    std::optional<Tabelle::Fluss> umgelenkt(const Paket& paket, const Enden& enden, std::uint16_t horcher) {
        if (paket.von == Stelle(enden.hier, horcher)) {
            const auto* fluss =
                paket.nach.address() == enden.drueben ? tabelle_.her(paket.nach.port()) : nullptr;
            return fluss ? std::optional<Tabelle::Fluss>({fluss->nach, fluss->von}) : std::nullopt;
        }
        const auto port = tabelle_.hin({paket.von, paket.nach}, paket.syn, Uhrzeit::now());
        if (!port)
            return std::nullopt;
        return Tabelle::Fluss{{enden.drueben, *port}, {enden.hier, horcher}};
    }

    /// Whether the tunnel takes what goes there. Tailscale's range has a road of its own as long as Tailscale
    /// runs; without it, and unless VPNs are to go through the phone, nobody is there.
    [[nodiscard]] bool traegt(const Adresse& ziel) const {
        const bool tailscale = ziel.is_v4() && ziel.to_v4().to_uint() >> 22 == 0x6440'0000 >> 22;
        return istEinzelne(ziel) && !ziel.is_loopback() && (auftrag_.vpnDurch || !tailscale);
    }

    void schreib(std::string_view paket) {
        schreibAufGeraet(geraet_.native_handle(),
                         {reinterpret_cast<const std::uint8_t*>(paket.data()), paket.size()});
    }

    // The proof: a connection of our own to the tunnel's other end goes the way of all others.

    [[nodiscard]] bool istBeweis(const Tabelle::Fluss& fluss) {
        return fluss.nach.address() == tunnelenden(fluss.nach.address().is_v6()).drueben;
    }

    /// Where it really goes: to public name servers, one after the other.
    Stelle ziel(const Tabelle::Fluss& fluss) {
        static constexpr const char* ziele[] = {"1.1.1.1", "9.9.9.9", "8.8.8.8"};
        return istBeweis(fluss) ? Stelle(asio::ip::make_address(ziele[beweise_ % std::size(ziele)]), dns)
                                : fluss.nach;
    }

    void beweise() {
        ++beweise_;
        if (steht())
            return;
        if (Uhrzeit::now() > anfang_ + beweisfrist)
            return gibAuf(weiterleitung_.zaehler().verbindungen > 0 // it came back to the listener
                              ? "kein Netz durch den Tunnel: " + beweisgrund_
                              : "die Firewall dieses Rechners lässt keine Verbindung durch den Tunnel");
        for (const bool sechs : {false, true})
            if (!familien_[sechs ? 1 : 0].bewiesen) {
                auto socket = std::make_shared<tcp::socket>(kontext_);
                socket->async_connect({tunnelenden(sechs).drueben, dns}, [socket](std::error_code) {});
            }
    }

    void nimmBeweis(const Tabelle::Fluss& fluss, Ausgang ausgang) {
        if (ausgang == Ausgang::verbunden || ausgang == Ausgang::nein)
            familien_[fluss.nach.address().is_v6() ? 1 : 0].bewiesen = true;
        else
            beweisgrund_ = ausgang == Ausgang::kaputt ? "der Proxy lehnt ab" : "der Proxy antwortet nicht";
        meldeBeweis();
    }

    [[nodiscard]] bool steht() const { return familien_[0].bewiesen && familien_[1].bewiesen; }

    /// The roads are set by what the survey says: both have to be there.
    void meldeBeweis() {
        if (!steht() || !befund_ || gemeldet_)
            return;
        gemeldet_ = true;
        protokolliere("Beweis: eine Verbindung kam durch den Tunnel");
        sende("bewiesen");
    }

    void melde(Ausgang ausgang, Zeit beginn) {
        if (ausfall_.melde(ausgang, beginn, Uhrzeit::now()))
            gibAuf("kein Netz durch den Tunnel seit 15 s");
    }

    // The VPNs.

    void werteVpns() {
        if (!vpns_ || !openvpn_)
            return; // the first look is not over
        const auto vorher =
            std::exchange(befund_, vpnwege_.werte(*vpns_, *openvpn_,
                                                  [this](const Adresse& a) { return tabelle_.lebt(a); }));
        if (!vorher || vorher->wege != befund_->wege) {
            std::string zeile = "vpns";
            for (const Adresse& a : befund_->wege)
                zeile += " " + a.to_string();
            sende(zeile);
        }
        if (!vorher || vorher->gesichert != befund_->gesichert) {
            auto liste = nlohmann::json::array();
            for (const auto& [name, server] : befund_->gesichert) {
                liste.push_back({{"dienst", alsUtf8(name)}, {"server", server}});
                if (!vorher || !vorher->gesichert.contains({name, server}))
                    protokolliere("VPN durch den Tunnel: " + name + " · " + server);
            }
            ordner_.schreibe(".vpns.json", nlohmann::json{{"vpns", liste}}.dump());
        }
        meldeBeweis();
    }

    // The other process.

    void warteAufZeile() {
        asio::async_read_until(kanal_, asio::dynamic_buffer(eingang_), '\n',
                               [this](std::error_code fehler, std::size_t n) {
                                   if (fehler)
                                       return gehe(true);
                                   const std::string zeile = eingang_.substr(0, n - 1);
                                   eingang_.erase(0, n);
                                   if (zeile == "ende")
                                       return gehe(false);
                                   if (zeile.starts_with("openvpn")) {
                                       openvpn_ = liesOpenvpn(zeile);
                                       werteVpns();
                                   }
                                   warteAufZeile();
                               });
    }

    void sende(const std::string& zeile) {
        std::error_code egal; // a few short lines: there is always room, and who is gone needs none
        asio::write(kanal_, asio::buffer(zeile + "\n"), egal);
    }

    void gibAuf(const std::string& grund) {
        if (!std::exchange(aufgegeben_, true))
            sende("grund " + grund);
    }

    /// The programs hear at once that their connections are gone, as long as there is a device to say it by.
    /// `verwaist`: the process with the rights was killed, and nobody else takes the marks away.
    void gehe(bool verwaist) {
        weiterleitung_.reisseAb();
        abschied_.expires_after(abschiedsdauer);
        abschied_.async_wait([this, verwaist](std::error_code) {
            if (verwaist) {
                geraet_.close();
                protokolliere("Der Helfer wurde beendet; DNS und Umwege nimmt der nächste Start zurück");
                ordner_.schreibe(".fehler", "der Helfer wurde beendet");
                ordner_.entferne({".vpns.json", ".laeuft"});
            }
            ::_exit(0);
        });
    }

    void ticke() {
        takt_.expires_after(takt);
        takt_.async_wait([this](std::error_code) {
            const Zeit jetzt = Uhrzeit::now();
            tabelle_.raeume(jetzt);
            namen_.raeume(jetzt);
            weiterleitung_.raeume(jetzt);
            if (++ticks_ % 2 == 0)
                beweise();
            if (ticks_ % 60 == 0)
                zaehle();
            ticke();
        });
    }

    void zaehle() {
        auto jetzt = weiterleitung_.zaehler();
        jetzt.namen = namen_.fragen();
        const auto alt = std::exchange(gezaehlt_, jetzt);
        if (jetzt != alt)
            protokolliere("In dieser Minute: " + std::to_string(jetzt.verbindungen - alt.verbindungen) +
                          " Verbindungen (" + std::to_string(tabelle_.gehalten()) + " offen), " +
                          std::to_string((jetzt.hinaus - alt.hinaus) / 1000) + " kB hinaus, " +
                          std::to_string((jetzt.herein - alt.herein) / 1000) + " kB herein, " +
                          std::to_string(jetzt.namen - alt.namen) + " Namen");
    }

    Auftrag auftrag_;
    const Nutzerordner& ordner_;
    asio::io_context kontext_{1};
    asio::posix::stream_descriptor geraet_;
    asio::local::stream_protocol::socket kanal_;
    std::string eingang_;
    asio::steady_timer takt_{kontext_}, abschied_{kontext_};
    std::vector<std::uint8_t> puffer_;
    std::array<Familie, 2> familien_;
    Tabelle tabelle_;
    Ausfall ausfall_;
    Namen namen_;
    Weiterleitung weiterleitung_;
    Vpnwege vpnwege_;
    std::optional<std::vector<Vpn>> vpns_;
    std::optional<std::vector<Openvpn>> openvpn_;
    std::optional<Vpnbefund> befund_;
    Vpnsuche suche_; ///< used on `schau_` only
    AsioSchlange schau_{"umschau"};
    Zeitgeber umschau_;

    Zeit anfang_ = Uhrzeit::now();
    std::size_t beweise_ = 0;
    std::string beweisgrund_ = "der Proxy antwortet nicht";
    bool gemeldet_ = false;
    bool aufgegeben_ = false;
    unsigned ticks_ = 0;
    Weiterleitung::Zaehler gezaehlt_;
};

} // namespace

void fuehreTunnel(const Tunnelteile& teile, const Auftrag& auftrag, const Nutzerordner& ordner) {
    try {
        Tunnel(teile, auftrag, ordner).laufe();
    } catch (const std::exception& fehler) {
        protokolliere(std::string("Fehler: ") + fehler.what());
    }
    ::_exit(1);
}

} // namespace mobilsteg::volltunnel
