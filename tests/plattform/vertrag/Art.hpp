#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

namespace mobilsteg {

/// One implementation of a port that has to keep the port's contract: its name, and the way to get what
/// the contract's tests need.
template <typename Gebautes>
struct Art {
    std::string name;
    std::function<Gebautes> baue;

    /// The name alone: what is printed otherwise differs from run to run.
    friend void PrintTo(const Art& art, std::ostream* strom) { *strom << art.name; }
    static std::string benenne(const testing::TestParamInfo<Art>& fall) { return fall.param.name; }
};

} // namespace mobilsteg
