// The screen on a terminal of its own.

#include "ansicht/terminal/Schirm.hpp"

#include "ansicht/terminal/Terminaltafel.hpp"
#include "plattform/Text.hpp"
#include "tests/ansicht/Muster.hpp"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <future>

using namespace mobilsteg;
using namespace testing;

#ifdef MIT_SANITIZER
// libedit does not free the names of the functions that it is given.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:wcsdup";
}
#endif

namespace {

/// With ^ for what begins a terminal's command, and lines as they are.
std::string lesbar(std::string text) {
    std::erase(text, '\r');
    for (auto i = text.find("\x1b["); i != std::string::npos; i = text.find("\x1b[", i))
        text.replace(i, 2, "^");
    return text;
}

TEST(Schirm, bildPasstInBreiteUndHoehe) {
    EXPECT_EQ("\n" + lesbar(alsText(muster(), {true, 40})), R"(
^33m◐ ^0mTitel
^31mSatz & <b>^0m
^2m────────────────────────────────────────^0m
^2mOrt  ^0mHeidelberg_Altstadt am Neckar, in
     dem Tal
^33m○ ^0mFirma in Bonn · noch nicht gesichert
^32m● ^0mZu
[x] Ein langer Schalter
[Weg & da]
Wahl:
( ) Eins
(•) Zwei
[In A]   [In BBBB]   [In C]   [D]   [×]
^2m────────────────────────────────────────^0m
^2m> volltunnel aus  ^0m^2mEin langer Schalter^0m
^2m> proxy           ^0m^2mWeg & da^0m
^2m> profil reise    ^0m^2mWahl: Eins^0m
^2m> browser A       ^0m^2mIn A^0m
^2m> browser B       ^0m^2mIn BBBB^0m
^2m> browser C       ^0m^2mIn C^0m
^2m> browser D       ^0m^2mD^0m
^2m> hinweis weg     ^0m^2mWeg damit^0m
)");
    const Schalter lang{Bedienung::volltunnel, "Volltunnel: alles vom Mac durchs Handy", false};
    EXPECT_THAT(alsText({{"an", lang}}, {false, 40}),
                EndsWith("\n> volltunnel an  Volltunnel: alles vom\n                 Mac durchs Handy\n"));
    const Frage frage{"Darf das sein, oder nicht?", "Darum.\n\nUnd darum.", {"Ja, gern", "Nein"}};
    EXPECT_EQ("\n" + alsText(frage, {false, 20}) + alsText(frage, {}), R"(
Darf das sein, oder
nicht?
────────────────────
Darum.

Und darum.
1) Ja, gern
2) Nein
Darf das sein, oder nicht?
Darum.

Und darum.
1) Ja, gern
2) Nein
)");

    const std::string text = "Kopf\nPhase\n──\na\nb\nc\nd\n";
    const auto bild = [&](std::size_t hoehe, std::size_t ab) {
        const auto zeilen = ausschnitt(text, hoehe, ab);
        return verbunden(zeilen, "|") + " ab " + std::to_string(ab);
    };
    EXPECT_EQ(bild(7, 0), "Kopf|Phase|──|a|b|c|d ab 0");
    EXPECT_EQ(bild(5, 1), "Kopf|Phase|a|b|… Bild ↑: 1, Bild ↓: 2 weitere Zeilen ab 1");
    EXPECT_EQ(bild(5, 9), "Kopf|Phase|c|d|… Bild ↑: 3, Bild ↓: 0 weitere Zeilen ab 3");
    EXPECT_EQ(bild(4, 0), "Kopf|Phase|──|… Bild ↑: 0, Bild ↓: 4 weitere Zeilen ab 0");
    EXPECT_EQ(bild(2, 0), "Kopf|Phase ab 0");
}

struct Terminal {
    Terminal() {
        hier = ::posix_openpt(O_RDWR | O_NOCTTY);
        EXPECT_TRUE(::grantpt(hier) == 0 && ::unlockpt(hier) == 0);
        dort = ::open(::ptsname(hier), O_RDWR | O_NOCTTY);
        setzeMasse(60);
        datei.reset(::fdopen(dort, "r+"));
    }
    void setzeMasse(int breite, int hoehe = 12) const {
        const winsize masse{static_cast<unsigned short>(hoehe), static_cast<unsigned short>(breite), 0, 0};
        EXPECT_EQ(::ioctl(dort, TIOCSWINSZ, &masse), 0);
    }
    ~Terminal() { ::close(hier); }
    void tippe(std::string_view text) const { (void)!::write(hier, text.data(), text.size()); }
    /// What is written until that has come; then the next such call goes on behind it.
    std::string bis(const std::string& stueck) {
        while (gelesen.find(stueck) == std::string::npos) {
            char block[4096];
            const ssize_t n = ::read(hier, block, sizeof block);
            if (n <= 0)
                return "nur " + gelesen;
            gelesen.append(block, static_cast<std::size_t>(n));
        }
        const auto ende = gelesen.find(stueck) + stueck.size();
        const std::string text = gelesen.substr(0, ende);
        gelesen.erase(0, ende);
        return text;
    }
    [[nodiscard]] tcflag_t art() const {
        termios t{};
        ::tcgetattr(dort, &t);
        return t.c_lflag;
    }

    int hier = -1, dort = -1;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> datei{nullptr, std::fclose};
    std::string gelesen;
};

TEST(Schirm, getipptesUeberstehtDasNeueBildUndAmEndeIstAllesZurueckgestellt) {
    ::setenv("TERM", "dumb", 1);
    Terminal t;
    EXPECT_EQ(Schirm::oeffne(t.datei.get(), t.datei.get()), nullptr);
    ::setenv("TERM", "xterm", 1);
    ::setenv("MOBILSTEG_HINWEIS", "So geht das Handy: stecken, erlauben, ziehen", 1);
    for (const auto& [breite, hoehe, soll] :
         {std::array{0, 24, 80}, {60, 0, 80}, {39, 12, 40}, {201, 9, 200}}) {
        t.setzeMasse(breite, hoehe);
        EXPECT_EQ(terminalmasse(t.datei.get()).breite, static_cast<std::size_t>(soll));
    }
    t.setzeMasse(60);
    const auto vorher = t.art();
    const auto schirm = Schirm::oeffne(t.datei.get(), t.datei.get());
    ASSERT_NE(schirm, nullptr);
    schirm->zeige([](Schriftbild b) { return "Bild " + std::to_string(b.breite) + "\n"; },
                  {"experte an", "experte aus", "Tür"});
    std::string anfang;
    const auto naechste = [&] {
        auto kommende = std::async(std::launch::async, [&] { return schirm->zeile(); });
        schirm->sage("bereit"); // drawn once keys come to the line as they are
        anfang = t.bis("bereit");
        return kommende;
    };
    auto zeile = naechste();
    EXPECT_THAT(anfang, HasSubstr("\x1b[?1049h")) << "the ordinary screen is kept";
    t.tippe("EX");
    t.bis("> EX");
    t.setzeMasse(30); // drawn as 40 wide
    ::raise(SIGWINCH);
    EXPECT_THAT(t.bis("> EX"),
                AllOf(HasSubstr("Bild 40\r"), HasSubstr("\x1b[2mSo geht das Handy: stecken, erlauben,")));
    schirm->zeige([](Schriftbild) { return "zwei\n"; }, {"experte an", "experte aus", "Tür"});
    EXPECT_THAT(t.bis("> EX"), HasSubstr("zwei"));
    schirm->zeige([](Schriftbild) { return "Kopf\n──\n1\n2\n3\n4\n5\n6\n7\n8\n9\nX\n"; },
                  {"experte an", "experte aus", "Tür"});
    t.bis("weitere");
    for (const auto& [taste, bild] :
         {std::pair{"\x1b[6~", "^KKopf\n^K5\n^K6\n^K7\n^K8\n^K9\n^KX\n^K… Bild ↑: 5, Bild ↓: 0 weitere"},
          {"\x1b[5~", "^KKopf\n^K──\n^K1\n^K2\n^K3\n^K4\n^K5\n^K… Bild ↑: 0, Bild ↓: 5 weitere"}}) {
        t.tippe(taste);
        t.bis("\x1b[H");
        EXPECT_EQ(lesbar(t.bis("weitere")), bild);
    }
    t.tippe("\t");
    t.bis("> experte a\x1b");
    t.tippe("\t");
    t.bis("experte an · experte aus");
    t.tippe("n\n");
    EXPECT_EQ(zeile.get(), "experte an");

    zeile = naechste();
    t.tippe("\x1b[A\x1b[D\x7fü\xff\n"); // the line before, with another character for its last but one
    EXPECT_EQ(zeile.get(), "experte ün");
    zeile = naechste();
    t.tippe(std::string(40, '.') + "!");
    EXPECT_THAT(t.bis("!\x1b[J\x1b["), EndsWith("\n> " + std::string(36, '.') + "!\x1b[J\x1b["))
        << "its end is seen";
    EXPECT_EQ(t.bis("H"), "12;40H");
    t.tippe("\x15"); // nothing of it
    t.tippe("t\t\n");
    EXPECT_EQ(zeile.get(), "Tür");
    zeile = naechste();
    t.tippe("ü\x04\x7f\x04"); // Ctrl-D ends nothing where something stands
    EXPECT_EQ(zeile.get(), std::nullopt);
    schirm->ende("Beendet.");
    t.bis("\x1b[?1049l");
    EXPECT_EQ(t.bis("Beendet.\r\n"), "Beendet.\r\n");
    EXPECT_EQ(t.art(), vorher);
}

} // namespace
