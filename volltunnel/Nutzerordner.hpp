#pragma once

#include "plattform/Dateien.hpp"

#include <sys/types.h>

#include <string>

namespace mobilsteg::volltunnel {

/// The folder of the stop file, in which the helper and the program talk. It belongs to the user, and what we
/// do there we do as that user and without following a link: whoever may write there can plant one. No
/// operation blocks on more than the disk. For a process with one thread, or one that is the user's already.
class Nutzerordner {
public:
    /// `stopp`: the stop file's absolute path. Check `da()`.
    explicit Nutzerordner(const std::string& stopp);

    [[nodiscard]] bool da() const { return static_cast<bool>(ordner_); }
    [[nodiscard]] uid_t benutzer() const { return benutzer_; }
    [[nodiscard]] gid_t gruppe() const { return gruppe_; }

    /// Whether something lies there under the stop file's name, whatever and whosever it is.
    [[nodiscard]] bool stoppGebeten() const;

    /// Replaces the file "<stop file><endung>". False: it could not be written.
    bool schreibe(const std::string& endung, const std::string& inhalt) const;

    /// Without effect if it is not there.
    void entferne(const std::string& endung) const;

private:
    Deskriptor ordner_;
    std::string name_;
    uid_t benutzer_ = 0;
    gid_t gruppe_ = 0;
};

} // namespace mobilsteg::volltunnel
