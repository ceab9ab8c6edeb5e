#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace mobilsteg {

/// Owns one file descriptor; every descriptor of the program is close-on-exec.
class Deskriptor {
public:
    Deskriptor() = default;
    explicit Deskriptor(int nummer) : nummer_(nummer) {}
    Deskriptor(Deskriptor&& anderer) noexcept : nummer_(anderer.nummer_) { anderer.nummer_ = -1; }
    Deskriptor& operator=(Deskriptor anderer) noexcept {
        std::swap(nummer_, anderer.nummer_); // the old one is closed with `anderer`
        return *this;
    }
    ~Deskriptor() { schliesse(); }

    [[nodiscard]] int nummer() const { return nummer_; }
    explicit operator bool() const { return nummer_ >= 0; }
    void schliesse();

private:
    int nummer_ = -1;
};

/// Opens a file that is there to be locked, and creates it: an empty one, for this user alone. Empty when it
/// cannot be opened or something else lies there.
[[nodiscard]] Deskriptor oeffneSperrdatei(const std::string& pfad);

/// A lock between processes and threads, held for as long as the object lives; the constructor blocks until
/// it is free, for up to 2 s. `pfad` is created and stays: replacing or removing it would make two locks of
/// one. If it cannot be opened or does not become free, there is no lock.
class Dateisperre {
public:
    explicit Dateisperre(const std::string& pfad);

private:
    Deskriptor datei_;
};

enum class Haltbarkeit {
    fluechtig, ///< whole or not at all for readers, but a power cut may lose it
    dauerhaft  ///< flushed to the disk before the old file is replaced
};

// All of these block on the disk only and may be called on any queue.

inline constexpr std::int64_t megabyte = 1024 * 1024;

/// The whole file as bytes; absent when it cannot be read or is larger than `grenze`: `errno` tells why.
[[nodiscard]] std::optional<std::string> liesDatei(const std::string& pfad,
                                                   std::int64_t grenze = 16 * megabyte);

/// A file's last part, and how long the whole was then.
struct Dateiende {
    std::string bytes;
    std::int64_t laenge = 0;
};

/// The bytes from the offset `von` on, but at most the last `hoechstens` of them; no more is read than that.
/// Absent when the file cannot be read.
[[nodiscard]] std::optional<Dateiende> liesEnde(const std::string& pfad, std::int64_t von,
                                                std::int64_t hoechstens);

/// Replaces the file in one step; readers see the old or the new content. Only this user can read it. False:
/// the old one stands, and `errno` tells why.
bool schreibeAtomar(const std::string& pfad, std::string_view inhalt, Haltbarkeit haltbarkeit);

/// The same; but on a full disk one that is not longer than the old one is written over it, with blanks
/// behind it up to the old length, and not in one step: for texts to which blanks do no harm.
bool schreibeAuchWennVoll(const std::string& pfad, std::string_view inhalt, Haltbarkeit haltbarkeit);

/// Removes what runs that were killed in the middle of replacing that file have left beside it.
void fegeReste(const std::string& pfad);

/// Appends to a file that exists, in one write. False: it could not be opened or written; then it is as
/// before.
bool haengeAn(const std::string& pfad, std::string_view inhalt);

/// Creates the folder in which `pfad` lies, with all parents. False: it is not there afterwards.
bool legeElternordnerAn(const std::string& pfad);

/// Whether a regular file lies there that this user may execute.
[[nodiscard]] bool istAusfuehrbar(const std::string& pfad);

[[nodiscard]] bool existiert(const std::string& pfad);

[[nodiscard]] bool istVerknuepfung(const std::string& pfad);

/// Which file lies there, and as what it was changed last: another text when it was replaced or written
/// meanwhile. Empty: none, or one that others than root and this user may write or own.
[[nodiscard]] std::string vertrauteDatei(const std::string& pfad);

/// Makes sure that descriptors 0 to 2 are taken, so that no socket or pipe ever lands on them and is
/// handed to a tool as its standard stream.
void sichereStandardstroeme();

/// A German description of an `errno` value.
[[nodiscard]] std::string fehlerbeschreibung(int nummer);

} // namespace mobilsteg
