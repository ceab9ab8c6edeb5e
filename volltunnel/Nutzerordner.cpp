#include "volltunnel/Nutzerordner.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace mobilsteg::volltunnel {

namespace {

/// Root acts as the user for the life of this object.
class Verkleidung {
public:
    Verkleidung(uid_t benutzer, gid_t gruppe) : noetig_(::geteuid() == 0 && benutzer != 0) {
        if (noetig_)
            gut_ = ::setegid(gruppe) == 0 && ::seteuid(benutzer) == 0;
    }
    ~Verkleidung() {
        if (noetig_ && (::seteuid(0) != 0 || ::setegid(0) != 0))
            ::_exit(1); // never seen; nothing can be undone without the rights
    }
    Verkleidung(const Verkleidung&) = delete;
    Verkleidung& operator=(const Verkleidung&) = delete;

    [[nodiscard]] bool gut() const { return gut_; }

private:
    bool noetig_;
    bool gut_ = true;
};

} // namespace

Nutzerordner::Nutzerordner(const std::string& stopp) {
    const auto trenner = stopp.rfind('/');
    if (trenner == std::string::npos || trenner == 0)
        return;
    name_ = stopp.substr(trenner + 1);
    Deskriptor ordner(
        ::open(stopp.substr(0, trenner).c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat lage {};
    if (name_.empty() || !ordner || ::fstat(ordner.nummer(), &lage) != 0)
        return;
    benutzer_ = lage.st_uid;
    gruppe_ = lage.st_gid;
    ordner_ = std::move(ordner);
}

bool Nutzerordner::stoppGebeten() const {
    struct stat lage {};
    return ::fstatat(ordner_.nummer(), name_.c_str(), &lage, AT_SYMLINK_NOFOLLOW) == 0;
}

bool Nutzerordner::schreibe(const std::string& endung, const std::string& inhalt) const {
    const Verkleidung als(benutzer_, gruppe_);
    const std::string ziel = name_ + endung;
    const std::string neben = ziel + ".neu";
    // O_EXCL follows no link, and the renaming replaces one instead of following it.
    ::unlinkat(ordner_.nummer(), neben.c_str(), 0);
    const Deskriptor datei(::openat(ordner_.nummer(), neben.c_str(),
                                    O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
    const bool geschrieben =
        als.gut() && datei &&
        ::write(datei.nummer(), inhalt.data(), inhalt.size()) == static_cast<ssize_t>(inhalt.size()) &&
        ::renameat(ordner_.nummer(), neben.c_str(), ordner_.nummer(), ziel.c_str()) == 0;
    if (!geschrieben)
        ::unlinkat(ordner_.nummer(), neben.c_str(), 0);
    return geschrieben;
}

void Nutzerordner::entferne(const std::string& endung) const {
    const Verkleidung als(benutzer_, gruppe_);
    ::unlinkat(ordner_.nummer(), (name_ + endung).c_str(), 0);
}

} // namespace mobilsteg::volltunnel
