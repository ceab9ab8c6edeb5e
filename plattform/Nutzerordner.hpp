#pragma once

#include "plattform/Dateien.hpp"

#include <sys/stat.h>

namespace mobilsteg {

/// A user's folder in which a process of root talks with one of that user's, by files named after a stop
/// file. What is written there is written as that user and without following a link: whoever may write there
/// can plant one. For a process with one thread, or one that is the user's already. Blocks on the disk only.
class Nutzerordner {
public:
    /// `stopp`: the stop file's absolute path. Check `da()`.
    explicit Nutzerordner(const std::string& stopp);

    [[nodiscard]] bool da() const { return static_cast<bool>(ordner_); }
    [[nodiscard]] uid_t benutzer() const { return wem_.st_uid; }
    [[nodiscard]] gid_t gruppe() const { return wem_.st_gid; }

    /// Whether something lies there under the stop file's name, whatever and whosever it is.
    [[nodiscard]] bool stoppGebeten() const;

    /// Replaces the file "<stop file><endung>". False: it could not be written.
    bool schreibe(const std::string& endung, const std::string& inhalt) const;

    /// Removes the files that are there, in this order.
    void entferne(std::initializer_list<const char*> endungen) const;

private:
    Deskriptor ordner_;
    std::string name_;
    struct stat wem_ {};
};

} // namespace mobilsteg
