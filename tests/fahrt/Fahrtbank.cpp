#include "tests/fahrt/Fahrtbank.hpp"

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"
#include "tests/hilfe/Klient.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

namespace mobilsteg {

namespace {

/// A port that nobody uses now; an adb server of the test will.
int freierPort() {
    const Deskriptor horcher = besetze(0);
    sockaddr_in stelle{};
    socklen_t laenge = sizeof stelle;
    ::getsockname(horcher.nummer(), reinterpret_cast<sockaddr*>(&stelle), &laenge);
    return ntohs(stelle.sin_port);
}

std::string hinter(const std::string& text, const std::string& marke) {
    const auto stelle = text.find(marke);
    if (stelle == std::string::npos)
        return "";
    const auto anfang = stelle + marke.size();
    return text.substr(anfang, text.find('\n', anfang) - anfang);
}

} // namespace

std::string programmpfad(const std::string& name) {
    return BIN_ORDNER "/" + name;
}

bool warteBis(const std::function<bool()>& bedingung, double sekunden) {
    const auto frist = std::chrono::steady_clock::now() + std::chrono::duration<double>(sekunden);
    while (!bedingung()) {
        if (std::chrono::steady_clock::now() > frist)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

Deskriptor besetze(int port) {
    Deskriptor horcher(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int ja = 1;
    ::setsockopt(horcher.nummer(), SOL_SOCKET, SO_REUSEADDR, &ja, sizeof ja);
    const auto stelle = loopback(port);
    if (::bind(horcher.nummer(), reinterpret_cast<const sockaddr*>(&stelle), sizeof stelle) != 0 ||
        ::listen(horcher.nummer(), 5) != 0)
        horcher.schliesse();
    return horcher;
}

bool portFrei(int port) {
    return static_cast<bool>(besetze(port));
}

std::string frage(int port, const std::string& bytes) {
    const Klient klient(port);
    klient.sende(bytes);
    return klient.lies();
}

Programm::Programm(const std::vector<std::string>& worte, const std::string& ausgabe) {
    int rohr[2];
    EXPECT_EQ(::pipe2(rohr, O_CLOEXEC), 0);
    std::vector<char*> argumente;
    for (const auto& wort : worte)
        argumente.push_back(const_cast<char*>(wort.c_str()));
    argumente.push_back(nullptr);
    nummer_ = ::fork();
    if (nummer_ == 0) {
        ::setpgid(0, 0); // as a shell's job
        const int ziel = ::open(ausgabe.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
        ::dup2(rohr[0], STDIN_FILENO);
        ::dup2(ziel, STDOUT_FILENO);
        ::dup2(ziel, STDERR_FILENO);
        ::close(ziel); // a program's own descriptors are what is tested
        ::execv(argumente[0], argumente.data());
        ::_exit(127);
    }
    ::close(rohr[0]);
    eingabe_ = rohr[1];
}

Programm::~Programm() {
    ::close(eingabe_);
    if (!status_)
        sende(SIGTERM);
    if (!warteAufEnde(20)) {
        ADD_FAILURE() << "ließ sich nicht beenden";
        sende(SIGKILL);
        warteAufEnde();
    }
}

void Programm::sende(int signal) const {
    ::kill(nummer_, signal);
}

void Programm::sendeGruppe(int signal) const {
    ::kill(-nummer_, signal);
}

void Programm::tippe(const std::string& zeile) const {
    const std::string bytes = zeile + "\n";
    EXPECT_EQ(::write(eingabe_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

std::optional<int> Programm::warteAufEnde(double sekunden) {
    (void)warteBis(
        [&] {
            int lage = 0;
            if (!status_ && ::waitpid(nummer_, &lage, WNOHANG) == nummer_)
                status_ = WIFEXITED(lage) ? WEXITSTATUS(lage) : 128 + WTERMSIG(lage);
            return status_.has_value();
        },
        sekunden);
    return status_;
}

Probehandy::Probehandy(const std::string& ordner, const std::vector<std::string>& optionen) {
    std::vector<std::string> worte = {
        programmpfad("mobilsteg-probehandy"), "--port", "0", "--steuerport", "0", "--ordner", ordner};
    worte.insert(worte.end(), optionen.begin(), optionen.end());
    std::filesystem::create_directories(ordner);
    const std::string ausgabe = ordner + "/ausgabe";
    programm_ = std::make_unique<Programm>(worte, ausgabe);
    EXPECT_TRUE(warteBis([&] {
        const std::string text = liesDatei(ausgabe).value_or("");
        adbPort_ = hinter(text, "probehandy: adb 127.0.0.1:");
        steuerport_ = hinter(text, "probehandy: steuerung 127.0.0.1:");
        return !steuerport_.empty();
    })) << liesDatei(ausgabe).value_or("");
}

std::string Probehandy::sage(const std::string& befehl) const {
    std::vector<std::string> worte = {"--sage", steuerport_};
    for (const auto wort : teile(befehl, ' '))
        worte.emplace_back(wort);
    const auto ergebnis = lauf(programmpfad("mobilsteg-probehandy"), worte, 10);
    EXPECT_EQ(ergebnis.status, 0) << befehl << ": " << ergebnis.ausgabe << ergebnis.fehler;
    return ergebnis.ausgabe;
}

Fahrtbank::Fahrtbank() {
    ::setenv("ANDROID_ADB_SERVER_PORT", std::to_string(freierPort()).c_str(), 1);
    EXPECT_TRUE(portFrei(1080)) << "Port 1080 ist belegt: die Fahrt braucht ihn";
    const auto aufbau = lauf("/bin/sh", {QUELL_ORDNER "/probe/mac/aufbauen", ordner.pfad() + "/mac"}, 10);
    EXPECT_EQ(aufbau.status, 0) << aufbau.fehler;
    adbPfad_ = ordner.pfad() + "/mac/opt/homebrew/bin/adb";
    for (const char* kennung : {"bordlotse", "vpnlotse"})
        ordner.lege(std::string("/heim/Library/Preferences/de.mobilsteg.") + kennung + ".json",
                    R"({"profil":"reise","b2b.erklaert":true,"austritt.dienst":"http://austritt.probe/"})");
}

Fahrtbank::~Fahrtbank() {
    programm.reset();
    (void)lauf(adbPfad_, {"kill-server"}, 10);
}

std::unique_ptr<Probehandy> Fahrtbank::handy(std::vector<std::string> optionen) {
    optionen.insert(optionen.end(), {"--adb-server", std::getenv("ANDROID_ADB_SERVER_PORT")});
    (void)lauf(adbPfad_, {"start-server"}, 20);
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
    std::vector<std::string> worte = {(bin / name).string(), "--heim", ordner.pfad() + "/heim", "--wurzel",
                                      ordner.pfad() + "/mac"};
    worte.insert(worte.end(), optionen.begin(), optionen.end());
    return worte;
}

void Fahrtbank::starte(const std::string& name, const std::string& umstand) {
    auto worte = aufruf(name, {"--terminal"});
    if (!umstand.empty())
        worte.insert(worte.begin(), {"/bin/sh", "-c", umstand + R"(; exec "$0" "$@")"});
    programm = std::make_unique<Programm>(worte, ordner.pfad() + "/ausgabe");
}

void Fahrtbank::starteFenster() {
    programm = std::make_unique<Programm>(aufruf("mobilsteg-bordlotse", {}), ordner.pfad() + "/ausgabe");
}

Ergebnis Fahrtbank::rufe(const std::vector<std::string>& optionen) const {
    auto worte = aufruf("mobilsteg-bordlotse", optionen);
    const std::string pfad = worte.front();
    worte.erase(worte.begin());
    return lauf(pfad, worte, 60);
}

void Fahrtbank::alsVpnBenutzer() const {
    ordner.lege("/heim/Library/Preferences/de.mobilsteg.vpnlotse.json",
                R"({"b2b.erklaert":true,"volltunnel.erklaert":true,"volltunnel":true,"nurVPN":false,
                    "austritt.dienst":"http://austritt.probe/"})");
}

bool Fahrtbank::zeigt(const std::string& stueck) const {
    return warteBis([&] { return ausgabe().find(stueck) != std::string::npos; });
}

bool Fahrtbank::imStand(const std::string& stueck) const {
    return warteBis([&] { return stand().find(stueck) != std::string::npos; });
}

void Fahrtbank::erwartePhase(const std::string& anfang, double sekunden) const {
    EXPECT_TRUE(warteBis([&] { return hinter(stand(), "\"phase\": \"").starts_with(anfang); }, sekunden))
        << "erwartet: " << anfang << "\n"
        << stand() << protokoll() << ausgabe();
}

std::string Fahrtbank::stand() const {
    return ordner.lies("/heim/Library/Application Support/Mobilsteg Bordlotse/stand.json");
}

std::string Fahrtbank::protokoll() const {
    return ordner.lies("/heim/Library/Logs/MobilstegBordlotse.log");
}

int Fahrtbank::zeilenMit(const std::string& stueck) const {
    int anzahl = 0;
    const std::string text = protokoll();
    for (const auto zeile : teile(text, '\n'))
        anzahl += zeile.find(stueck) != std::string::npos ? 1 : 0;
    return anzahl;
}

std::string Fahrtbank::adb(const std::vector<std::string>& worte) const {
    return std::string(beschnitten(lauf(adbPfad_, worte, 20).ausgabe));
}

bool Fahrtbank::proxyAn(const std::string& dienst) const {
    return lauf(ordner.pfad() + "/mac/usr/sbin/networksetup", {"-getsocksfirewallproxy", dienst}, 10)
               .ausgabe.find("Enabled: Yes") != std::string::npos;
}

std::string Fahrtbank::ausgabe() const {
    return ordner.lies("/ausgabe");
}

} // namespace mobilsteg
