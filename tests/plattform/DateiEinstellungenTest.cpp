// Settings in a file that other programs, crashes and people's editors have their hands on, too.

#include "plattform/Adapter.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/plattform/Deskriptoren.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

using namespace mobilsteg;
using namespace std::string_literals;
using nlohmann::json;

namespace {

class DateiEinstellungenTest : public testing::Test {
protected:
    [[nodiscard]] json inDerDatei() const { return json::parse(ordner.lies(datei), nullptr, false); }

    Ordner ordner;
    std::string datei = "/Library/Preferences/de.mobilsteg.bordlotse.json";
    std::unique_ptr<Einstellungen> speicher = dateiEinstellungen(ordner.pfad() + datei);
    Einstellungen& e = *speicher;
};

TEST_F(DateiEinstellungenTest, falscherTypIstWieNichts) {
    const json inhalt = {
        {"text", "ja"},    {"flagge", true},        {"tabelle", {{"mac.log", 7}, {"leer", -1}}}, {"zahl", 1},
        {"null", nullptr}, {"bruch", {{"a", 1.5}}}, {"riesig", {{"a", 9223372036854775808U}}}};
    ordner.lege(datei, inhalt.dump());
    for (const auto& [schluessel, wert] : inhalt.items()) {
        EXPECT_EQ(e.text(schluessel).has_value(), schluessel == "text") << schluessel;
        EXPECT_EQ(e.flagge(schluessel).has_value(), schluessel == "flagge") << schluessel;
        EXPECT_EQ(e.tabelle(schluessel).has_value(), schluessel == "tabelle") << schluessel;
    }
    EXPECT_EQ(e.textOderNeu("zahl", "neu"), "neu") << "no text stands there";
}

TEST_F(DateiEinstellungenTest, legtUnverstaendlichesBeiseiteUndUeberschreibtEsNie) {
    const std::string tief = "{\"a\":" + std::string(200'000, '[') + std::string(200'000, ']') + "}";
    int nummer = 0;
    for (const std::string& inhalt :
         {""s, "kein json"s, "[1]"s, R"({"a":1)"s, R"({"a":1} x)"s, "\xFF"s, tief}) {
        ordner.lege(datei, inhalt);
        EXPECT_FALSE(e.text("a"));
        EXPECT_EQ(ordner.lies(datei), inhalt) << "looking changes nothing";
        e.setzeFlagge("experte", true);
        EXPECT_EQ(inDerDatei(), (json{{"experte", true}}));
        const std::string zweiter = ++nummer == 1 ? ".defekt" : ".defekt-" + std::to_string(nummer);
        EXPECT_EQ(ordner.lies(datei + zweiter), inhalt);
    }
}

TEST_F(DateiEinstellungenTest, programmeZugleichVerlierenNichts) {
    e.setzeText("bleibt", "da");
    std::vector<pid_t> kinder;
    for (int p = 0; p < 4; ++p) {
        const pid_t kind = ::fork();
        if (kind == 0) {
            const auto eigene = dateiEinstellungen(ordner.pfad() + datei);
            const std::string meine = std::to_string(p);
            ordner.lege("/antwort" + meine, eigene->textOderNeu("kabel.id", meine));
            for (std::size_t s = 0; s < 12; ++s)
                eigene->setzeText(meine + "." + std::to_string(s), std::string(s * 40, 'x'));
            ::_exit(0);
        }
        kinder.push_back(kind);
    }
    // Meanwhile a reader never sees half a file.
    int status = 0;
    for (const pid_t kind : kinder)
        while (::waitpid(kind, &status, WNOHANG) == 0)
            ASSERT_EQ(inDerDatei().value("bleibt", ""), "da");
    EXPECT_EQ(inDerDatei().size(), 4 * 12 + 2U);
    for (int p = 0; p < 4; ++p)
        EXPECT_EQ(ordner.lies("/antwort" + std::to_string(p)), e.text("kabel.id")) << p;
}

TEST_F(DateiEinstellungenTest, merktSichWasKeineDatentraegerNimmt) {
    ordner.lege("/Library", "a file where the folder should be");
    e.setzeText("proxy.dienst", "Wi-Fi");
    EXPECT_EQ(e.textOderNeu("kabel.id", "eins"), "eins");
    EXPECT_EQ(e.textOderNeu("kabel.id", "zwei"), "eins") << "for this run one stands";
    EXPECT_EQ(e.text("proxy.dienst"), "Wi-Fi");

    std::filesystem::remove(ordner.pfad() + "/Library");
    ordner.lege(datei, R"({"alt": true, "browser": true, "kabel.id": "anderes"})");
    EXPECT_EQ(e.textOderNeu("kabel.id", "drei"), "eins");
    rlimit vorher{};
    ::getrlimit(RLIMIT_FSIZE, &vorher);
    const rlimit voll{0, vorher.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &voll); // as if the disk were full
    e.setzeFlagge("experte", true);
    e.entferne("browser");
    ::setrlimit(RLIMIT_FSIZE, &vorher);
    EXPECT_EQ(e.flagge("experte"), true);
    EXPECT_FALSE(e.flagge("browser"));
    e.entferne("experte");
    EXPECT_EQ(inDerDatei(), (json{{"alt", true}, {"kabel.id", "eins"}, {"proxy.dienst", "Wi-Fi"}}));
}

// Too many open files is a moment's trouble: a good settings file must not be taken for a bad one then.
TEST_F(DateiEinstellungenTest, haeltDescriptormangelNichtFuerEineSchlechteDatei) {
    for (int frei = 0; frei < 4; ++frei) {
        const std::string wert = std::to_string(frei);
        ordner.lege(datei, R"({"kabel.id": "meine", "proxy.dienst": ")" + wert + "\"}");
        const auto neue = dateiEinstellungen(ordner.pfad() + datei);
        {
            const Engpass engpass(frei);
            (void)neue->text("proxy.dienst");
            neue->setzeFlagge("experte", true);
            EXPECT_EQ(neue->flagge("experte"), true);
        }
        EXPECT_EQ(neue->text("proxy.dienst"), wert) << frei << " frei";
        neue->setzeFlagge("neu", true);
        EXPECT_EQ(inDerDatei().size(), 4U) << frei << " frei";
        EXPECT_FALSE(existiert(ordner.pfad() + datei + ".defekt"));
    }
}

} // namespace
