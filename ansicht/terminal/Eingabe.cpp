#include "ansicht/terminal/Eingabe.hpp"

#include "ansicht/terminal/Befehle.hpp"
#include "ansicht/terminal/Schirm.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"

#include <sys/select.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace mobilsteg {

namespace {

// Back-pressure for piped input: beyond this many waiting lines the reader waits, too.
constexpr std::size_t meisteWartende = 1000;

/// Another program that shares the input with us may have made it one that does not block.
void warteAufEingabe() {
    fd_set eingabe; // not poll: a Mac's knows no terminals
    FD_ZERO(&eingabe);
    FD_SET(STDIN_FILENO, &eingabe);
    ::select(STDIN_FILENO + 1, &eingabe, nullptr, nullptr, nullptr);
}

} // namespace

void Zeilen::nimm(std::string_view block, const std::function<void(std::string)>& zeile) {
    for (std::size_t ende = 0; (ende = block.find('\n')) != std::string_view::npos;
         block.remove_prefix(ende + 1)) {
        haengeAn(block.substr(0, ende));
        zeile(std::exchange(angefangen_, {}));
    }
    haengeAn(block);
}

std::optional<std::string> Zeilen::rest() {
    if (angefangen_.empty())
        return std::nullopt;
    return std::exchange(angefangen_, {});
}

void Zeilen::haengeAn(std::string_view text) {
    angefangen_.append(text.substr(0, laengste - angefangen_.size()));
}

// Shared with the reading thread, which nothing can interrupt and which therefore may outlive the owner.
struct Eingabe::Innen : std::enable_shared_from_this<Innen> {
    std::mutex schloss;
    std::condition_variable neues;
    std::condition_variable platz;
    std::deque<std::string> gelesen;
    bool zuEnde = false;
    Schlange* haupt = nullptr; // gone once the owner is
    std::function<void(const std::string&)> befehl;
    std::function<void()> amEnde;
    std::shared_ptr<Schirm> schirm;

    void nimmAuf(std::string zeile) {
        std::unique_lock wache(schloss);
        platz.wait(wache, [&] { return gelesen.size() < meisteWartende || haupt == nullptr; });
        gelesen.push_back(std::move(zeile));
        neues.notify_one();
        if (haupt != nullptr)
            haupt->async([selbst = shared_from_this()] { selbst->arbeiteAb(); });
    }

    void beende() {
        const std::lock_guard wache(schloss);
        zuEnde = true;
        neues.notify_one();
        if (haupt != nullptr)
            haupt->async(amEnde);
    }

    /// On the main queue. A dialog may have taken the line meanwhile; then there is nothing to do.
    void arbeiteAb() {
        std::unique_lock wache(schloss);
        if (gelesen.empty() || haupt == nullptr)
            return;
        const std::string zeile = std::move(gelesen.front());
        gelesen.pop_front();
        platz.notify_one();
        wache.unlock();
        befehl(zeile);
    }

    void lies() {
        if (schirm) {
            while (auto zeile = schirm->zeile())
                nimmAuf(std::move(*zeile));
        } else {
            liesStandardeingabe();
        }
        beende();
    }

    void liesStandardeingabe() {
        Zeilen zeilen;
        std::array<char, 4096> block{};
        while (true) {
            const ssize_t n = ::read(STDIN_FILENO, block.data(), block.size());
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0 && errno == EAGAIN) {
                warteAufEingabe();
                continue;
            }
            if (n <= 0)
                break;
            zeilen.nimm({block.data(), static_cast<std::size_t>(n)},
                        [this](std::string zeile) { nimmAuf(std::move(zeile)); });
        }
        if (auto rest = zeilen.rest())
            nimmAuf(std::move(*rest));
    }
};

Eingabe::Eingabe(Schlange& haupt, std::function<void(const std::string&)> befehl,
                 std::function<void()> amEnde)
    : innen_(std::make_shared<Innen>()) {
    innen_->haupt = &haupt;
    innen_->befehl = std::move(befehl);
    innen_->amEnde = std::move(amEnde);
}

Eingabe::~Eingabe() {
    const std::lock_guard wache(innen_->schloss);
    innen_->haupt = nullptr;
    innen_->platz.notify_one();
}

void Eingabe::beginne(std::shared_ptr<Schirm> schirm) {
    innen_->schirm = std::move(schirm);
    std::thread([innen = innen_] { innen->lies(); }).detach();
}

std::optional<std::string> Eingabe::naechste() {
    std::unique_lock wache(innen_->schloss);
    innen_->neues.wait(wache, [&] { return !innen_->gelesen.empty() || innen_->zuEnde; });
    if (innen_->gelesen.empty())
        return std::nullopt;
    std::string zeile = std::move(innen_->gelesen.front());
    innen_->gelesen.pop_front();
    innen_->platz.notify_one();
    return zeile;
}

int Terminaldialog::frage(const Frage& frage) {
    tafel_.frage(&frage);
    int antwort = -1;
    while (const auto zeile = eingabe_.naechste()) {
        if (const auto gewaehlt = antwortAuf(frage, *zeile)) {
            antwort = *gewaehlt;
            break;
        }
        tafel_.sage(moeglicheAntworten(frage));
    }
    tafel_.frage(nullptr);
    return antwort;
}

} // namespace mobilsteg
