// A test-side writer of H.263 / MPEG-4 coefficient codes, built from the code tables in tables/:
// TCOEF events in every escape form, MPEG-4 intra DC, and random blocks of events.
#pragma once

#include <array>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "bit_string.h"
#include "tsv.h"

namespace kvt::test {

struct CoefEvent {
    int last, run, level;
};

// How an event is written: a table code, the three MPEG-4 escapes (level - LMAX, run - RMAX - 1,
// fixed length), or the H.263 escape (last, run, 8-bit level).
enum Form { kPlain, kLevelEscape, kRunEscape, kFixedEscape, kH263Escape };

class TcoefCodes {
public:
    explicit TcoefCodes(const std::string& file) {
        for (const TsvRow& r : read_table(file)) {
            if (r["level"] == "ESC") {
                escape_ = r["code"];
                continue;
            }
            const int last = r.num("last"), run = r.num("run"), level = r.num("level");
            codes_[{last, run, level}] = r["code"];
            lmax_[{last, run}] = std::max(lmax_[{last, run}], level);
            rmax_[{last, level}] = std::max(rmax_[{last, level}], run);
        }
    }
    bool has(int last, int run, int magnitude) const { return codes_.count({last, run, magnitude}) != 0; }
    // Largest level with a code for (last, run), 0 if none; largest run for (last, level), -1 if none.
    int lmax(int last, int run) const { return value_or(lmax_, {last, run}, 0); }
    int rmax(int last, int level) const { return value_or(rmax_, {last, level}, -1); }

    // The MPEG-4 forms that can carry the event, in the order an encoder tries them.
    std::vector<Form> mpeg4_forms(const CoefEvent& e) const {
        const int m = std::abs(e.level);
        std::vector<Form> forms;
        if (has(e.last, e.run, m)) forms.push_back(kPlain);
        if (m > lmax(e.last, e.run) && has(e.last, e.run, m - lmax(e.last, e.run)))
            forms.push_back(kLevelEscape);
        if (e.run > rmax(e.last, m) && has(e.last, e.run - rmax(e.last, m) - 1, m))
            forms.push_back(kRunEscape);
        if (m >= 1 && m <= 2047 && e.run <= 63) forms.push_back(kFixedEscape);
        return forms;
    }

    std::string write(const CoefEvent& e, Form form) const {
        const int m = std::abs(e.level);
        const std::string sign = e.level < 0 ? "1" : "0";
        switch (form) {
            case kPlain:
                return code(e.last, e.run, m) + sign;
            case kLevelEscape:
                return escape_ + "0" + code(e.last, e.run, m - lmax(e.last, e.run)) + sign;
            case kRunEscape:
                return escape_ + "10" + code(e.last, e.run - rmax(e.last, m) - 1, m) + sign;
            case kFixedEscape:
                return escape_ + "11" + to_bits(uint32_t(e.last), 1) + to_bits(uint32_t(e.run), 6) + "1" +
                       to_bits(uint32_t(e.level), 12) + "1";
            case kH263Escape:
                return escape_ + to_bits(uint32_t(e.last), 1) + to_bits(uint32_t(e.run), 6) +
                       to_bits(uint32_t(e.level), 8);
        }
        return {};
    }
    // H.263: a table code when there is one, else the escape.
    std::string write_h263(const CoefEvent& e) const {
        return has(e.last, e.run, std::abs(e.level)) ? write(e, kPlain) : write(e, kH263Escape);
    }
    const std::string& escape() const { return escape_; }

private:
    using Key3 = std::array<int, 3>;
    using Key2 = std::array<int, 2>;
    static int value_or(const std::map<Key2, int>& m, const Key2& k, int v) {
        const auto it = m.find(k);
        return it == m.end() ? v : it->second;
    }
    const std::string& code(int last, int run, int magnitude) const {
        return codes_.at({last, run, magnitude});
    }
    std::map<Key3, std::string> codes_;
    std::map<Key2, int> lmax_, rmax_;
    std::string escape_;
};

// MPEG-4 intra DC: size code (Table B-13 or B-14), differential in size bits (negative values as
// their ones' complement), and a marker bit after more than 8 bits.
inline std::string write_intra_dc(int diff, bool chroma) {
    static std::map<int, std::string> codes[2];
    if (codes[chroma].empty())
        for (const TsvRow& r : read_table(chroma ? "mpeg4_dc_size_chroma.tsv" : "mpeg4_dc_size_luma.tsv"))
            codes[chroma][r.num("dct_dc_size")] = r["code"];
    int size = 0;
    while ((1 << size) <= std::abs(diff)) ++size;
    const uint32_t u = uint32_t(diff < 0 ? diff + (1 << size) - 1 : diff);
    return codes[chroma].at(size) + (size ? to_bits(u, size) : "") + (size > 8 ? "1" : "");
}

// A random level: mostly small, some medium, a few up to max_level (both signs).
inline int random_level(Rng& rng, int max_level) {
    const int pick = rng.uniform(0, 99);
    const int m = pick < 60 ? rng.uniform(1, 3) : pick < 88 ? rng.uniform(4, 30) : rng.uniform(1, max_level);
    return rng.coin() ? -m : m;
}

// Events filling scan positions from `first` to at most 63: a random count, biased to short blocks.
inline std::vector<CoefEvent> random_events(Rng& rng, int first, int max_level) {
    const int room = 64 - first;
    const int count = rng.coin() ? rng.uniform(1, std::min(room, 6)) : rng.uniform(1, room);
    std::vector<bool> used(size_t(room), false);
    for (int k = 0; k < count;) {
        const int i = rng.uniform(0, room - 1);
        if (!used[size_t(i)]) used[size_t(i)] = true, ++k;
    }
    std::vector<CoefEvent> events;
    int previous = -1;
    for (int i = 0; i < room; ++i)
        if (used[size_t(i)]) {
            events.push_back({0, i - previous - 1, random_level(rng, max_level)});
            previous = i;
        }
    events.back().last = 1;
    return events;
}

// Scan order `name` of scan_orders_8x8.tsv (zigzag, alternate_horizontal, alternate_vertical).
inline std::vector<int> scan_order(const std::string& name) {
    std::vector<int> order;
    for (const TsvRow& r : read_table("scan_orders_8x8.tsv")) order.push_back(r.num(name));
    return order;
}

// The events placed in raster order through `scan`, from scan position `first`.
inline std::array<int16_t, 64> place(const std::vector<CoefEvent>& events, int first,
                                     const std::vector<int>& scan) {
    std::array<int16_t, 64> block{};
    int i = first - 1;
    for (const CoefEvent& e : events) {
        i += e.run + 1;
        block[size_t(scan[size_t(i)])] = int16_t(e.level);
    }
    return block;
}

}  // namespace kvt::test
