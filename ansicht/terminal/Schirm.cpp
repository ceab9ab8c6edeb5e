#include "ansicht/terminal/Schirm.hpp"

#include "ansicht/terminal/Terminaltafel.hpp"
#include "plattform/Text.hpp"

#include <fcntl.h>
#include <histedit.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cwchar>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace mobilsteg {

namespace {

// Lines that are too long are cut by the terminal, not wrapped: a wide character counts as one column here.
constexpr std::string_view betreten = "\x1b[?1049h\x1b[?7l";
constexpr std::string_view verlassen = "\x1b[?7h\x1b[?25h\x1b[?1049l";

// For signals' handlers.
struct {
    int eingabe = -1;
    int ausgabe = -1;
    int wecken = -1; ///< written to: the reading thread looks up
    termios vorher{};
    std::atomic<bool> imSchirm = false;
} rueckweg;

void wecke(char weckruf) {
    (void)!::write(rueckweg.wecken, &weckruf, 1); // full: it will look up anyway
}

/// Also in signal context.
void stelleZurueck() {
    if (!rueckweg.imSchirm.exchange(false))
        return;
    // Beside a script that stopped before us the shell has the terminal already: not to stop for that, too.
    sigset_t hintergrund, vorher;
    sigemptyset(&hintergrund);
    sigaddset(&hintergrund, SIGTTOU);
    ::pthread_sigmask(SIG_BLOCK, &hintergrund, &vorher);
    (void)!::write(rueckweg.ausgabe, verlassen.data(), verlassen.size());
    ::tcsetattr(rueckweg.eingabe, TCSANOW, &rueckweg.vorher);
    ::pthread_sigmask(SIG_SETMASK, &vorher, nullptr);
}

void beiWechsel(int signal) {
    const int fehler = errno;
    wecke(static_cast<char>(signal));
    errno = fehler;
}

/// The signal's default, which is back in force, comes right behind it.
void beiTod(int signal) {
    stelleZurueck();
    ::raise(signal);
}

void fange(std::initializer_list<int> signale, void (*behandlung)(int), int merkmale) {
    for (const int signal : signale) {
        struct sigaction alt = {};
        struct sigaction neu = {};
        neu.sa_handler = behandlung;
        neu.sa_flags = merkmale;
        // What was ignored stays so: without job control nobody would wake us from a stop.
        if (::sigaction(signal, nullptr, &alt) == 0 && alt.sa_handler != SIG_IGN)
            ::sigaction(signal, &neu, nullptr);
    }
}

/// What is typed are characters only where the locale says that bytes are UTF-8.
void sorgeFuerUtf8() {
    std::setlocale(LC_CTYPE, "");
    for (const char* name : {"C.UTF-8", "en_US.UTF-8"})
        if (MB_CUR_MAX == 1)
            std::setlocale(LC_CTYPE, name);
}

/// Empty: not set, too.
std::string umgebung(const char* name) {
    const char* wert = std::getenv(name);
    return wert == nullptr ? "" : wert;
}

/// One call: the terminal takes it whole, or is gone.
void schreibe(std::string_view bytes) {
    (void)!::write(rueckweg.ausgabe, bytes.data(), bytes.size());
}

/// What all of them begin with, not ending within a character.
std::string gemeinsamerAnfang(const std::vector<std::string>& texte) {
    std::string_view anfang = texte.front();
    for (const auto& text : texte)
        while (!text.starts_with(anfang))
            anfang = ersteZeichen(anfang, zeichenzahl(anfang) - 1);
    return std::string(anfang);
}

} // namespace

Terminalmasse terminalmasse(std::FILE* datei) {
    winsize masse{};
    if (::isatty(::fileno(datei)) == 0)
        return {};
    if (::ioctl(::fileno(datei), TIOCGWINSZ, &masse) != 0 || masse.ws_col == 0 || masse.ws_row == 0)
        return {80, 24};
    return {std::clamp<std::size_t>(masse.ws_col, 40, 200), masse.ws_row};
}

Schirm::Schirm(std::FILE* eingabe, std::FILE* ausgabe, int weckrufe)
    : ausgabe_(ausgabe), tastatur_(::fileno(eingabe)), weckrufe_(weckrufe),
      nichts_(std::fopen("/dev/null", "we")),
      zeile_(el_init_fd("mobilsteg", eingabe, nichts_, nichts_, tastatur_, ::fileno(ausgabe),
                        ::fileno(nichts_))),
      frueheres_(history_init()) {
    static Schirm* dieser = nullptr;
    dieser = this;
    using Taste = unsigned char (*)(EditLine*, int);
    const Taste tab = [](EditLine*, int) { return dieser->ergaenze(); };
    const Taste bildAuf = [](EditLine*, int) { return dieser->blaettere(false); };
    const Taste bildAb = [](EditLine*, int) { return dieser->blaettere(true); };
    int (*const lies)(EditLine*, wchar_t*) = [](EditLine*, wchar_t* zeichen) {
        return dieser->naechstesZeichen(*zeichen);
    };
    el_set(zeile_, EL_EDITOR, "emacs");
    el_set(zeile_, EL_GETCFN, lies);
    el_set(zeile_, EL_ADDFN, "ergaenze", "", tab);
    el_set(zeile_, EL_ADDFN, "bild-auf", "", bildAuf);
    el_set(zeile_, EL_ADDFN, "bild-ab", "", bildAb);
    el_set(zeile_, EL_BIND, "^I", "ergaenze", nullptr);
    el_set(zeile_, EL_BIND, "\\e[5~", "bild-auf", nullptr);
    el_set(zeile_, EL_BIND, "\\e[6~", "bild-ab", nullptr);
    // Ctrl-S would hold the last words, and with them the process's end.
    el_set(zeile_, EL_SETTY, "-d", "-ixon", nullptr);
    HistEvent ereignis;
    history(frueheres_, &ereignis, H_SETSIZE, 100);
    history(frueheres_, &ereignis, H_SETUNIQUE, 1);
    el_set(zeile_, EL_HIST, history, frueheres_);
}

std::shared_ptr<Schirm> Schirm::oeffne(std::FILE* eingabe, std::FILE* ausgabe) {
    const auto art = umgebung("TERM");
    int rohr[2] = {-1, -1};
    if (::isatty(::fileno(eingabe)) == 0 || ::isatty(::fileno(ausgabe)) == 0 || art.empty() ||
        art == "dumb" || ::pipe(rohr) != 0)
        return nullptr;
    for (const int ende : rohr) {
        ::fcntl(ende, F_SETFD, FD_CLOEXEC);
        ::fcntl(ende, F_SETFL, O_NONBLOCK);
    }
    rueckweg.eingabe = ::fileno(eingabe);
    rueckweg.ausgabe = ::fileno(ausgabe);
    rueckweg.wecken = rohr[1];
    ::tcgetattr(rueckweg.eingabe, &rueckweg.vorher);
    fange({SIGWINCH, SIGCONT, SIGTSTP}, beiWechsel, SA_RESTART);
    fange({SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}, beiTod,
          static_cast<int>(SA_RESETHAND));
    sorgeFuerUtf8();
    return std::shared_ptr<Schirm>(new Schirm(eingabe, ausgabe, rohr[0]));
}

Schirm::~Schirm() {
    ende("");
    el_end(zeile_);
    history_end(frueheres_);
    std::fclose(nichts_);
    ::close(weckrufe_);
    ::close(std::exchange(rueckweg.wecken, -1));
}

void Schirm::zeige(Text text, std::vector<std::string> vorschlaege) {
    const std::lock_guard wache(schloss_);
    text_ = std::move(text);
    vorschlaege_ = std::move(vorschlaege);
    wecke(0);
}

void Schirm::sage(const std::string& text) {
    const std::lock_guard wache(schloss_);
    gesagt_ = text;
    wecke(0);
}

std::optional<std::string> Schirm::zeile() {
    std::unique_lock wache(schloss_);
    if (zuEnde_)
        return std::nullopt;
    liest_ = true;
    wache.unlock();
    if (!rueckweg.imSchirm)
        betritt();
    int laenge = 0;
    const char* getipptes = el_gets(zeile_, &laenge);
    wache.lock();
    liest_ = false;
    gelesen_.notify_all();
    if (getipptes == nullptr || laenge <= 0 || zuEnde_)
        return std::nullopt;
    gesagt_.clear();
    std::string zeile(beschnitten({getipptes, static_cast<std::size_t>(laenge)}));
    HistEvent ereignis;
    if (!zeile.empty())
        history(frueheres_, &ereignis, H_ENTER, zeile.c_str());
    return zeile;
}

void Schirm::ende(const std::string& schlusswort) {
    const std::lock_guard nurEiner(endeschloss_);
    if (zuEnde_.exchange(true))
        return;
    wecke(0);
    std::unique_lock wache(schloss_);
    // It may hang in the terminal, which need not take what is written.
    gelesen_.wait_for(wache, std::chrono::milliseconds(500), [this] { return !liest_; });
    stelleZurueck();
    if (!schlusswort.empty())
        schreibe(schlusswort + "\n");
}

// --- the drawing thread -----------------------------------------------------------------------------------

void Schirm::betritt() {
    el_set(zeile_, EL_PREP_TERM, 0); // else it takes the terminal for as it left it
    el_set(zeile_, EL_PREP_TERM, 1);
    rueckweg.imSchirm = true;
    schreibe(betreten);
}

void Schirm::nimmWeckrufe() {
    for (char ruf = 0; ::read(weckrufe_, &ruf, 1) == 1;) {
        if (ruf == SIGTSTP) { // the whole process stops here, unless there is no shell that could continue it
            stelleZurueck();
            std::signal(SIGTSTP, SIG_DFL);
            ::raise(SIGTSTP);
            fange({SIGTSTP}, beiWechsel, SA_RESTART);
        }
        if (ruf == SIGTSTP || ruf == SIGCONT)
            betritt();
    }
}

/// libedit asks for a character: the moment to draw what has changed, and to wait.
int Schirm::naechstesZeichen(wchar_t& zeichen) {
    std::mbstate_t angefangen{};
    while (!zuEnde_) {
        nimmWeckrufe();
        int wartende = 0;
        if (::ioctl(tastatur_, FIONREAD, &wartende) != 0 || wartende == 0) // not while a text is being pasted
            zeichne();
        fd_set menge; // not poll: a Mac's knows no terminals
        FD_ZERO(&menge);
        FD_SET(tastatur_, &menge);
        FD_SET(weckrufe_, &menge);
        char byte = 0;
        if (::select(std::max(tastatur_, weckrufe_) + 1, &menge, nullptr, nullptr, nullptr) <= 0 ||
            !FD_ISSET(tastatur_, &menge))
            continue;
        const ssize_t n = ::read(tastatur_, &byte, 1);
        if (n < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (n <= 0)
            break;
        const std::size_t laenge = std::mbrtowc(&zeichen, &byte, 1, &angefangen);
        if (laenge <= 1)
            return 1;
        if (laenge == static_cast<std::size_t>(-1)) // no character: dropped
            angefangen = {};
    }
    return 0;
}

/// Tab: the line becomes as long as there is one way to go on; then the ways are told.
unsigned char Schirm::ergaenze() {
    const std::lock_guard wache(schloss_);
    const LineInfo* getipptes = el_line(zeile_);
    const std::string vorn(getipptes->buffer, getipptes->cursor);
    auto moeglich = vorschlaege_;
    std::erase_if(moeglich, [klein = inKleinbuchstaben(vorn)](const auto& m) {
        return !inKleinbuchstaben(m).starts_with(klein);
    });
    if (moeglich.empty())
        return CC_NORM;
    const auto anfang = gemeinsamerAnfang(moeglich);
    if (anfang.size() <= vorn.size()) {
        gesagt_ = moeglich.size() > 1 ? verbunden(moeglich, " · ") : "";
        return CC_NORM;
    }
    el_deletestr(zeile_, static_cast<int>(zeichenzahl(vorn)));
    el_insertstr(zeile_, anfang.c_str());
    return CC_REFRESH;
}

unsigned char Schirm::blaettere(bool abwaerts) {
    const std::lock_guard wache(schloss_);
    const std::size_t seite = terminalmasse(ausgabe_).hoehe / 2;
    ab_ = abwaerts ? ab_ + seite : ab_ - std::min(ab_, seite);
    return CC_NORM;
}

void Schirm::zeichne() {
    const auto masse = terminalmasse(ausgabe_);
    if (masse.breite == 0)
        return; // it has been closed
    const Schriftbild schriftbild{umgebung("NO_COLOR").empty(), masse.breite};
    const auto hinweis = umgebung("MOBILSTEG_HINWEIS");
    const auto fuss = hinweis.empty() ? "" : alsText(hinweis, schriftbild, Farbe::sekundaer);
    std::unique_lock wache(schloss_);
    std::size_t platzUnten = masse.hoehe - 1;
    std::size_t ganz = 0;
    const auto gesagt = ausschnitt(gesagt_.empty() ? "" : alsText(gesagt_, schriftbild), platzUnten, ganz);
    platzUnten -= gesagt.size();
    auto unten = ausschnitt(fuss, platzUnten / 4, ganz); // the panel comes first
    auto zeilen = ausschnitt(text_ ? text_(schriftbild) : "", platzUnten - unten.size(), ab_);
    wache.unlock();
    unten.insert(unten.end(), gesagt.begin(), gesagt.end());
    zeilen.insert(zeilen.end(), unten.begin(), unten.end());

    const LineInfo* getipptes = el_line(zeile_);
    const std::string_view alles(getipptes->buffer, getipptes->lastchar);
    const std::size_t platz = masse.breite - 3;
    const std::size_t stelle = zeichenzahl({getipptes->buffer, getipptes->cursor});
    const std::size_t verdeckt = stelle - std::min(stelle, platz);
    const auto sichtbar = ersteZeichen(alles.substr(ersteZeichen(alles, verdeckt).size()), platz);
    std::string bild = "\x1b[?25l\x1b[H";
    for (const auto& zeile : zeilen)
        bild += "\x1b[K" + zeile + "\r\n"; // erased first: behind a full line the last column would go
    bild += "> " + std::string(sichtbar) + "\x1b[J\x1b[" + std::to_string(zeilen.size() + 1) + ";" +
            std::to_string(stelle - verdeckt + 3) + "H\x1b[?25h";
    schreibe(bild);
}

} // namespace mobilsteg
