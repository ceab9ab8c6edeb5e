// The real HTTP client against a real server. Its limits of 3 and 10 silent seconds are too long to wait for
// here.

#include "handy/Http.hpp"

#include "tests/plattform/Deskriptoren.hpp"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>
#include <gmock/gmock.h>

#include <cstdlib>
#include <mutex>
#include <thread>

using namespace mobilsteg;
using namespace std::string_literals;
using asio::ip::tcp;
using namespace testing;

namespace {

/// A server on loopback with a thread of its own; it closes each connection when `bediene` is done with it.
class Loopback {
public:
    explicit Loopback(std::function<void(tcp::socket&)> bediene, std::uint16_t port = 0)
        : horcher_(kontext_, {asio::ip::address_v4::loopback(), port}), bediene_(std::move(bediene)) {
        nimmAn();
        faden_ = std::thread([this] { kontext_.run(); });
    }
    ~Loopback() {
        kontext_.stop();
        faden_.join();
    }
    Loopback(const Loopback&) = delete;
    Loopback& operator=(const Loopback&) = delete;

    [[nodiscard]] std::uint16_t port() const { return horcher_.local_endpoint().port(); }

    /// Returns when the connection that is being served, if any, has been.
    void warte() { const std::lock_guard wache(schloss_); }

private:
    void nimmAn() {
        horcher_.async_accept([this](const std::error_code&, tcp::socket socket) {
            const std::lock_guard wache(schloss_);
            bediene_(socket);
            socket.close();
            nimmAn();
        });
    }

    asio::io_context kontext_;
    tcp::acceptor horcher_;
    std::function<void(tcp::socket&)> bediene_;
    std::mutex schloss_; // held while serving
    std::thread faden_;
};

std::error_code egal; // a client that is gone shows in what it got or sent

std::string lies(tcp::socket& socket, std::size_t anzahl) {
    std::string bytes(anzahl, '\0');
    bytes.resize(asio::read(socket, asio::buffer(bytes), egal));
    return bytes;
}

/// One HTTP request with its body.
std::string liesAnfrage(tcp::socket& socket) {
    std::string bytes;
    const std::size_t kopf = asio::read_until(socket, asio::dynamic_buffer(bytes), "\r\n\r\n", egal);
    const std::size_t laenge = bytes.find("Content-Length: ");
    if (laenge < kopf)
        bytes += lies(socket, kopf + std::stoul(bytes.substr(laenge + 16)) - bytes.size());
    return bytes;
}

std::string antwort(const std::string& kopf, const std::string& koerper = "") {
    return "HTTP/1.1 " + kopf + "\r\nContent-Length: " + std::to_string(koerper.size()) + "\r\n\r\n" +
           koerper;
}

/// Runs `tat` with an environment that names `wert` under each of `namen`.
void mitUmgebung(const std::vector<const char*>& namen, const char* wert, const std::function<void()>& tat) {
    for (const auto* name : namen)
        ::setenv(name, wert, 1);
    tat();
    for (const auto* name : namen)
        ::unsetenv(name);
}

const std::string vierMegabyte(4U << 20U, 'x');

class CurlHttpTest : public Test {
protected:
    std::optional<HttpErgebnis> hole(const std::string& pfad, const std::string& methode = "GET",
                                     const std::string& koerper = "") {
        anfragen.clear();
        server.warte();
        auto ergebnis = http.hole({HttpAnfrage::Weg::direkt,
                                   methode,
                                   "http://127.0.0.1:" + std::to_string(server.port()) + pfad,
                                   {{"Content-Type", "text/plain"}},
                                   koerper});
        server.warte();
        return ergebnis;
    }

    /// What each path answers; nothing at all for one that is not listed.
    std::map<std::string, std::string> antworten = {
        {"/gut", antwort("200 OK", "da")},
        {"/kaputt", antwort("503 Service Unavailable", "später")},
        {"/302", antwort("302 Found\r\nLocation: /gut", "ein Umweg")},
        {"/307", antwort("307 Temporary Redirect\r\nLocation: /gut", "ein Umweg")},
        {"/kreis", antwort("302 Found\r\nLocation: /kreis")},
        {"/datei", antwort("302 Found\r\nLocation: file:///etc/hostname")},
        {"/halb", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalb"},
        {"/ende", "HTTP/1.0 200 OK\r\n\r\nbis zum Ende"},
        {"/fremd", "SSH-2.0-OpenSSH_9.2\r\n"},
        {"/gross", antwort("200 OK", vierMegabyte)},
        {"/zuviel", antwort("200 OK", vierMegabyte + "x")},
    };
    std::vector<std::string> anfragen;
    std::pair<int, int> sockets;
    Loopback server{[this](tcp::socket& socket) {
        anfragen.push_back(liesAnfrage(socket));
        sockets = socketsMitPort(::getpeername, server.port());
        const std::size_t pfad = anfragen.back().find(' ') + 1;
        const std::string& a =
            antworten[anfragen.back().substr(pfad, anfragen.back().find(' ', pfad) - pfad)];
        asio::write(socket, asio::buffer(a), egal);
    }};
    CurlHttp http;
};

TEST_F(CurlHttpTest, bringtWasDerServerSagtOderNichts) {
    for (const auto& [pfad, soll] : std::map<std::string, std::string>{{"/gut", "200 da"},
                                                                       {"/kaputt", "503 später"},
                                                                       {"/302", "200 da"},
                                                                       {"/ende", "200 bis zum Ende"},
                                                                       {"/gross", "200 " + vierMegabyte}}) {
        const auto e = hole(pfad);
        EXPECT_TRUE(e && std::to_string(e->status) + " " + e->koerper == soll) << pfad;
    }
    for (const auto* pfad : {"/stumm", "/kreis", "/datei", "/halb", "/fremd", "/zuviel"})
        EXPECT_FALSE(hole(pfad)) << pfad;
}

TEST_F(CurlHttpTest, sendetDenKoerperUndLaesstIhnNurBei302Fallen) {
    const std::string koerper =
        "viel\0"s + std::string(1'200'000, 'k'); // curl would ask for leave to send this
    ASSERT_TRUE(hole("/gut", "POST", koerper));
    EXPECT_THAT(anfragen.at(0),
                AllOf(StartsWith("POST /gut HTTP/1.1\r\n"), Not(HasSubstr("Expect:")),
                      HasSubstr("\r\nContent-Type: text/plain\r\n"), EndsWith("\r\n\r\n" + koerper)));
    ASSERT_TRUE(hole("/302", "POST", koerper));
    EXPECT_THAT(anfragen.at(1), AllOf(StartsWith("GET /gut "), EndsWith("\r\n\r\n")));
    ASSERT_TRUE(hole("/307", "POST", koerper));
    EXPECT_THAT(anfragen.at(1), AllOf(StartsWith("POST /gut "), EndsWith("\r\n\r\n" + koerper)));
    ASSERT_TRUE(hole("/gut")); // nothing of the last request is left in the session
    EXPECT_THAT(anfragen.at(0), AllOf(StartsWith("GET /gut "), EndsWith("\r\n\r\n")));
}

TEST_F(CurlHttpTest, gehtDirektWasAuchDieUmgebungSagt) {
    mitUmgebung({"http_proxy", "all_proxy", "ALL_PROXY", "https_proxy"}, "http://127.0.0.1:9",
                [this] { EXPECT_TRUE(hole("/gut")); });
    EXPECT_EQ(sockets, std::pair(1, 0)) << "a tool started meanwhile would inherit the connection";
}

TEST(CurlHttp, fragtDenProxyDesHandysNachDemNamen) {
    std::string wunsch;
    std::string anfrage;
    bool erlaubt = true;
    const auto bediene = [&](tcp::socket& s) {
        (void)lies(s, static_cast<unsigned char>(lies(s, 2).back())); // the ways to log in
        asio::write(s, asio::buffer(erlaubt ? "\x05\x00" : "\x05\xFF", 2), egal);
        wunsch = lies(s, 27);
        asio::write(s, asio::buffer("\x05\x00\x00\x01\x00\x00\x00\x00\x00\x00", 10), egal);
        anfrage = liesAnfrage(s);
        asio::write(s, asio::buffer(antwort("200 OK", "203.0.113.7\n")), egal);
    };
    std::optional<Loopback> proxy;
    try {
        proxy.emplace(bediene, 1080);
    } catch (const std::system_error&) {
        GTEST_SKIP() << "127.0.0.1:1080 ist belegt: läuft hier ein Proxy oder das Programm selbst?";
    }
    CurlHttp http;
    HttpAnfrage frage;
    frage.weg = HttpAnfrage::Weg::durchProxy;
    frage.url = "http://nur-am-handy.invalid:8123/ip";
    mitUmgebung({"no_proxy", "NO_PROXY"}, "*", [&] { // the proof must not go around the phone
        EXPECT_EQ(http.hole(frage).value_or(HttpErgebnis{}).koerper, "203.0.113.7\n");
    });
    proxy->warte();
    EXPECT_EQ(wunsch, "\x05\x01\x00\x03\x14nur-am-handy.invalid\x1F\xBB"s);
    EXPECT_THAT(anfrage, StartsWith("GET /ip HTTP/1.1\r\nHost: nur-am-handy.invalid:8123\r\n"));
    erlaubt = false;
    proxy->warte();
    EXPECT_FALSE(http.hole(frage));
    proxy.reset();
    EXPECT_FALSE(http.hole(frage)) << "nobody listens";
}

} // namespace
