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

#include <atomic>
#include <cstdlib>
#include <thread>

using namespace mobilsteg;
using namespace std::string_literals;
using asio::ip::tcp;
using namespace testing;

namespace {

/// Serves one connection after the other on loopback, until it goes away.
class Server {
public:
    explicit Server(const std::function<void(tcp::socket&)>& bediene, std::uint16_t port = 0)
        : horcher_(kontext_, {asio::ip::address_v4::loopback(), port}), faden_([this, bediene] {
              while (true) {
                  auto kunde = horcher_.accept();
                  if (ende_)
                      return;
                  bediene(kunde);
              }
          }) {}
    ~Server() {
        ende_ = true;
        tcp::socket(kontext_).connect(horcher_.local_endpoint());
        faden_.join();
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    [[nodiscard]] std::uint16_t port() const { return horcher_.local_endpoint().port(); }

private:
    asio::io_context kontext_;
    tcp::acceptor horcher_;
    std::atomic<bool> ende_ = false;
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

// Neither way heeds the environment. The direct one would find nobody at this proxy, and the other one would
// go around the phone.
[[maybe_unused]] const bool umgebung = [] {
    for (const auto* name : {"http_proxy", "all_proxy", "ALL_PROXY", "https_proxy"})
        ::setenv(name, "http://127.0.0.1:9", 1);
    return ::setenv("no_proxy", "nur-am-handy.invalid", 1) == 0;
}();

const std::string vierMegabyte(4U << 20U, 'x');

/// What each path answers; nothing at all for one that is not listed.
const std::map<std::string, std::string> antworten = {
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

/// The answer as "status body", "-" without one; `anfragen`: what the server heard.
std::string hole(const std::string& pfad, const std::string& koerper = "",
                 std::vector<std::string>* anfragen = nullptr) {
    const Server server([&](tcp::socket& socket) {
        const std::string anfrage = liesAnfrage(socket);
        EXPECT_EQ(socketsMitPort(::getpeername, socket.local_endpoint().port()), std::pair(1, 0))
            << "a tool would inherit it";
        const auto ab = anfrage.find(' ') + 1;
        const auto treffer = antworten.find(anfrage.substr(ab, anfrage.find(' ', ab) - ab));
        if (treffer != antworten.end())
            asio::write(socket, asio::buffer(treffer->second), egal);
        if (anfragen != nullptr) // without the body, which is long
            anfragen->push_back(anfrage.ends_with(koerper)
                                    ? anfrage.substr(0, anfrage.size() - koerper.size()) + "[...]"
                                    : anfrage.substr(0, 1000));
    });
    const auto ergebnis = CurlHttp().hole({HttpAnfrage::Weg::direkt,
                                           koerper.empty() ? "GET" : "POST",
                                           "http://127.0.0.1:" + std::to_string(server.port()) + pfad,
                                           {{"Content-Type", "text/plain"}},
                                           koerper});
    return ergebnis ? std::to_string(ergebnis->status) + " " + ergebnis->koerper : "-";
}

TEST(CurlHttp, bringtWasDerServerSagtOderNichts) {
    EXPECT_EQ(hole("/gut"), "200 da");
    EXPECT_EQ(hole("/kaputt"), "503 später");
    EXPECT_EQ(hole("/302"), "200 da");
    EXPECT_EQ(hole("/ende"), "200 bis zum Ende");
    EXPECT_TRUE(hole("/gross") == "200 " + vierMegabyte);
    for (const auto* pfad : {"/stumm", "/kreis", "/datei", "/halb", "/fremd", "/zuviel"})
        EXPECT_EQ(hole(pfad), "-") << pfad;
}

TEST(CurlHttp, sendetDenKoerperUndLaesstIhnNurBei302Fallen) {
    const std::string koerper =
        "viel\0"s + std::string(1'200'000, 'k'); // curl would ask for leave to send it
    std::vector<std::string> anfragen;
    hole("/302", koerper, &anfragen);
    hole("/307", koerper, &anfragen);
    const auto post = [&](const std::string& pfad) {
        return AllOf(StartsWith("POST " + pfad + " HTTP/1.1\r\n"), Not(HasSubstr("Expect:")),
                     HasSubstr("\r\nContent-Type: text/plain\r\n"), EndsWith("\r\n\r\n[...]"));
    };
    const auto get = AllOf(StartsWith("GET /gut "), EndsWith("\r\n\r\n"));
    EXPECT_THAT(anfragen, ElementsAre(post("/302"), get, post("/307"), post("/gut")));
}

TEST(CurlHttp, fragtDenProxyDesHandysNachDemNamen) {
    std::string wunsch;
    std::string anfrage;
    const HttpAnfrage frage{
        HttpAnfrage::Weg::durchProxy, "GET", "http://nur-am-handy.invalid:8123/ip", {}, ""};
    for (const auto& leave : {"\x05\x00"s, "\x05\xFF"s}) {
        const Server proxy(
            [&](tcp::socket& s) {
                (void)lies(s, static_cast<unsigned char>(lies(s, 2).back())); // the ways to log in
                asio::write(s, asio::buffer(leave), egal);
                wunsch += lies(s, 27);
                asio::write(s, asio::buffer("\x05\x00\x00\x01\x00\x00\x00\x00\x00\x00", 10), egal);
                anfrage += liesAnfrage(s);
                asio::write(s, asio::buffer(antwort("200 OK", "203.0.113.7\n")), egal);
            },
            1080);
        EXPECT_EQ(CurlHttp().hole(frage).has_value(), leave.back() == 0);
    }
    EXPECT_EQ(wunsch, "\x05\x01\x00\x03\x14nur-am-handy.invalid\x1F\xBB"s);
    EXPECT_THAT(anfrage, StartsWith("GET /ip HTTP/1.1\r\nHost: nur-am-handy.invalid:8123\r\n"));
    EXPECT_FALSE(CurlHttp().hole(frage)) << "nobody listens";
}

} // namespace
