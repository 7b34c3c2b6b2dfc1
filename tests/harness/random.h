// Random numbers for property tests. A test names the seed in its failures with
// `SCOPED_TRACE(random.trace())`; setting BRIMWATCH_TEST_SEED repeats a run.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

namespace brimwatch::test {

class Random {
  public:
    Random() : Random(chosenSeed()) {}
    explicit Random(std::uint32_t seed) : seed_(seed), engine_(seed) {}

    std::string trace() const { return "BRIMWATCH_TEST_SEED=" + std::to_string(seed_); }

    std::uint64_t bits() { return engine_(); }
    // From 0 to `count` - 1.
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(engine_() % count); }
    std::int64_t between(std::int64_t first, std::int64_t last) {
        return first +
               static_cast<std::int64_t>(engine_() % static_cast<std::uint64_t>(last - first + 1));
    }
    bool oneIn(std::size_t count) { return below(count) == 0; }

  private:
    static std::uint32_t chosenSeed() {
        const char* chosen = std::getenv("BRIMWATCH_TEST_SEED");
        return chosen != nullptr ? static_cast<std::uint32_t>(std::strtoul(chosen, nullptr, 10))
                                 : std::random_device{}();
    }

    std::uint32_t seed_;
    std::mt19937_64 engine_;
};

}  // namespace brimwatch::test
