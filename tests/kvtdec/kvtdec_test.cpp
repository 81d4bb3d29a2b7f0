// kvtdec's syntax layers on hand-made streams: each test writes a small H.263 or MPEG-4 stream bit
// by bit (DC-only intra macroblocks, whose pictures are flat and known in advance) and checks what
// the decoder makes of it, or the message and position it stops with.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "decoder.h"
#include "snapshot.h"
#include "stream.h"

namespace {

using kvtdec::DecodeError;
using kvtdec::Decoder;
using kvtdec::Stream;

// Most significant bit first, like every video bitstream.
class BitWriter {
public:
    BitWriter& put(uint32_t value, int bits) {
        for (int i = bits - 1; i >= 0; --i) bits_.push_back((value >> i) & 1);
        return *this;
    }
    // A string of 0 and 1; other characters are ignored.
    BitWriter& put(const char* pattern) {
        for (; *pattern; ++pattern)
            if (*pattern == '0' || *pattern == '1') bits_.push_back(*pattern == '1');
        return *this;
    }
    BitWriter& align_with_zeros() {
        while (bits_.size() % 8) bits_.push_back(0);
        return *this;
    }
    // MPEG-4 stuffing: a 0, then 1s up to the byte boundary (8 bits when already aligned).
    BitWriter& mpeg4_stuffing() {
        bits_.push_back(0);
        while (bits_.size() % 8) bits_.push_back(1);
        return *this;
    }
    BitWriter& start_code(int code) { return align_with_zeros().put(1, 24).put(code, 8); }
    size_t size() const { return bits_.size(); }
    std::vector<Kvt8u> bytes() const {
        std::vector<Kvt8u> out((bits_.size() + 7) / 8, 0);
        for (size_t i = 0; i < bits_.size(); ++i) out[i / 8] |= Kvt8u(bits_[i] << (7 - i % 8));
        return out;
    }

private:
    std::vector<bool> bits_;
};

struct Decoded {
    int width = 0, height = 0;
    std::vector<std::vector<Kvt8u>> luma, chroma;  // per frame, the visible samples (chroma: Cb)
    std::string error, where;
};

Decoded decode(const std::vector<Kvt8u>& bytes) {
    Decoded d;
    Stream stream(bytes);
    std::unique_ptr<Decoder> dec;
    try {
        dec = std::make_unique<Decoder>(stream);
        while (dec->decode_next()) {
            d.width = dec->width();
            d.height = dec->height();
            const kvtdec::Frame& f = dec->picture();
            std::vector<Kvt8u> y, cb;
            for (int r = 0; r < d.height; ++r)
                y.insert(y.end(), f.plane[0].at(0, r), f.plane[0].at(d.width, r));
            for (int r = 0; r < (d.height + 1) / 2; ++r)
                cb.insert(cb.end(), f.plane[1].at(0, r), f.plane[1].at((d.width + 1) / 2, r));
            d.luma.push_back(y);
            d.chroma.push_back(cb);
        }
    } catch (const DecodeError& e) {
        d.error = e.what();
        if (dec) d.where = dec->where();
    }
    return d;
}

bool all_equal(const std::vector<Kvt8u>& v, Kvt8u value) {
    for (Kvt8u s : v)
        if (s != value) return false;
    return true;
}

// ---- H.263 ---------------------------------------------------------------------------------

// An intra macroblock without coefficients: MCBPC 1 (intra, CBPC 00), CBPY 0011 (none for intra),
// then the INTRADC of each block; INTRADC v reconstructs to the sample value v.
void h263_dc_macroblock(BitWriter& w, int luma, int chroma) {
    w.put("1 0011");
    for (int b = 0; b < 6; ++b) w.put(b < 4 ? luma : chroma, 8);
}

// PSC and TR, then PTYPE of an I-picture in a standard source format, PQUANT 8, no CPM, no PEI.
void h263_picture_header(BitWriter& w, int format, const char* options = "0000") {
    w.align_with_zeros().put(1, 17).put(0, 5).put(0, 8);
    w.put("10 000").put(format, 3).put("0").put(options).put(8, 5).put("0 0");
}

TEST(KvtdecH263, IntraPicturesOfDcBlocksAreFlat) {
    BitWriter w;
    h263_picture_header(w, 2);  // QCIF, 9 GOBs of 11 macroblocks
    for (int i = 0; i < 99; ++i) h263_dc_macroblock(w, 40, 90);
    h263_picture_header(w, 2);
    for (int i = 0; i < 99; ++i) {
        if (i == 33) w.put(1, 17).put(3, 5).put("00").put(8, 5);                     // GOB 3, aligned or not
        if (i == 66) w.align_with_zeros().put(1, 17).put(6, 5).put("00").put(8, 5);  // after GSTUF
        h263_dc_macroblock(w, 200, 20);
    }
    const Decoded d = decode(w.bytes());
    ASSERT_EQ(d.error, "");
    ASSERT_EQ(d.luma.size(), 2u);
    EXPECT_EQ(d.width, 176);
    EXPECT_EQ(d.height, 144);
    EXPECT_TRUE(all_equal(d.luma[0], 40) && all_equal(d.chroma[0], 90));
    EXPECT_TRUE(all_equal(d.luma[1], 200) && all_equal(d.chroma[1], 20));
}

TEST(KvtdecH263, GobNumberOutOfOrderNamesTheMacroblock) {
    BitWriter w;
    h263_picture_header(w, 1);  // sub-QCIF: 8 x 6 macroblocks
    for (int i = 0; i < 48; ++i) {
        if (i == 16) w.put(1, 17).put(3, 5).put("00").put(8, 5);  // GOB 3 where GOB 2 is due
        h263_dc_macroblock(w, 1, 1);
    }
    const Decoded d = decode(w.bytes());
    EXPECT_EQ(d.error, "GOB header number 3 where GOB 2 was due");
    EXPECT_EQ(d.where, "frame 0, macroblock 16 (x 0, y 2)");
}

TEST(KvtdecH263, TruncatedPictureStopsInsideTheMacroblock) {
    BitWriter w;
    h263_picture_header(w, 1);
    for (int i = 0; i < 48; ++i) h263_dc_macroblock(w, 1, 1);
    std::vector<Kvt8u> bytes = w.bytes();
    bytes.resize(bytes.size() / 2);  // 1296 bits: a 50-bit header, then 53 bits per macroblock
    const Decoded d = decode(bytes);
    EXPECT_EQ(d.error, "the coded data ends inside this macroblock");
    EXPECT_EQ(d.where, "frame 0, macroblock 23 (x 7, y 2)");
}

TEST(KvtdecH263, UnsupportedModesAreNamed) {
    struct Case {
        const char* options;  // PTYPE bits 10-13: UMV, SAC, AP, PB
        const char* error;
    } cases[] = {{"0100", "unsupported: H.263 Annex E (syntax-based arithmetic coding)"},
                 {"0001", "unsupported: H.263 Annex G (PB-frames)"},
                 {"1000", "unsupported: H.263 Annex D without PLUSPTYPE"}};
    for (const Case& c : cases) {
        BitWriter w;
        h263_picture_header(w, 2, c.options);
        EXPECT_EQ(decode(w.bytes()).error, c.error) << c.options;
    }
}

// PLUSPTYPE with UFEP 1, a custom picture format and a custom picture clock; one optional mode by
// its OPPTYPE bit (5 UMV, 6 SAC, 7 AP, 8 AIC ... 14 MQ, counted from 1 at the source format).
void h263_plus_header(BitWriter& w, int width, int height, int mode_bit = 0) {
    w.align_with_zeros().put(1, 17).put(0, 5).put(0, 8).put("10 000 111");
    w.put("001");                              // UFEP
    char opptype[] = "110 1 0000000000 1000";  // custom format, custom PCF, no modes, 1, 000
    if (mode_bit) opptype[mode_bit + 1] = '1';
    w.put(opptype);
    w.put("000 0 0 0 00 1");  // MPPTYPE: I-picture, no RPR/RRU, rounding 0
    w.put("0");               // CPM
    w.put("0010").put(width / 4 - 1, 9).put("1").put(height / 4, 9);  // CPFMT, PAR 12:11
    w.put(0x3C, 8).put("00");                                         // CPCFC, ETR
    if (mode_bit == 5) w.put("01");                                   // UUI: unlimited
    if (mode_bit == 10) w.put("00");                                  // SSS
    w.put(8, 5).put("0");                                             // PQUANT, PEI
}

TEST(KvtdecH263, PlusptypeCustomFormat) {
    BitWriter w;
    h263_plus_header(w, 100, 84, 5);  // 7 x 6 macroblocks, Annex D announced
    for (int i = 0; i < 42; ++i) h263_dc_macroblock(w, 77, 55);
    const Decoded d = decode(w.bytes());
    ASSERT_EQ(d.error, "");
    EXPECT_EQ(d.width, 100);
    EXPECT_EQ(d.height, 84);
    EXPECT_TRUE(all_equal(d.luma[0], 77) && all_equal(d.chroma[0], 55));
}

TEST(KvtdecH263, PlusptypeModesWithoutSupportAreNamed) {
    const std::pair<int, const char*> cases[] = {{6, "H.263 Annex E (syntax-based arithmetic coding)"},
                                                 {9, "H.263 Annex J (deblocking filter)"},
                                                 {11, "H.263 Annex N (reference picture selection)"},
                                                 {12, "H.263 Annex R (independent segment decoding)"},
                                                 {13, "H.263 Annex S (alternative inter VLC)"}};
    for (const auto& c : cases) {
        BitWriter w;
        h263_plus_header(w, 64, 48, c.first);
        EXPECT_EQ(decode(w.bytes()).error, std::string("unsupported: ") + c.second) << c.first;
    }
}

TEST(KvtdecH263, SlicesStartAtAnyMacroblock) {
    // Annex K: 16 x 4 macroblocks (64: 7-bit MBA); the picture header carries the first slice's
    // MBA, a slice header may precede any other macroblock, after stuffing or not.
    auto stream = [](int second_mba) {
        BitWriter w;
        h263_plus_header(w, 256, 64, 10);
        w.put("1").put(0, 7).put("1");  // SEPB1, MBA 0, SEPB2
        for (int i = 0; i < 64; ++i) {
            if (i == 13) w.put(1, 17).put("1").put(second_mba, 7).put(8, 5).put("1 00");
            if (i == 40) w.align_with_zeros().put(1, 17).put("1").put(40, 7).put(8, 5).put("1 00");
            h263_dc_macroblock(w, 99, 11);
        }
        return w.bytes();
    };
    const Decoded good = decode(stream(13));
    ASSERT_EQ(good.error, "");
    EXPECT_TRUE(all_equal(good.luma[0], 99) && all_equal(good.chroma[0], 11));
    const Decoded bad = decode(stream(12));
    EXPECT_EQ(bad.error, "slice header for macroblock 12 where 13 was due");
    EXPECT_EQ(bad.where, "frame 0, macroblock 13 (x 13, y 0)");
}

// ---- MPEG-4 --------------------------------------------------------------------------------

// VOS, VO and a simple-profile VOL of the given size, time resolution 25 (5-bit increments).
void mpeg4_headers(BitWriter& w, int width, int height, bool resync, const char* vol_extra = "") {
    w.start_code(0xB0).put(1, 8);
    w.start_code(0xB5).put("0 0001 0");  // no identifier, video, no signal type
    w.start_code(0x00);
    w.start_code(0x20).put("0").put(1, 8).put("0 0001 0 00 1").put(25, 16).put("1 0 1");
    w.put(width, 13).put("1").put(height, 13).put("1");
    w.put("0 1 0 0 0");  // progressive, OBMC off, no sprites, 8 bits, H.263 quantization
    w.put(vol_extra);
    w.put("1")
        .put(resync ? 0 : 1, 1)
        .put("0 0");  // no complexity estimation, resync, no partitions/scalability
    w.mpeg4_stuffing();
}

void mpeg4_vop(BitWriter& w, int type, bool coded = true) {
    w.start_code(0xB6).put(type, 2).put("0 1").put(0, 5).put("1").put(coded, 1);
    if (coded) w.put("000").put(4, 5);  // intra_dc_vlc_thr 0, vop_quant 4 (DC scaler 8)
}

// Intra macroblock of an I-VOP without AC: MCBPC 1, ac_pred 0, CBPY 0011, six DC codes. Only block
// 0 codes a differential (size 2: 11 = +3, 00 = -3); every other DC is predicted. With QP 4 and no
// neighbour the prediction is 128, so the macroblock comes out flat at 128 + dc.
void mpeg4_dc_macroblock(BitWriter& w, int dc) {
    w.put("1 0 0011");
    if (dc == 0)
        w.put("011");
    else
        w.put("10").put(dc > 0 ? "11" : "00");
    w.put("011 011 011 11 11");
}

TEST(KvtdecMpeg4, OddSizeIntraVop) {
    BitWriter w;
    mpeg4_headers(w, 33, 17, false);
    mpeg4_vop(w, 0);
    for (int i = 0; i < 6; ++i) mpeg4_dc_macroblock(w, i == 0 ? 3 : 0);  // 3 x 2 macroblocks
    mpeg4_vop(w, 1, false);  // not coded: the picture is shown again
    const Decoded d = decode(w.bytes());
    ASSERT_EQ(d.error, "");
    ASSERT_EQ(d.luma.size(), 2u);
    EXPECT_EQ(d.width, 33);
    EXPECT_EQ(d.height, 17);
    EXPECT_TRUE(all_equal(d.luma[1], 131) && all_equal(d.chroma[1], 128));
}

// One macroblock per video packet, DC levels alternating between packets: a prediction across a
// packet boundary would mix them. Macroblock stuffing before each macroblock moves the next
// resync marker through all eight stuffing lengths.
std::vector<Kvt8u> mpeg4_packets(int wrong_packet) {
    BitWriter w;
    mpeg4_headers(w, 48, 48, true);
    mpeg4_vop(w, 0);
    for (int i = 0; i < 9; ++i) {
        if (i > 0) w.mpeg4_stuffing().put(1, 17).put(i == wrong_packet ? i + 1 : i, 4).put(4, 5).put("0");
        for (int k = 0; k < i; ++k) w.put("000000001");
        mpeg4_dc_macroblock(w, i % 2 ? -3 : 3);
    }
    return w.bytes();
}

TEST(KvtdecMpeg4, VideoPacketsCutPrediction) {
    const Decoded d = decode(mpeg4_packets(-1));
    ASSERT_EQ(d.error, "");
    for (int i = 0; i < 9; ++i) {
        const int x = 16 * (i % 3), y = 16 * (i / 3);
        for (int r = 0; r < 16; ++r)
            for (int c = 0; c < 16; ++c)
                ASSERT_EQ(d.luma[0][size_t(y + r) * 48 + x + c], i % 2 ? 125 : 131) << "macroblock " << i;
    }
    EXPECT_TRUE(all_equal(d.chroma[0], 128));
}

TEST(KvtdecMpeg4, VideoPacketNumberOutOfOrder) {
    const Decoded d = decode(mpeg4_packets(5));
    EXPECT_EQ(d.error, "video packet starts at macroblock 6 where 5 was due");
    EXPECT_EQ(d.where, "frame 0, macroblock 5 (x 2, y 1)");
}

TEST(KvtdecMpeg4, UnsupportedToolsAndMisplacedVopsAreNamed) {
    BitWriter shape;
    shape.start_code(0x20).put("0").put(1, 8).put("0 0001 0 01");
    EXPECT_EQ(decode(shape.bytes()).error, "unsupported: non-rectangular video object shape");
    BitWriter b_vop;
    mpeg4_headers(b_vop, 16, 16, false);
    mpeg4_vop(b_vop, 2);
    EXPECT_EQ(decode(b_vop.bytes()).error, "B-VOP in a low-delay video object layer");
    BitWriter none;
    none.put(0x12345678, 32);
    EXPECT_EQ(decode(none.bytes()).error,
              "no H.263 picture start code and no MPEG-4 start code in the input");
}

// ---- Snapshots -----------------------------------------------------------------------------

TEST(KvtdecSnapshot, PpmHoldsBt601Rgb) {
    kvtdec::Frame f;
    f.allocate(1, 1);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) *f.plane[0].at(x, y) = Kvt8u(16 + 14 * x);
    for (int p = 1; p < 3; ++p)
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) *f.plane[p].at(x, y) = Kvt8u(p == 1 ? 128 + 10 * x : 200 - 16 * y);
    const std::string path = ::testing::TempDir() + "kvtdec_snapshot.ppm";
    ASSERT_EQ(kvtdec::write_snapshot(path, f, 5, 3), "");
    std::FILE* in = std::fopen(path.c_str(), "rb");
    ASSERT_NE(in, nullptr);
    char head[16] = {};
    ASSERT_EQ(std::fread(head, 1, 11, in), 11u);
    EXPECT_STREQ(head, "P6\n5 3\n255\n");
    Kvt8u rgb[45];
    ASSERT_EQ(std::fread(rgb, 1, sizeof rgb, in), sizeof rgb);
    std::fclose(in);
    // R = 1.164 (Y - 16) + 1.596 (Cr - 128), G = ... - 0.391 (Cb - 128) - 0.813 (Cr - 128),
    // B = ... + 2.018 (Cb - 128), within one step of the fixed-point conversion.
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x) {
            const double l = 1.164 * (14 * x), u = 10 * (x / 2), v = 72 - 16 * (y / 2);
            const double expect[3] = {l + 1.596 * v, l - 0.391 * u - 0.813 * v, l + 2.018 * u};
            for (int c = 0; c < 3; ++c) {
                const double e = expect[c] < 0 ? 0 : expect[c] > 255 ? 255 : expect[c];
                EXPECT_NEAR(rgb[(y * 5 + x) * 3 + c], e, 1.0) << x << "," << y << " channel " << c;
            }
        }
    EXPECT_EQ(kvtdec::write_snapshot(::testing::TempDir() + "kvtdec_snapshot.bmp", f, 5, 3),
              "snapshot name must end in .png or .ppm");
}

}  // namespace
