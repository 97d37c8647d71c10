#pragma once

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "fuzz/model.h"
#include "fuzz_corpus.h"  // what the fuzzer has found, made of the folder corpus

namespace velk::test {

// Compares a unit with its model on what the fuzzer has found, and on as many inputs of up to so many random bytes.
inline void Replay(void (*model)(Bytes&), const std::vector<std::vector<std::uint8_t>>& corpus, unsigned seeds,
                   std::size_t most) {
    const auto run = [model](const std::vector<std::uint8_t>& input) {
        Bytes bytes(input);
        try {
            model(bytes);
        } catch (const Difference& difference) {
            FAIL() << difference.file << ":" << difference.line << " differs after " << testing::PrintToString(input);
        }
    };
    for (const auto& input : corpus) run(input);
    for (unsigned seed = 0; seed < seeds && !testing::Test::HasFailure(); ++seed) {
        std::mt19937 random(seed);
        std::vector<std::uint8_t> input(random() % most);
        for (std::uint8_t& byte : input) byte = static_cast<std::uint8_t>(random());
        run(input);
    }
}

}  // namespace velk::test
