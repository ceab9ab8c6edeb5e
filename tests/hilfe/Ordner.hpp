#pragma once

#include <sys/statvfs.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace mobilsteg {

/// A folder of the test's own that goes with it.
class Ordner {
public:
    Ordner() {
        std::string muster = (wurzel() / "bordlotse-XXXXXX").string();
        pfad_ = ::mkdtemp(muster.data());
    }
    ~Ordner() {
        std::error_code egal;
        std::filesystem::remove_all(pfad_, egal);
    }
    Ordner(const Ordner&) = delete;
    Ordner& operator=(const Ordner&) = delete;

    [[nodiscard]] const std::string& pfad() const { return pfad_; }

    /// Writes a file below it, its folders with it, and returns its path.
    std::string lege(const std::string& rest, const std::string& inhalt, bool ausfuehrbar = false) const {
        const std::filesystem::path ziel = pfad_ + rest;
        std::filesystem::create_directories(ziel.parent_path());
        std::ofstream(ziel, std::ios::binary) << inhalt;
        if (ausfuehrbar)
            std::filesystem::permissions(ziel, std::filesystem::perms(0755));
        return ziel.string();
    }

    /// A file's content; empty when it is not there.
    [[nodiscard]] std::string lies(const std::string& rest) const {
        std::ifstream datei(pfad_ + rest, std::ios::binary);
        return {std::istreambuf_iterator<char>(datei), {}};
    }

private:
    /// In memory where programs may be started from there: the model world replaces a file at each tick, and
    /// a disk is waited for each time.
    static std::filesystem::path wurzel() {
#ifdef ST_NOEXEC
        struct statvfs lage {};
        if (std::getenv("TMPDIR") == nullptr && ::statvfs("/dev/shm", &lage) == 0 &&
            (lage.f_flag & (ST_NOEXEC | ST_RDONLY)) == 0)
            return "/dev/shm";
#endif
        return std::filesystem::temp_directory_path();
    }

    std::string pfad_;
};

} // namespace mobilsteg
