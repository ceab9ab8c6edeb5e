// libFuzzer's side: MOBILSTEG_FUZZER names the reader that is to be fuzzed.

#include "tests/fuzz/Pruefungen.hpp"

#include <cstdint>
#include <cstdlib>
#include <stdexcept>

using namespace mobilsteg;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* daten, std::size_t laenge) {
    static const fuzz::Pruefung& pruefung = [] {
        const char* name = std::getenv("MOBILSTEG_FUZZER");
        for (const auto& eine : fuzz::pruefungen())
            if (name != nullptr && eine.name == name)
                return eine;
        throw std::invalid_argument("MOBILSTEG_FUZZER must be a name of tests/fuzz/Pruefungen.cpp");
    }();
    pruefung.pruefe({reinterpret_cast<const char*>(daten), laenge}); // an exception ends the run as a find
    return 0;
}
