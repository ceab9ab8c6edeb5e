// The shipped helper with a real tunnel, in a network of the test's own, and a SOCKS server of the test.

#include "plattform/Lauf.hpp"
#include "plattform/Tunnelgeraet.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/hilfe/Programm.hpp"
#include "tests/volltunnel/Pakete.hpp"

#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>
#include <gmock/gmock.h>

#include <unistd.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <thread>

using namespace mobilsteg;
using namespace mobilsteg::volltunnel;
using namespace testing;
using asio::ip::tcp;
using std::chrono::milliseconds;

namespace {

const std::string name("\x12\x34\1\0\0\1\0\0\0\0\0\0\1a\0\0\1\0\1", 19); ///< a question for one

std::string sh(const std::string& befehl) {
    return laufBefristet({"/bin/sh", "-c", befehl + " 2>&1"}, 10).ausgabe;
}

/// The phone: whatever is asked for, it serves it itself. Port 7: everything back, then the end; 521:
/// refused; 13: a reset; 19: reads nothing; 53: each question comes back as its answer.
class Sockswelt {
public:
    Sockswelt() : horcher_(kontext_, tcp::endpoint(asio::ip::make_address("127.0.0.1"), 0)) {
        std::thread([this] {
            while (true) {
                auto socket = std::make_shared<tcp::socket>(horcher_.accept());
                std::thread([this, socket] {
                    std::error_code egal;
                    bediene(*socket, egal);
                }).detach();
            }
        }).detach();
    }
    [[nodiscard]] int port() const { return horcher_.local_endpoint().port(); }

    std::atomic<bool> lehntAb = false, legtAuf = true; ///< at the first question for a name

private:
    void bediene(tcp::socket& s, std::error_code& fehler) {
        std::string b(22, '\0');
        const auto lies = [&](std::size_t n) { return asio::read(s, asio::buffer(b, n), fehler) == n; };
        const auto sage = [&](const std::string& was) { asio::write(s, asio::buffer(was), fehler); };
        if (!lies(3) || (sage({5, 0}), !lies(4)))
            return;
        const std::size_t laenge = b[3] == 4 ? 18 : 6; // address and port
        if (!lies(laenge))
            return;
        const int port = b[laenge - 2] * 256 + b[laenge - 1];
        const bool nein = lehntAb || port == 521;
        sage(std::string{5, static_cast<char>(lehntAb ? 1 : nein ? 5 : 0), 0, 1, 0, 0, 0, 0, 0, 0});
        if (nein)
            return;
        if (port == 13) {
            s.set_option(asio::socket_base::linger(true, 0), fehler);
            s.close(fehler);
        } else if (port == 19) {
            std::this_thread::sleep_for(std::chrono::hours(1));
        }
        std::vector<char> block(100'000);
        while (!fehler) {
            const std::size_t n = s.read_some(asio::buffer(block), fehler);
            if (port == 53 && n > 4 && legtAuf.exchange(false))
                return;
            if (port == 53 && n > 4)
                block[4] = static_cast<char>(block[4] | 0x80); // an answer
            std::error_code schreibfehler;
            asio::write(s, asio::buffer(block, n), schreibfehler);
        }
        s.shutdown(tcp::socket::shutdown_send, fehler);
    }

    asio::io_context kontext_;
    tcp::acceptor horcher_;
};

/// It answers detached threads as long as the program runs.
Sockswelt& welt() {
    static Sockswelt* const eine = new Sockswelt;
    return *eine;
}

class Fahrt : public Test {
protected:
    void SetUp() override {
        // Routes there already: this is the machine's own network.
        if (::geteuid() != 0 || !sh("test -w /dev/net/tun && ip route || echo nein").empty())
            GTEST_SKIP() << "Kein Tunnel: dieser Rechner gibt uns /dev/net/tun oder ein eigenes Netz nicht";
        welt().lehntAb = false;
        sh("ip tuntap add w0 mode tap; ip addr add 10.0.0.9/24 dev w0; ip link set w0 up; ip route add default via 10.0.0.1 dev w0");
        for (const char* datei : {"/var/db/x", "/heim/x", "/usr/bin/x"})
            ordner.lege(datei, "");
        ordner.lege("/sbin/ip", "#!/bin/sh\nexec ip \"$@\"\n", true);
        ordner.lege("/dns", "There aren't any DNS Servers set on Büro.\n");
        ordner.lege(
            "/usr/sbin/networksetup",
            "#!/bin/sh\ncd '" + ordner.pfad() +
                "'\ncase $1 in -get*) cat dns;; -set*) shift 2; [ ! -e kaputt ] || exit 4\n[ $1 = Empty ] && set -- "
                "\"There aren't any DNS Servers set on Büro.\"; printf '%s\\n' \"$@\" >dns;; esac\n",
            true);
        ordner.lege("/usr/sbin/scutil",
                    "#!/bin/sh\ncase $2 in list) echo '* (Disconnected) 1 VPN \"Firma\" [VPN]';;\n"
                    "show) echo '  RemoteAddress : 203.0.113.6';; esac\n",
                    true);
        sh("chmod 755 '" + ordner.pfad() + "'; chown nobody '" + heim + "'");
        vorher = netz();
    }
    void TearDown() override {
        helfer.reset();
        sh("ip link del w0");
    }

    /// All that may not be different afterwards.
    [[nodiscard]] std::string netz() const {
        return sh("ip -4 route; ip -6 route; ip rule; ip -6 rule; ip -o link | cut -d: -f2") +
               ordner.lies("/dns") + sh("ls '" + ordner.pfad() + "/var/db'");
    }

    /// The helper with the further words; of an option that is there twice the last one holds.
    [[nodiscard]] std::unique_ptr<Programm> starte(const std::vector<std::string>& dazu = {}) const {
        std::vector<std::string> worte{HELFER, "-proxy", "127.0.0.1:" + std::to_string(welt().port())};
        worte.insert(worte.end(), {"-stopp", stopp, "-dienst", "Büro", "-wurzel", ordner.pfad()});
        worte.insert(worte.end(), {"-wache", std::to_string(::getpid())});
        worte.insert(worte.end(), dazu.begin(), dazu.end());
        return std::make_unique<Programm>(worte, ordner.pfad() + "/log");
    }
    void laufe(const std::vector<std::string>& dazu = {}) {
        helfer = starte(dazu);
        ASSERT_TRUE(warteBis([&] { return existiert(stopp + ".laeuft"); }))
            << ordner.lies("/log") << ordner.lies("/heim/v.stopp.fehler");
    }
    [[nodiscard]] std::string kind() const {
        const std::string nummer = std::to_string(helfer->nummer());
        return sh("tr -d ' \\n' </proc/" + nummer + "/task/" + nummer + "/children");
    }

    /// The routes that lead into the tunnel or beside it.
    static std::string wege() {
        return sh(
            "ip route | sed 's/ *\\(proto\\|scope\\|linkdown\\).*//'; ip -6 route | grep /1 | cut -d' ' -f1-3");
    }

    /// The log without times and the numbers of ports and processes.
    [[nodiscard]] std::string log() const {
        return sh(R"(sed -E 's/^[0-9.]+ [0-9:]+  //; s/(0\.1:|Wache )[0-9]+/\1N/g; /In dieser Minute/d' ')" +
                  ordner.pfad() + "/log'");
    }

    static std::string frage(const Stelle& ziel, const std::string& was) {
        asio::io_context kontext;
        asio::ip::udp::socket s(kontext);
        s.connect({ziel.address(), ziel.port()});
        s.send(asio::buffer(was));
        std::string antwort(2000, '\0');
        std::error_code fehler;
        antwort.resize(s.receive(asio::buffer(antwort), 0, fehler));
        return fehler == asio::error::connection_refused ? "abgelehnt" : antwort;
    }

    static std::string hole(const Stelle& ziel, const std::string& bytes) {
        asio::io_context kontext;
        tcp::socket s(kontext);
        std::error_code fehler, schreibfehler; // a reset is told once: to who writes or to who reads
        s.connect(ziel, fehler);
        std::thread schreiber([&] {
            asio::write(s, asio::buffer(bytes), schreibfehler);
            if (!schreibfehler)
                s.shutdown(tcp::socket::shutdown_send, schreibfehler);
        });
        std::string antwort;
        asio::read(s, asio::dynamic_buffer(antwort), fehler);
        schreiber.join();
        return fehler == asio::error::eof && !schreibfehler ? antwort : "abgerissen";
    }

    Ordner ordner;
    std::string heim = ordner.pfad() + "/heim";
    std::string stopp = heim + "/v.stopp";
    std::string vorher;
    std::unique_ptr<Programm> helfer;
};

TEST_F(Fahrt, traegtAllesUndNichtsDavonVeraendert) {
    laufe();
    std::string bytes(3'000'000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * i >> 7);
    for (const char* ziel : {"203.0.113.5", "2001:db8::5"}) {
        EXPECT_TRUE(hole(stelle(ziel, 7), bytes) == bytes) << "not the same bytes from " << ziel;
        EXPECT_EQ(hole(stelle(ziel, 7), ""), "") << "half-closed at once";
        EXPECT_EQ(hole(stelle(ziel, 521), "x"), "abgerissen") << "refused";
        EXPECT_EQ(hole(stelle(ziel, 13), "x"), "abgerissen") << "reset";
        for (int i = 0; i < 2; ++i) // the second one on the connection that is there
            EXPECT_EQ(frage(stelle(ziel, 53), name), std::string(name).replace(2, 1, "\x81"));
        EXPECT_EQ(frage(stelle(ziel, 443), "QUIC"), "abgelehnt");
        asio::io_context kontext;
        tcp::socket stau(kontext); // nobody reads: what was taken is what fits between
        stau.connect(stelle(ziel, 19));
        stau.non_blocking(true);
        std::size_t genommen = 0;
        std::error_code voll;
        for (int leer = 0; leer < 20 && genommen < 150'000'000U;
             leer = voll ? leer + 1 : 0, std::this_thread::sleep_for(milliseconds(voll ? 20 : 0)))
            genommen += stau.write_some(asio::buffer(bytes), voll);
        EXPECT_LT(genommen, 150'000'000U); // some systems' buffers grow to 33 MB each
    }
    EXPECT_EQ(hole(stelle("100.127.255.254", 7), "x"), "abgerissen") << "Tailscale's, which does not run";
    const std::string lage = sh("cat /proc/" + kind() + "/status");
    EXPECT_THAT(lage,
                AllOf(HasSubstr("Uid:\t65534\t65534\t65534\t65534"), HasSubstr("CapEff:\t0000000000000000"),
                      HasSubstr("CapPrm:\t0000000000000000"), HasSubstr("NoNewPrivs:\t1")));
    EXPECT_EQ(ordner.lies("/dns"), "1.1.1.1\n9.9.9.9\n");
    for (const std::string router : {"10.0.0.1", "10.0.0.2"}) { // then in another network
        sh("ip route replace default via " + router + " dev w0");
        const std::string soll =
            "0.0.0.0/1 dev mobilsteg0\ndefault via " + router +
            " dev w0\n10.0.0.0/24 dev w0\n128.0.0.0/1 dev mobilsteg0\n198.19.108.2 dev mobilsteg0\n203.0.113.6 via " +
            router + " dev w0\n224.0.0.0/4 dev w0\n::/1 dev mobilsteg0\n8000::/1 dev mobilsteg0\n";
        EXPECT_TRUE(warteBis([&] { return wege() == soll; })) << wege();
    }
}

TEST_F(Fahrt, jedesEndeLaesstAllesWieVorher) {
    const auto signal = [&](int nummer) { return [this, nummer] { helfer->sende(nummer); }; };
    std::unique_ptr<Programm> wache;
    const std::string start = "Start: Proxy 127.0.0.1:N, Dienst Büro, alles, Wache N\n";
    const std::string bisHierher =
        start + "Beweis: eine Verbindung kam durch den Tunnel\n"
                "Weg für 203.0.113.6 am Tunnel vorbei\nWeg für 224.0.0.0/4 am Tunnel vorbei\n"
                "DNS von Büro: 1.1.1.1, 9.9.9.9 statt Empty\nWege über mobilsteg0: alles\n";
    // What happens, and why it ends; with a line end: that is a fault.
    for (const auto& [was, tue, grund] :
         std::vector<std::tuple<std::string, std::function<void()>, std::string>>{
             {"stop file", [&] { std::filesystem::create_symlink("/nirgends", stopp); }, "auf Bitte"},
             {"watched process", [&] { wache.reset(); }, "der Bordlotse ist weg"},
             {"SIGTERM", signal(SIGTERM), "auf Signal 15"},
             {"SIGHUP", signal(SIGHUP), "auf Signal 1"},
             {"child shot", [&] { ::kill(std::stoi(kind()), SIGKILL); }, "der Tunnel ist abgestürzt\n"},
             {"device gone", [] { sh("ip link del mobilsteg0"); },
              "das Gerät des Tunnels ist verschwunden\n"},
             {"helper shot", signal(SIGKILL), ""}}) {
        std::filesystem::remove(ordner.pfad() + "/log");
        wache = std::make_unique<Programm>(std::vector<std::string>{"sleep", "1000"}, "/dev/null");
        std::filesystem::remove(stopp + ".fehler");
        laufe({"-wache", std::to_string(wache->nummer())});
        EXPECT_NE(netz(), vorher) << was;
        tue();
        helfer->warteAufEnde();
        EXPECT_TRUE(warteBis([&] { return !existiert(stopp + ".laeuft"); })) << was;
        const bool schlimm = grund.ends_with('\n');
        std::string ende =
            (schlimm ? "mobilsteg-volltunnel: " + grund : "") + "Ende: " + grund + (schlimm ? "" : "\n");
        if (was == "helper shot") { // the next one takes back what stayed
            EXPECT_EQ(ordner.lies("/heim/v.stopp.fehler"), "der Helfer wurde beendet");
            EXPECT_EQ(ordner.lies("/dns"), "1.1.1.1\n9.9.9.9\n");
            ordner.lege("/heim/v.stopp", "");
            helfer = starte();
            EXPECT_EQ(helfer->warteAufEnde(), 0);
            ende = "Der Helfer wurde beendet; DNS und Umwege nimmt der nächste Start zurück\n"
                   "Zurückgenommen, was ein früherer Lauf hinterließ\n" +
                   start + "Ende: auf Bitte\n";
        } else {
            EXPECT_EQ(ordner.lies("/heim/v.stopp.fehler"), schlimm ? grund : "") << was;
        }
        EXPECT_EQ(log(), bisHierher + ende) << was;
        std::filesystem::remove(stopp);
        std::filesystem::remove(ordner.pfad() + "/var/db/mobilsteg-volltunnel.rueckbau.sperre");
        EXPECT_EQ(netz(), vorher) << was << ordner.lies("/log");
    }
}

TEST_F(Fahrt, nurVpnLaesstDieStandardrouteUndMeldetWasDurchgeht) {
    ordner.lege("/heim/fremd", "unberührt");
    for (const char* endung : {".vpns.json", ".laeuft", ".laeuft.neu"})
        std::filesystem::create_symlink(heim + "/fremd", stopp + endung);
    laufe({"-nur-vpn"});
    EXPECT_TRUE(warteBis([&] { return !std::filesystem::is_symlink(stopp + ".laeuft"); }));
    EXPECT_EQ(
        wege(),
        "default via 10.0.0.1 dev w0\n10.0.0.0/24 dev w0\n198.19.108.2 dev mobilsteg0\n203.0.113.6 dev mobilsteg0\n");
    EXPECT_EQ(ordner.lies("/dns"), "There aren't any DNS Servers set on Büro.\n");
    asio::io_context kontext;
    tcp::socket vpn(kontext);
    vpn.connect(stelle("203.0.113.6", 7));
    EXPECT_TRUE(warteBis([&] {
        return ordner.lies("/heim/v.stopp.vpns.json") ==
               R"({"vpns":[{"dienst":"Firma","server":"203.0.113.6"}]})";
    }));
    EXPECT_EQ(ordner.lies("/heim/fremd"), "unberührt");
    EXPECT_EQ(starte()->warteAufEnde(), 1);
    EXPECT_EQ(ordner.lies("/heim/v.stopp.fehler"), "es läuft schon ein Helfer\n");
    EXPECT_EQ(log(), "Start: Proxy 127.0.0.1:N, Dienst Büro, nur VPN, Wache N\n"
                     "Beweis: eine Verbindung kam durch den Tunnel\nWeg für 203.0.113.6 durch den Tunnel\n"
                     "Wege über mobilsteg0: die Server der VPNs\nVPN durch den Tunnel: Firma · 203.0.113.6\n"
                     "mobilsteg-volltunnel: es läuft schon ein Helfer\n");
    EXPECT_TRUE(existiert(stopp + ".laeuft"));
    helfer->sende(SIGTERM);
    char byte = 0;
    std::error_code ende;
    vpn.read_some(asio::buffer(&byte, 1), ende);
    EXPECT_EQ(ende, asio::error::connection_reset) << "a program hears at once that its connection is gone";
}

TEST_F(Fahrt, ohneNetzGehtEsGarNichtErstAn) {
    welt().lehntAb = true;
    helfer = starte();
    EXPECT_EQ(helfer->warteAufEnde(), 1);
    EXPECT_EQ(ordner.lies("/heim/v.stopp.fehler"), "kein Netz durch den Tunnel: der Proxy lehnt ab\n");
    std::filesystem::create_symlink(heim, ordner.pfad() + "/umweg");
    stopp = ordner.pfad() + "/umweg/v.stopp";
    helfer = starte();
    EXPECT_EQ(helfer->warteAufEnde(), 1);
    EXPECT_THAT(ordner.lies("/log"), HasSubstr("Der Ordner der Stoppdatei fehlt: " + stopp));
    EXPECT_THAT(ordner.lies("/log"), Not(HasSubstr("Wege über")));
}

} // namespace
