// Oracle-against-tiers harness in the spirit of the codec projects' "checkasm": identical
// random inputs go to the oracle's kernels and to every tier's; every output byte is compared
// and guard bytes around outputs are checked. A failure prints the seed that reproduces it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "common/kernel.h"

namespace kvt::test {

// Small deterministic generator (xorshift64*): same seed, same stream on every platform.
class Rng {
public:
    explicit Rng(uint64_t seed) : s_(seed * 0x9E3779B97F4A7C15ull + 0x2545F4914F6CDD1Dull) {}
    uint32_t next() {
        s_ ^= s_ >> 12;
        s_ ^= s_ << 25;
        s_ ^= s_ >> 27;
        return uint32_t((s_ * 0x2545F4914F6CDD1Dull) >> 32);
    }
    // Uniform in [lo, hi], both inclusive.
    int uniform(int lo, int hi) { return lo + int(next() % uint32_t(int64_t(hi) - lo + 1)); }
    bool coin() { return next() & 1; }
    template <class T>
    void fill(T* p, size_t n, int lo, int hi) {
        for (size_t i = 0; i < n; ++i) p[i] = T(uniform(lo, hi));
    }

private:
    uint64_t s_;
};

// A buffer of n elements placed `misalign` bytes past a 64-byte boundary, with 64 guard bytes on
// both sides. Contents start as the guard pattern so that unwritten bytes compare equal.
template <class T>
class Guarded {
public:
    explicit Guarded(size_t n, size_t misalign = 0) : n_(n), raw_(192 + misalign + n * sizeof(T), 0xA5) {
        begin_ = raw_.data() + (64 - reinterpret_cast<uintptr_t>(raw_.data()) % 64) % 64 + 64 + misalign;
    }
    T* data() { return reinterpret_cast<T*>(begin_); }
    size_t size() const { return n_; }
    T& operator[](size_t i) { return data()[i]; }
    bool guards_intact() const {
        const auto intact = [](const uint8_t* p) { return std::count(p, p + 64, 0xA5) == 64; };
        return intact(begin_ - 64) && intact(begin_ + n_ * sizeof(T));
    }
    std::vector<uint8_t> bytes() const { return std::vector<uint8_t>(begin_, begin_ + n_ * sizeof(T)); }

private:
    size_t n_;
    std::vector<uint8_t> raw_;
    uint8_t* begin_;
};

// A 2-D block of `rows` rows of `width` samples with a byte step that may exceed the width, be
// misaligned or be negative (then data() is the top row, stored last in memory).
template <class T>
class Plane {
public:
    Plane(int width, int rows, int step, size_t misalign = 0)
        : rows_(rows),
          step_(step),
          buf_(size_t(rows - 1) * size_t(std::abs(step)) / sizeof(T) + size_t(width), misalign) {}
    int step() const { return step_; }
    T* data() { return shift(buf_.data(), step_ < 0 ? 1 - rows_ : 0); }
    T* row(int y) { return shift(data(), y); }
    bool guards_intact() const { return buf_.guards_intact(); }
    std::vector<uint8_t> bytes() const { return buf_.bytes(); }

private:
    T* shift(T* p, int rows) {
        return reinterpret_cast<T*>(reinterpret_cast<uint8_t*>(p) + ptrdiff_t(rows) * step_);
    }
    int rows_, step_;
    Guarded<T> buf_;
};

// What one run of a trial produced, as named byte strings.
struct Outputs {
    std::vector<std::pair<std::string, std::vector<uint8_t>>> items;
    template <class T>
    void add(const std::string& name, const T& value) {
        const uint8_t* b = reinterpret_cast<const uint8_t*>(&value);
        items.emplace_back(name, std::vector<uint8_t>(b, b + sizeof(T)));
    }
    template <class Buf>
    void add_buffer(const std::string& name, const Buf& buf) {
        EXPECT_TRUE(buf.guards_intact()) << name << ": write outside the buffer";
        items.emplace_back(name, buf.bytes());
    }
};

// ---- Tiers --------------------------------------------------------------------------------

// The seed of the random tests: KVT_TEST_SEED from the environment, else a fixed one (CI).
uint64_t test_seed();

// One instruction-set tier: its name and the flags that build its table (all lower tiers too).
struct Tier {
    const char* name;
    unsigned flags;
};

// The tiers this build has and this processor runs, C first; the others are named once on stdout.
const std::vector<Tier>& tiers_to_test();

// Runs body(table, tier) for the table of every testable tier whose kernels differ from the tier
// below it (a tier that adds nothing to a family is not run twice).
template <class Dsp, class Body>
void for_each_tier(void (*init)(Dsp&, unsigned), Body body) {
    Dsp prev{};
    bool first = true;
    for (const Tier& tier : tiers_to_test()) {
        Dsp d{};
        init(d, tier.flags);
        if (!first && std::memcmp(&d, &prev, sizeof d) == 0) continue;
        SCOPED_TRACE(std::string("tier ") + tier.name);
        body(static_cast<const Dsp&>(d), tier);
        prev = d;
        first = false;
    }
}

// Runs body(rng, table, outputs) `trials` times with the oracle table and with every tier's
// table, each trial from the same seed, and expects identical outputs.
template <class Dsp, class Body>
void compare_tiers(const char* what, void (*init)(Dsp&, unsigned), void (*init_ref)(Dsp&), int trials,
                   Body body) {
    Dsp oracle{};
    init_ref(oracle);
    for_each_tier<Dsp>(init, [&](const Dsp& d, const Tier& tier) {
        for (int t = 0; t < trials; ++t) {
            const uint64_t seed = test_seed() + uint64_t(t);
            Rng r1(seed), r2(seed);
            Outputs want, got;
            body(r1, static_cast<const Dsp&>(oracle), want);
            body(r2, d, got);
            ASSERT_EQ(want.items.size(), got.items.size()) << what;
            for (size_t i = 0; i < want.items.size(); ++i) {
                const std::vector<uint8_t>&a = want.items[i].second, &b = got.items[i].second;
                ASSERT_TRUE(a == b) << what << " [" << tier.name << "], trial " << t
                                    << " (KVT_TEST_SEED=" << test_seed() << "): " << want.items[i].first
                                    << " differs from byte "
                                    << std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first -
                                           a.begin();
            }
        }
    });
}

}  // namespace kvt::test
