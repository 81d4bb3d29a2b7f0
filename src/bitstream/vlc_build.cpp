// Builder of the VLC lookup tables (layout in vlc_dsp.h).
//
// Records are placed one at a time, walking the levels from the root. The walk keeps the
// current table when it meets a leaf, and the plain builder does not follow a pointer whose
// header index is a multiple of 256 (bits 8..15 of the entry all zero); tables built by other
// implementations of this interface have that layout, and callers that share or inspect tables
// depend on it.
#include <cstdint>

#include "bitstream/vlc_dsp.h"
#include "common/bits.h"
#include "common/kernel.h"

namespace kvt {
namespace {

KVT_DSP_TABLE(VlcDsp, init_vlc_dsp) dsp;

template <VlcRecord kind>
constexpr int kRecordWords = kind == VlcRecord::Plain ? 2 : 3;

template <VlcRecord kind>
bool follows_pointer(int32_t entry) {
    if ((entry & 0xFF) != int32_t(kVlcPointerTag)) return false;
    return kind == VlcRecord::RunLevel || (entry & 0xFF00) != 0;
}

// The leaf of a record without its surplus bits.
template <VlcRecord kind>
uint32_t leaf_of(const int32_t* rec) {
    if constexpr (kind == VlcRecord::Plain)
        return uint32_t(rec[1]) << 8;
    else
        return (uint32_t(rec[2]) << 16) | ((uint32_t(rec[1]) & 0xFF) << 8);
}

void replicate(int32_t* dst, uint32_t v, int n) {
    if (n >= 7) {
        dsp.fill_32s(v, dst, n);
        return;
    }
    for (int i = 0; i < n; ++i) dst[i] = int32_t(v);
}

template <VlcRecord kind>
class Builder {
public:
    Builder(const int32_t* desc, int32_t* table)
        : table_(table), widths_(desc + 2), levels_(desc[1]), next_free_(1 + (int32_t(1) << desc[2])) {
        for (int i = 0; i < levels_; ++i) total_width_ += widths_[i];
    }

    void place(uint32_t code, int32_t len, uint32_t leaf) {
        if (len > total_width_) return;  // longer than all levels together: ignored
        int32_t header = 0, sum = 0;
        for (int level = 0;; ++level) {
            const int32_t w = widths_[level];
            sum += w;
            // The walk can stay in a table narrower than this level (at a leaf, or at a pointer
            // the plain builder does not follow). A code whose entries would then lie past that
            // table's end is ignored: written there, it would land on the next table's header
            // and leave a width that no lookup can read.
            const int64_t extent = int64_t(1) << table_[header];
            if (sum >= len) {
                const int32_t surplus = sum - len;
                const uint32_t base = (code & low_mask(w - surplus)) << surplus;
                if (base + (int64_t(1) << surplus) > extent) return;
                replicate(table_ + header + 1 + base, leaf | uint32_t(surplus), int32_t(1) << surplus);
                return;
            }
            const uint32_t index = (code >> (len - sum)) & low_mask(w);
            if (index >= extent) return;
            int32_t* entry = table_ + header + 1 + index;
            if (uint32_t(*entry) == kVlcEmpty)
                header = open_table(entry, widths_[level + 1]);
            else if (follows_pointer<kind>(*entry))
                header = *entry >> 8;
            // any other entry: the walk stays in the current table
        }
    }

private:
    // Creates a sub-table of width w at the next free word and points `entry` to it.
    int32_t open_table(int32_t* entry, int32_t w) {
        const int32_t header = next_free_;
        table_[header] = w;
        *entry = int32_t((uint32_t(header) << 8) | kVlcPointerTag);
        next_free_ += (int32_t(1) << w) + 1;
        return header;
    }

    int32_t* table_;
    const int32_t* widths_;
    int32_t levels_;
    int32_t next_free_;
    int64_t total_width_ = 0;
};

}  // namespace

template <VlcRecord kind>
void vlc_build(const int32_t* desc, int32_t* table) {
    const int words = kind == VlcRecord::Plain ? kVlcPlainWords : kVlcRunLevelWords;
    dsp.fill_32s(kVlcEmpty, table, words);
    table[0] = desc[2];
    const int32_t levels = desc[1];
    if (levels < 1) return;  // every record is ignored
    Builder<kind> builder(desc, table);
    const int32_t* p = desc + 2 + levels;
    for (int32_t len = 1; *p >= 0; ++len) {
        const int32_t count = *p++;
        for (int32_t i = 0; i < count; ++i, p += kRecordWords<kind>)
            builder.place(uint32_t(p[0]), len, leaf_of<kind>(p));
    }
}

template void vlc_build<VlcRecord::Plain>(const int32_t*, int32_t*);
template void vlc_build<VlcRecord::RunLevel>(const int32_t*, int32_t*);

}  // namespace kvt
