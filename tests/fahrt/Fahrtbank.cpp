#include "tests/fahrt/Fahrtbank.hpp"

#include "plattform/Text.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <regex>
#include <thread>

namespace mobilsteg {

bool warteBis(const std::function<bool()>& bedingung, double sekunden) {
    const auto frist = std::chrono::steady_clock::now() + std::chrono::duration<double>(sekunden);
    while (!bedingung()) {
        if (std::chrono::steady_clock::now() > frist)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

Programm::Programm(std::vector<std::string> worte, const std::string& ausgabe, const std::string& umstand) {
    int rohr[2];
    EXPECT_EQ(::pipe2(rohr, O_CLOEXEC), 0);
    const Deskriptor lesen(rohr[0]);
    eingabe_ = Deskriptor(rohr[1]);
    worte.insert(worte.begin(), {"-c", umstand + R"(; exec "$@" >>"$0" 2>&1)", ausgabe});
    auto versuch = starteProzess("/bin/sh", worte, {lesen.nummer(), true});
    EXPECT_TRUE(versuch.kind) << versuch.grund;
    kind_ = std::move(versuch.kind).value();
}

Programm::~Programm() {
    eingabe_.schliesse();
    if (!status_)
        sende(SIGTERM);
    if (!warteAufEnde()) {
        ADD_FAILURE() << "ließ sich nicht beenden";
        toete();
    }
}

void Programm::tippe(const std::string& zeile) const {
    const std::string bytes = zeile + "\n";
    EXPECT_EQ(::write(eingabe_.nummer(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

std::optional<int> Programm::warteAufEnde() {
    if (!status_ && warteBis([&] { return kind_.istBeendet(); }))
        status_ = kind_.warteUndErnte();
    return status_;
}

void Programm::toete() {
    sende(SIGKILL);
    warteAufEnde();
}

Probehandy::Probehandy(const std::string& ordner, std::vector<std::string> optionen) {
    optionen.insert(optionen.begin(), {programmpfad("mobilsteg-probehandy"), "--ordner", ordner});
    std::filesystem::create_directories(ordner);
    const std::string ausgabe = ordner + "/ausgabe";
    programm_ = std::make_unique<Programm>(optionen, ausgabe);
    const std::regex ports("adb 127.0.0.1:(\\d+)\n.*steuerung 127.0.0.1:(\\d+)\n");
    std::string text;
    std::smatch gefunden;
    EXPECT_TRUE(warteBis([&] {
        text = liesDatei(ausgabe).value_or("");
        return std::regex_search(text, gefunden, ports);
    })) << text;
    adbPort_ = gefunden[1];
    steuerport_ = gefunden[2];
}

std::string Probehandy::sage(const std::string& befehl) const {
    const auto ergebnis = lauf(programmpfad("mobilsteg-probehandy"), {"--sage", steuerport_, befehl}, 60);
    EXPECT_EQ(ergebnis.status, 0) << befehl << ": " << ergebnis.ausgabe << ergebnis.fehler;
    return ergebnis.ausgabe;
}

Fahrtbank::Fahrtbank() {
    ::setenv("ANDROID_ADB_SERVER_PORT", "5643", 1);
    EXPECT_TRUE(portFrei(1080)) << "Port 1080 ist belegt: die Fahrt braucht ihn";
    const auto aufbau = lauf("/bin/sh", {QUELL_ORDNER "/probe/mac/aufbauen", ordner.pfad() + "/mac"}, 60);
    EXPECT_EQ(aufbau.status, 0) << aufbau.fehler;
    for (const auto& datei : {einstellungen, vpnEinstellungen})
        ordner.lege(datei,
                    R"({"profil":"reise","b2b.erklaert":true,"austritt.dienst":"http://austritt.probe/"})");
}

Fahrtbank::~Fahrtbank() {
    programm.reset();
    (void)adb({"kill-server"});
}

std::unique_ptr<Probehandy> Fahrtbank::handy(std::vector<std::string> optionen) {
    optionen.insert(optionen.end(), {"--adb-server", std::getenv("ANDROID_ADB_SERVER_PORT")});
    (void)adb({"start-server"});
    return std::make_unique<Probehandy>(ordner.pfad() + "/handy" + std::to_string(++handys_), optionen);
}

std::vector<std::string> Fahrtbank::aufruf(const std::string& name,
                                           const std::vector<std::string>& optionen) const {
    // A package of its own, so that what lies in the build folder's resources makes no difference.
    namespace fs = std::filesystem;
    const fs::path bin = ordner.pfad() + "/bin";
    fs::create_directories(bin);
    fs::create_directories(ordner.pfad() + "/Resources");
    for (const auto& datei : {name, name + "-fenster"})
        if (fs::exists(programmpfad(datei)))
            fs::copy_file(programmpfad(datei), bin / datei, fs::copy_options::skip_existing);
    fs::copy_file(QUELL_ORDNER "/probe/tunnel/mobilsteg-volltunnel",
                  ordner.pfad() + "/Resources/mobilsteg-volltunnel", fs::copy_options::skip_existing);
    std::vector<std::string> worte = {bin / name, "--heim", ordner.pfad() + "/heim", "--wurzel",
                                      ordner.pfad() + "/mac"};
    worte.insert(worte.end(), optionen.begin(), optionen.end());
    return worte;
}

void Fahrtbank::starte(const std::string& name, const std::string& umstand,
                       const std::vector<std::string>& optionen) {
    programm = std::make_unique<Programm>(aufruf(name, optionen), ordner.pfad() + "/ausgabe",
                                          "cd '" + ordner.pfad() + "/heim' && " + umstand);
}

Ergebnis Fahrtbank::rufe(const std::string& option) const {
    const auto worte = aufruf("mobilsteg-bordlotse", {option});
    return lauf(worte.front(), {worte.begin() + 1, worte.end()}, 60);
}

void Fahrtbank::erwartePhase(const std::string& anfang) const {
    EXPECT_TRUE(imStand("\"phase\": \"" + anfang)) << "erwartet: " << anfang << "\n"
                                                   << stand() << protokoll() << ausgabe();
}

void Fahrtbank::erwarteNichts() const {
    EXPECT_FALSE(proxyAn());
    EXPECT_EQ(forwards(), "");
    EXPECT_TRUE(portFrei(1081)) << "an adb server that the program started must not have inherited it";
    EXPECT_TRUE(warteBis([&] { return !helferLaeuft(); }));
}

bool Fahrtbank::kommt(const std::string& datei, const std::string& stueck) const {
    return warteBis([&] { return ordner.lies(datei).find(stueck) != std::string::npos; });
}

int Fahrtbank::zeilenMit(const std::string& stueck) const {
    const std::string text = protokoll();
    int anzahl = 0;
    for (auto stelle = text.find(stueck); stelle != std::string::npos; stelle = text.find(stueck, stelle + 1))
        ++anzahl;
    return anzahl;
}

std::string Fahrtbank::adb(const std::vector<std::string>& worte) const {
    return std::string(beschnitten(lauf(ordner.pfad() + "/mac/opt/homebrew/bin/adb", worte, 60).ausgabe));
}

} // namespace mobilsteg
