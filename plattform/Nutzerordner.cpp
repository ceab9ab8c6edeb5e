#include "plattform/Nutzerordner.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace mobilsteg {

namespace {

/// Root acts as the user for the life of this object; who is the user already changes nothing.
class Verkleidung {
public:
    explicit Verkleidung(const struct stat& wer) : war_(::geteuid()), gruppe_(::getegid()) {
        gut = ::setegid(wer.st_gid) == 0 && ::seteuid(wer.st_uid) == 0;
    }
    ~Verkleidung() {
        if (::seteuid(war_) != 0 || ::setegid(gruppe_) != 0)
            ::_exit(1); // nothing could be undone without the rights
    }
    Verkleidung(const Verkleidung&) = delete;
    Verkleidung& operator=(const Verkleidung&) = delete;

    bool gut = false;

private:
    uid_t war_;
    gid_t gruppe_;
};

} // namespace

Nutzerordner::Nutzerordner(const std::string& stopp)
    : ordner_(
          ::open(stopp.substr(0, stopp.rfind('/')).c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)),
      name_(stopp.substr(stopp.rfind('/') + 1)) {
    if (::fstat(ordner_.nummer(), &wem_) != 0)
        ordner_.schliesse();
}

bool Nutzerordner::stoppGebeten() const {
    struct stat lage {};
    return ::fstatat(ordner_.nummer(), name_.c_str(), &lage, AT_SYMLINK_NOFOLLOW) == 0;
}

bool Nutzerordner::schreibe(const std::string& endung, const std::string& inhalt) const {
    const Verkleidung als(wem_);
    const int ordner = ordner_.nummer();
    const std::string ziel = name_ + endung;
    const std::string neben = ziel + ".neu";
    // O_EXCL follows no link, and the renaming replaces one instead of following it.
    ::unlinkat(ordner, neben.c_str(), 0);
    const Deskriptor datei(::openat(ordner, neben.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    if (als.gut && datei &&
        ::write(datei.nummer(), inhalt.data(), inhalt.size()) == static_cast<ssize_t>(inhalt.size()) &&
        ::renameat(ordner, neben.c_str(), ordner, ziel.c_str()) == 0)
        return true;
    ::unlinkat(ordner, neben.c_str(), 0);
    return false;
}

void Nutzerordner::entferne(std::initializer_list<const char*> endungen) const {
    const Verkleidung als(wem_);
    for (const char* endung : endungen)
        ::unlinkat(ordner_.nummer(), (name_ + endung).c_str(), 0);
}

} // namespace mobilsteg
