#pragma once

// What every package tells about itself.

#include "plattform/Anschluesse.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/plattform/vertrag/Art.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace mobilsteg {

using Buendelart = Art<Buendel(const std::string& ordner)>; ///< in an empty folder of the test's own

class BuendelVertrag : public testing::TestWithParam<Buendelart> {};

TEST_P(BuendelVertrag, kenntSichSelbst) {
    const Ordner ordner;
    const Buendel buendel = GetParam().baue(ordner.pfad());
    EXPECT_TRUE(buendel.kennung.starts_with("de.mobilsteg.")) << buendel.kennung;
    for (const auto& version : {buendel.version, buendel.bauversion}) {
        ASSERT_TRUE(version.has_value());
        EXPECT_TRUE(!version->empty() && version->find_first_not_of("0123456789.") == std::string::npos)
            << *version;
    }
    if (buendel.ressourcen) {
        EXPECT_TRUE(std::filesystem::path(*buendel.ressourcen).is_absolute()) << *buendel.ressourcen;
        EXPECT_TRUE(std::filesystem::is_directory(*buendel.ressourcen)) << *buendel.ressourcen;
    }
}

} // namespace mobilsteg
