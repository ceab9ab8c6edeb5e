#include "probe/handy/Tastatur.hpp"

#include "probe/handy/Text.hpp"

#include <asio/buffer.hpp>
#include <asio/error.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/read_until.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <iostream>
#include <memory>
#include <string>
#include <utility>

namespace mobilsteg::probehandy {

namespace {

constexpr std::size_t laengsteEingabe = 1024 * 1024;

bool istLeer(const struct stat& eingabe) {
    struct stat nichts {};
    return S_ISCHR(eingabe.st_mode) && ::stat("/dev/null", &nichts) == 0 && nichts.st_rdev == eingabe.st_rdev;
}

class Tastatursitzung : public std::enable_shared_from_this<Tastatursitzung> {
public:
    Tastatursitzung(asio::io_context& schleife, Befehle& befehle, std::function<void()> beende)
        : eingabe_(schleife), befehle_(befehle), beende_(std::move(beende)) {}

    /// A regular file can neither be waited for nor does it need to be.
    void liesDatei() {
        std::array<char, 4096> stueck{};
        ssize_t menge = 0;
        while ((menge = ::read(STDIN_FILENO, stueck.data(), stueck.size())) > 0) {
            puffer_.append(stueck.data(), static_cast<std::size_t>(menge));
        }
        liesZeile();
    }

    void liesLaufend() {
        // The event loop makes what it reads non-blocking, and that is a property the terminal shares with
        // our own output and with the shell. Opened anew, the input has it for itself.
        int nummer = ::open("/dev/stdin", O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
        if (nummer < 0) {
            nummer = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
        }
        std::error_code fehler;
        eingabe_.assign(nummer, fehler);
        if (!fehler) {
            liesZeile();
        }
    }

private:
    void liesZeile() {
        asio::async_read_until(eingabe_, asio::dynamic_buffer(puffer_, laengsteEingabe), '\n',
                               [selbst = shared_from_this()](std::error_code fehler, std::size_t menge) {
                                   selbst->nimmZeile(fehler, menge);
                               });
    }

    void nimmZeile(std::error_code fehler, std::size_t menge) {
        const std::string zeile = puffer_.substr(0, fehler ? puffer_.size() : menge);
        puffer_.erase(0, zeile.size());
        const bool letzte = static_cast<bool>(fehler);
        if (ohneRand(zeile).empty()) {
            if (!letzte) {
                liesZeile();
            }
            return;
        }
        befehle_.fuehreAus(zeile, [selbst = shared_from_this(), letzte](const Befehlsantwort& antwort) {
            std::cout << antwort.alsText() << std::flush;
            if (antwort.ende) {
                selbst->beende_();
            } else if (!letzte) {
                selbst->liesZeile();
            }
        });
    }

    asio::posix::stream_descriptor eingabe_;
    Befehle& befehle_;
    std::function<void()> beende_;
    std::string puffer_;
};

} // namespace

void liesTastatur(asio::io_context& schleife, Befehle& befehle, std::function<void()> beende) {
    struct stat eingabe {};
    if (::fstat(STDIN_FILENO, &eingabe) != 0 || istLeer(eingabe)) {
        return;
    }
    auto sitzung = std::make_shared<Tastatursitzung>(schleife, befehle, std::move(beende));
    if (S_ISREG(eingabe.st_mode)) {
        sitzung->liesDatei();
    } else {
        sitzung->liesLaufend();
    }
}

} // namespace mobilsteg::probehandy
