// Kernel table of the VLC tables (the word fill of the builder), and the table layout the builder
// and the one-code decoder share.
//
// A built table is one block of 32-bit words. Word 0 holds the root width R and the root's
// 2^R entries follow it; each sub-table is a header word holding its width W followed by 2^W
// entries, so the root behaves as a sub-table whose header is word 0. An entry is
//   empty    0x00F0F101 (field 0xF0F1, tag 1), the value every word starts with;
//   pointer  (header index << 8) | 0x80;
//   leaf     (value << 8) | surplus, or for run/level tables
//            (level << 16) | ((run & 0xFF) << 8) | surplus,
// where surplus is the number of trailing lookup bits that are not part of the code.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

constexpr uint32_t kVlcEmpty = 0x00F0F101u;
constexpr int32_t kVlcEmptyField = 0xF0F1;  // 61681: what a failed lookup reports
constexpr uint32_t kVlcPointerTag = 0x80;
constexpr int kVlcPlainWords = 16384;      // 65536-byte block
constexpr int kVlcRunLevelWords = 262144;  // 1048576-byte block

enum class VlcRecord { Plain, RunLevel };

// Builds the table of `desc` into `table`, which holds the record kind's capacity in words.
// The description must fit (the caller's contract); nothing is checked.
template <VlcRecord kind>
void vlc_build(const int32_t* desc, int32_t* table);

struct VlcDsp {
    KvtStatus (*fill_32s)(uint32_t v, int32_t* dst, int n);  // dst[0..n) = v
};

namespace c {
void init_vlc(VlcDsp& d);
}
namespace ref {
void init_vlc(VlcDsp& d);
}
namespace sse2 {
void init_vlc(VlcDsp& d);
}

void init_vlc_dsp(VlcDsp& d, unsigned cpu_flags);

}  // namespace kvt
