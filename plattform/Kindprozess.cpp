#include "plattform/Kindprozess.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef __APPLE__
#include <sys/event.h>
#else
extern "C" { // glibc 2.36 forgot it in its header
#include <sys/pidfd.h>
}
#endif

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>

extern char** environ; // NOLINT(readability-redundant-declaration): macOS declares it nowhere

namespace mobilsteg {

namespace {

struct Rohr {
    Deskriptor lesen;
    Deskriptor schreiben;
};

std::optional<Rohr> neuesRohr() {
    int enden[2];
    if (::pipe(enden) != 0)
        return std::nullopt;
    ::fcntl(enden[0], F_SETFD, FD_CLOEXEC);
    ::fcntl(enden[1], F_SETFD, FD_CLOEXEC);
    ::fcntl(enden[0], F_SETFL, O_NONBLOCK);
    return Rohr{Deskriptor(enden[0]), Deskriptor(enden[1])};
}

Deskriptor endeMelder(pid_t nummer) {
#ifdef __APPLE__
    Deskriptor melder(::kqueue());
    struct kevent wunsch {};
    EV_SET(&wunsch, static_cast<uintptr_t>(nummer), EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
    // It fails for a process that has ended already; then the caller asks `istBeendet`.
    if (!melder || ::kevent(melder.nummer(), &wunsch, 1, nullptr, 0, nullptr) != 0)
        return {};
    return melder;
#else
    return Deskriptor(::pidfd_open(nummer, 0)); // close-on-exec by itself
#endif
}

/// What the child does between its birth and the tool's first instruction.
class Startplan {
public:
    Startplan(int eingabe, int ausgabe, int fehler, bool eigeneSitzung) {
        ::posix_spawn_file_actions_init(&griffe_);
        ::posix_spawnattr_init(&eigenschaften_);
        if (eingabe >= 0)
            ::posix_spawn_file_actions_adddup2(&griffe_, eingabe, STDIN_FILENO);
        if (ausgabe >= 0)
            ::posix_spawn_file_actions_adddup2(&griffe_, ausgabe, STDOUT_FILENO);
        else
            ::posix_spawn_file_actions_addopen(&griffe_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_adddup2(&griffe_, fehler, STDERR_FILENO);
        // A process group of its own: a second Ctrl-C or a closed terminal must not end the tools of the
        // clean-up.
        short merkmale = POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
        merkmale |= eigeneSitzung ? POSIX_SPAWN_SETSID : POSIX_SPAWN_SETPGROUP;
        // Also closes what a library opened without close-on-exec: an adb server that the tool leaves behind
        // would hold our ports and pipes for days.
#ifdef __APPLE__
        merkmale |= POSIX_SPAWN_CLOEXEC_DEFAULT;
        if (eingabe < 0)
            ::posix_spawn_file_actions_addinherit_np(&griffe_, STDIN_FILENO);
#else
        ::posix_spawn_file_actions_addclosefrom_np(&griffe_, STDERR_FILENO + 1);
#endif
        sigset_t standard;
        sigemptyset(&standard);
        for (const int signal : {SIGPIPE, SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGCHLD})
            sigaddset(&standard, signal);
        sigset_t maske;
        sigemptyset(&maske);
        ::posix_spawnattr_setsigdefault(&eigenschaften_, &standard);
        ::posix_spawnattr_setsigmask(&eigenschaften_, &maske);
        ::posix_spawnattr_setpgroup(&eigenschaften_, 0);
        ::posix_spawnattr_setflags(&eigenschaften_, merkmale);
    }
    ~Startplan() {
        ::posix_spawn_file_actions_destroy(&griffe_);
        ::posix_spawnattr_destroy(&eigenschaften_);
    }
    Startplan(const Startplan&) = delete;
    Startplan& operator=(const Startplan&) = delete;

    [[nodiscard]] const posix_spawn_file_actions_t* griffe() const {
        return &griffe_;
    }
    [[nodiscard]] const posix_spawnattr_t* eigenschaften() const {
        return &eigenschaften_;
    }

private:
    posix_spawn_file_actions_t griffe_{};
    posix_spawnattr_t eigenschaften_{};
};

Startversuch misslungen(const std::string& programm, int nummer) {
    return {std::nullopt, programm + ": " + fehlerbeschreibung(nummer)};
}

// What a tool writes beyond that is read away: nobody reads it, and it must not be what fills the memory.
constexpr std::size_t meisteAusgabe = 16U << 20U;

/// They reach every process of a group at once.
constexpr std::array gruppensignale = {SIGTERM, SIGINT, SIGHUP, SIGQUIT};

int alsStatus(int lage) {
    return WIFSIGNALED(lage) ? WTERMSIG(lage) : WEXITSTATUS(lage);
}

} // namespace

Startversuch starteProzess(const std::string& programm, const std::vector<std::string>& argumente,
                           const Startwunsch& wunsch) {
    auto ausgabe = neuesRohr();
    auto fehler = ausgabe ? neuesRohr() : std::nullopt;
    if (!fehler)
        return misslungen(programm, errno);

    std::vector<char*> worte;
    worte.push_back(const_cast<char*>(programm.c_str())); // posix_spawn takes them as char*, but changes none
    for (const auto& argument : argumente)
        worte.push_back(const_cast<char*>(argument.c_str()));
    worte.push_back(nullptr);

    const Startplan plan(wunsch.eingabe, wunsch.ohneAusgabe ? -1 : ausgabe->schreiben.nummer(),
                         fehler->schreiben.nummer(), wunsch.eigeneSitzung);
    pid_t nummer = -1;
    const int ergebnis =
        ::posix_spawn(&nummer, programm.c_str(), plan.griffe(), plan.eigenschaften(), worte.data(), environ);
    if (ergebnis != 0)
        return misslungen(programm, ergebnis);

    Kindprozess kind{nummer, {}, std::move(fehler->lesen), endeMelder(nummer)};
    if (!wunsch.ohneAusgabe)
        kind.ausgabe = std::move(ausgabe->lesen);
    return {std::move(kind), ""};
}

bool Kindprozess::istBeendet() const {
    siginfo_t lage{};
    return ::waitid(P_PID, static_cast<id_t>(nummer), &lage, WEXITED | WNOHANG | WNOWAIT) != 0 ||
           lage.si_pid != 0;
}

bool Kindprozess::starbAnGruppensignal() const {
    siginfo_t lage{}; // stays like this unless it has ended
    ::waitid(P_PID, static_cast<id_t>(nummer), &lage, WEXITED | WNOHANG | WNOWAIT);
    return lage.si_code == CLD_KILLED &&
           std::count(gruppensignale.begin(), gruppensignale.end(), lage.si_status) > 0;
}

void Kindprozess::bitteUmEnde() const {
    ::kill(nummer, SIGTERM);
    ::kill(nummer, SIGCONT); // a stopped process (it read our terminal) would not get the first one
}

int Kindprozess::warteUndErnte() {
    int lage = 0;
    while (::waitpid(nummer, &lage, 0) < 0)
        if (errno != EINTR)
            return -1;
    return alsStatus(lage);
}

std::optional<int> Kindprozess::ernte() {
    int lage = 0;
    const pid_t fertig = ::waitpid(nummer, &lage, WNOHANG);
    if (fertig == 0) {
        try {
            std::thread([zurueckgelassen = nummer] { ::waitpid(zurueckgelassen, nullptr, 0); }).detach();
        } catch (const std::system_error&) {
            // No thread can be had: it stays a zombie until this program ends.
        }
        return std::nullopt;
    }
    if (fertig < 0)
        return -1; // reaped elsewhere: its status is lost
    return alsStatus(lage);
}

bool liesBlock(const Deskriptor& rohr, std::string& bytes) {
    std::array<char, 65536> block; // NOLINT(cppcoreguidelines-pro-type-member-init): read() fills it
    const ssize_t n = ::read(rohr.nummer(), block.data(), block.size());
    if (n > 0)
        bytes.append(block.data(), std::min(static_cast<std::size_t>(n), meisteAusgabe - bytes.size()));
    return n > 0 || (n < 0 && (errno == EAGAIN || errno == EINTR));
}

std::optional<Abspaltung> spalteAb(const std::function<void(int kanal)>& was) {
    int enden[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, enden) != 0)
        return std::nullopt;
    ::fcntl(enden[0], F_SETFD, FD_CLOEXEC);
    ::fcntl(enden[1], F_SETFD, FD_CLOEXEC);
    Abspaltung neu{-1, Deskriptor(enden[0])};
    const Deskriptor seiner(enden[1]);
    neu.nummer = ::fork();
    if (neu.nummer < 0)
        return std::nullopt;
    if (neu.nummer > 0)
        return neu;
    neu.kanal.schliesse();
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        ::signal(signal, SIG_IGN);
    was(seiner.nummer());
    ::_exit(1);
}

void erlaubeDeskriptoren(std::size_t viele) {
    rlimit grenze{};
    ::getrlimit(RLIMIT_NOFILE, &grenze);
    for (const rlim_t soviel : {static_cast<rlim_t>(viele), grenze.rlim_max})
        if (const rlimit mehr{soviel, soviel}; ::setrlimit(RLIMIT_NOFILE, &mehr) == 0)
            break;
}

} // namespace mobilsteg
