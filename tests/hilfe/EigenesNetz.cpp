// The program's ports are fixed. On a loopback of its own a trip meets neither another trip nor a program
// that the developer has running, and several can run at once. Linked into a test program, and asked for by
// the environment, this acts before its first test.

#ifdef __linux__

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace {

bool schreibe(const char* datei, const std::string& text) {
    return static_cast<bool>(std::ofstream(datei) << text << std::flush);
}

bool betrete() {
    if (::unshare(CLONE_NEWNET) == 0)
        return true;
    // Who is not root may do so in a user namespace of his own, in which he stays who he is.
    const auto nutzer = std::to_string(::getuid());
    const auto gruppe = std::to_string(::getgid());
    return ::unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0 && schreibe("/proc/self/setgroups", "deny") &&
           schreibe("/proc/self/uid_map", nutzer + " " + nutzer + " 1") &&
           schreibe("/proc/self/gid_map", gruppe + " " + gruppe + " 1");
}

bool schalteLoopbackEin() {
    const int nummer = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq anfrage{};
    std::strcpy(anfrage.ifr_name, "lo");
    anfrage.ifr_flags = IFF_UP;
    const bool gut = ::ioctl(nummer, SIOCSIFFLAGS, &anfrage) == 0;
    ::close(nummer);
    return gut;
}

[[maybe_unused]] const bool eigenesNetz = [] {
    if (std::getenv("MOBILSTEG_EIGENES_NETZ") == nullptr)
        return false;
    if (!betrete() || !schalteLoopbackEin()) {
        std::perror("A network namespace of the test's own");
        std::exit(1);
    }
    return true;
}();

} // namespace

#endif
