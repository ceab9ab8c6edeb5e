#include "probe/handy/Sage.hpp"

#include "probe/handy/Buchse.hpp"

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>

#include <iostream>

namespace mobilsteg::probehandy {

int sage(std::uint16_t steuerport, const std::string& befehl) {
    asio::io_context schleife;
    asio::ip::tcp::socket buchse(schleife);
    std::error_code fehler;
    buchse.connect(rueckschleife(steuerport), fehler);
    if (fehler) {
        std::cerr << "probehandy: auf Port " << steuerport << " hört kein Probehandy\n";
        return 1;
    }
    asio::write(buchse, asio::buffer(befehl + "\n"), fehler);
    std::string puffer;
    while (!fehler) {
        const std::size_t menge = asio::read_until(buchse, asio::dynamic_buffer(puffer), '\n', fehler);
        if (fehler) {
            break;
        }
        const std::string zeile = puffer.substr(0, menge);
        puffer.erase(0, menge);
        std::cout << zeile << std::flush;
        if (zeile == "ok\n") {
            return 0;
        }
        if (zeile.rfind("fehler: ", 0) == 0) {
            return 1;
        }
    }
    std::cerr << "probehandy: die Verbindung brach ab\n";
    return 1;
}

} // namespace mobilsteg::probehandy
