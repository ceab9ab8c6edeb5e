#include "plattform/Dateien.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <thread>

namespace mobilsteg {

namespace fs = std::filesystem;

void Deskriptor::schliesse() {
    if (nummer_ >= 0)
        ::close(nummer_);
    nummer_ = -1;
}

Deskriptor oeffneSperrdatei(const std::string& pfad) {
    Deskriptor datei(::open(pfad.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
    struct stat lage {};
    if (datei && (::fstat(datei.nummer(), &lage) != 0 || !S_ISREG(lage.st_mode)))
        datei.schliesse();
    return datei;
}

Dateisperre::Dateisperre(const std::string& pfad) : datei_(oeffneSperrdatei(pfad)) {
    // Whoever may open the file may hold its lock for ever.
    for (int blick = 0; datei_ && ::flock(datei_.nummer(), LOCK_EX | LOCK_NB) != 0; ++blick) {
        if (blick == 200)
            datei_.schliesse();
        else
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

namespace {

constexpr const char* nebenname = ".neu-";

bool bringeAufDiePlatte(int nummer) {
#ifdef __APPLE__
    if (::fcntl(nummer, F_FULLFSYNC) == 0) // fsync leaves it in the disk's own memory
        return true;
#endif
    return ::fsync(nummer) == 0;
}

bool schreibeAlles(int ziel, std::string_view inhalt) {
    while (!inhalt.empty()) {
        const ssize_t n = ::write(ziel, inhalt.data(), inhalt.size());
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        inhalt.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
}

bool schreibeDarueber(const std::string& pfad, std::string_view inhalt, Haltbarkeit haltbarkeit) {
    const Deskriptor datei(::open(pfad.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat lage {};
    if (!datei || ::fstat(datei.nummer(), &lage) != 0 || !S_ISREG(lage.st_mode) ||
        lage.st_size < static_cast<off_t>(inhalt.size()))
        return false;
    std::string bytes(inhalt);
    bytes.resize(static_cast<std::size_t>(lage.st_size), ' ');
    return schreibeAlles(datei.nummer(), bytes) &&
           (haltbarkeit == Haltbarkeit::fluechtig || bringeAufDiePlatte(datei.nummer()));
}

} // namespace

std::optional<std::string> liesDatei(const std::string& pfad, std::int64_t grenze) {
    auto ende = liesEnde(pfad, 0, grenze);
    if (!ende)
        return std::nullopt;
    errno = EFBIG;
    return ende->laenge > grenze ? std::nullopt : std::optional(std::move(ende->bytes));
}

std::optional<Dateiende> liesEnde(const std::string& pfad, std::int64_t von, std::int64_t hoechstens) {
    // Non-blocking: a pipe under that name must not hold the caller.
    const Deskriptor datei(::open(pfad.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat lage {};
    if (!datei || ::fstat(datei.nummer(), &lage) != 0)
        return std::nullopt;
    if (!S_ISREG(lage.st_mode)) {
        errno = EINVAL;
        return std::nullopt;
    }
    Dateiende ende;
    ende.laenge = lage.st_size;
    std::int64_t stelle = std::max({von, ende.laenge - hoechstens, std::int64_t{0}});
    while (stelle < ende.laenge) {
        char block[65536];
        const auto rest =
            static_cast<std::size_t>(std::min<std::int64_t>(ende.laenge - stelle, sizeof block));
        const ssize_t n = ::pread(datei.nummer(), block, rest, stelle);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return std::nullopt;
        if (n == 0)
            ende.laenge = stelle; // another program has truncated it meanwhile
        ende.bytes.append(block, static_cast<std::size_t>(n));
        stelle += n;
    }
    return ende;
}

bool schreibeAtomar(const std::string& pfad, std::string_view inhalt, Haltbarkeit haltbarkeit) {
    const bool dauerhaft = haltbarkeit == Haltbarkeit::dauerhaft;
    std::string neben = pfad + nebenname + "XXXXXX";
    const Deskriptor datei(::mkostemp(neben.data(), O_CLOEXEC)); // which gives it to this user alone
    if (!datei)
        return false;
    if (schreibeAlles(datei.nummer(), inhalt) && (!dauerhaft || bringeAufDiePlatte(datei.nummer())) &&
        ::rename(neben.c_str(), pfad.c_str()) == 0) {
        const auto ordner = fs::path(pfad).parent_path().string();
        if (dauerhaft) // the new name lies in the folder; some file systems cannot do it, and need not
            (void)bringeAufDiePlatte(Deskriptor(::open(ordner.c_str(), O_RDONLY | O_CLOEXEC)).nummer());
        return true;
    }
    const int grund = errno;
    ::unlink(neben.c_str());
    errno = grund;
    return false;
}

bool schreibeAuchWennVoll(const std::string& pfad, std::string_view inhalt, Haltbarkeit haltbarkeit) {
    if (schreibeAtomar(pfad, inhalt, haltbarkeit))
        return true;
    const int grund = errno;
    const bool voll = grund == ENOSPC || grund == EDQUOT;
    const bool geschrieben = voll && schreibeDarueber(pfad, inhalt, haltbarkeit);
    errno = grund;
    return geschrieben;
}

void fegeReste(const std::string& pfad) {
    const fs::path ziel(pfad);
    const std::string anfang = ziel.filename().string() + nebenname;
    std::error_code fehler;
    for (fs::directory_iterator i(ziel.parent_path(), fehler), ende; !fehler && i != ende;
         i.increment(fehler))
        if (i->path().filename().string().starts_with(anfang))
            ::unlink(i->path().c_str());
}

bool haengeAn(const std::string& pfad, std::string_view inhalt) {
    const Deskriptor datei(::open(pfad.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NONBLOCK));
    struct stat vorher {};
    if (!datei || ::fstat(datei.nummer(), &vorher) != 0)
        return false;
    if (schreibeAlles(datei.nummer(), inhalt))
        return true;
    // On a full disk the beginning may have gone in; but not what another program wrote meanwhile.
    struct stat jetzt {};
    if (S_ISREG(vorher.st_mode) && ::fstat(datei.nummer(), &jetzt) == 0 && jetzt.st_size > vorher.st_size &&
        jetzt.st_size < vorher.st_size + static_cast<off_t>(inhalt.size()))
        (void)!::ftruncate(datei.nummer(), vorher.st_size);
    return false;
}

bool legeElternordnerAn(const std::string& pfad) {
    std::error_code fehler;
    const fs::path ordner = fs::path(pfad).parent_path();
    fs::create_directories(ordner, fehler);
    return fs::is_directory(ordner, fehler);
}

bool istAusfuehrbar(const std::string& pfad) {
    std::error_code fehler;
    return fs::is_regular_file(pfad, fehler) && ::access(pfad.c_str(), X_OK) == 0;
}

bool existiert(const std::string& pfad) {
    std::error_code fehler;
    return fs::exists(pfad, fehler);
}

bool istVerknuepfung(const std::string& pfad) {
    std::error_code fehler;
    return fs::is_symlink(pfad, fehler);
}

std::string vertrauteDatei(const std::string& pfad) {
    struct stat lage {};
    if (::stat(pfad.c_str(), &lage) != 0 || !S_ISREG(lage.st_mode) ||
        (lage.st_uid != 0 && lage.st_uid != ::getuid()) || (lage.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        return "";
#ifdef __APPLE__
    const timespec& zeit = lage.st_ctimespec;
#else
    const timespec& zeit = lage.st_ctim;
#endif
    std::string text;
    for (const auto zahl : {static_cast<std::int64_t>(lage.st_dev), static_cast<std::int64_t>(lage.st_ino),
                            static_cast<std::int64_t>(zeit.tv_sec), static_cast<std::int64_t>(zeit.tv_nsec)})
        text += std::to_string(zahl) + " ";
    return text;
}

void sichereStandardstroeme() {
    int nummer = 0;
    while (nummer >= 0 && nummer <= STDERR_FILENO)
        nummer = ::open("/dev/null", O_RDWR);
    const Deskriptor ueberzaehliger(nummer);
}

std::string fehlerbeschreibung(int nummer) {
    switch (nummer) {
    case ENOENT:
        return "Datei oder Ordner nicht gefunden";
    case EACCES:
    case EPERM:
        return "Keine Berechtigung";
    case ENOEXEC:
        return "Kein ausführbares Programm";
    case EMFILE:
    case ENFILE:
        return "Zu viele offene Dateien";
    case ENOMEM:
        return "Nicht genug Speicher";
    case EAGAIN:
        return "Das System kann gerade keinen weiteren Prozess starten";
    case E2BIG:
        return "Zu viele oder zu lange Argumente";
    case ENOSPC:
    case EDQUOT:
        return "Kein Platz mehr auf dem Datenträger";
    case EROFS:
        return "Der Datenträger ist schreibgeschützt";
    case ENOTDIR:
        return "Kein Ordner";
    default:
        return std::string(std::strerror(nummer)) + " (Fehler " + std::to_string(nummer) + ")";
    }
}

} // namespace mobilsteg
