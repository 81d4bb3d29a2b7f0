#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "checkasm.h"

namespace kvt::test {

uint64_t test_seed() {
    static const uint64_t seed = [] {
        const char* env = std::getenv("KVT_TEST_SEED");
        return env && *env ? std::strtoull(env, nullptr, 0) : uint64_t(0x6B7674000);
    }();
    return seed;
}

const std::vector<Tier>& tiers_to_test() {
    static const std::vector<Tier> tiers = [] {
        const Tier all[] = {{"c", 0},
                            {"sse2", kCpuSSE2},
                            {"ssse3", kCpuSSE2 | kCpuSSSE3},
                            {"avx2", kCpuSSE2 | kCpuSSSE3 | kCpuAVX2},
                            {"avx512", kCpuSSE2 | kCpuSSSE3 | kCpuAVX2 | kCpuAVX512}};
        const unsigned have = cpu_flags();
        std::vector<Tier> run;
        std::string skipped;
        for (const Tier& t : all) {
            if ((t.flags & have) == t.flags)
                run.push_back(t);
            else
                skipped += std::string(" ") + t.name;
        }
        std::printf("[ tiers    ] seed %llu; tested:", static_cast<unsigned long long>(test_seed()));
        for (const Tier& t : run) std::printf(" %s", t.name);
        if (!skipped.empty())
            std::printf("; skipped (not built or not on this processor):%s", skipped.c_str());
        std::printf("\n");
        return run;
    }();
    return tiers;
}

}  // namespace kvt::test
