// MPEG-4 coefficient decoding to quantized coefficients: random blocks written with the code tables
// in every escape form (and third-form escapes at the level limits), read back at every bit offset
// with all three scans; the rejected codes and what a rejection leaves behind; the exported tables
// against the code tables; the argument checks in order.
#include <algorithm>
#include <array>

#include "coef_codes.h"
#include "kvtvc.h"

using namespace kvt::test;

namespace {

using Block = std::array<int16_t, 64>;

constexpr int kScanOfDir[3] = {0, 1, 2};  // the scan argument is the prediction direction
const char* const kScanName[3] = {"zigzag", "alternate_vertical", "alternate_horizontal"};

const TcoefCodes& intra_codes() {
    static const TcoefCodes t("mpeg4_tcoef_intra.tsv");
    return t;
}
const TcoefCodes& inter_codes() {
    static const TcoefCodes t("mpeg4_tcoef_inter.tsv");
    return t;
}

// Writes each event in a random form it allows (the encoder's first choice half the time).
std::string write_events(Rng& rng, const TcoefCodes& t, const std::vector<CoefEvent>& events) {
    std::string bits;
    for (const CoefEvent& e : events) {
        const std::vector<Form> forms = t.mpeg4_forms(e);
        bits += t.write(e, rng.coin() ? forms[0] : forms[size_t(rng.uniform(0, int(forms.size()) - 1))]);
    }
    return bits;
}

enum Kind { kInter, kIntraDc, kIntraAc };

// Runs one decoder on `bits` at `offset`; returns the status, the block and the bits consumed.
KvtStatus decode(Kind kind, Rng& rng, const std::string& bits, int offset, int dir, int chroma, Block& out,
                 long& moved) {
    Stream s(rng, bits, offset);
    const long start = s.pos();
    out.fill(77);
    KvtStatus st = kvtStsOk;
    if (kind == kInter) st = kvtiDecodeVLCZigzag_Inter_MPEG4_1u16s(&s.p, &s.offset, out.data());
    if (kind == kIntraDc)
        st = kvtiDecodeVLCZigzag_IntraDCVLC_MPEG4_1u16s(&s.p, &s.offset, out.data(), dir, chroma);
    if (kind == kIntraAc) st = kvtiDecodeVLCZigzag_IntraACVLC_MPEG4_1u16s(&s.p, &s.offset, out.data(), dir);
    moved = s.pos() - start;
    return st;
}

}  // namespace

// Every form appears: the test counts the forms it wrote and requires each of them. The DC sizes
// reach 12 in both tables (with the marker after more than 8 bits).
TEST(Mpeg4Coef, RandomBlocksInEveryEscapeFormRoundTrip) {
    std::map<Form, int> written;
    for (int trial = 0; trial < 3000; ++trial) {
        Rng rng(test_seed() + uint64_t(trial));
        const Kind kind = Kind(trial % 3);
        const int dir = rng.uniform(0, 2), chroma = rng.coin(), first = kind == kIntraDc ? 1 : 0;
        const TcoefCodes& t = kind == kInter ? inter_codes() : intra_codes();
        std::vector<CoefEvent> events = random_events(rng, first, 2047);
        // The DC: half the time at a limit of its size class (size 0..12), else anywhere.
        const int size = rng.uniform(0, 12), lowest = size ? 1 << (size - 1) : 0;
        const int limit = rng.coin() ? (1 << size) - 1 : lowest;
        const int dc = rng.coin() ? (rng.coin() ? -limit : limit) : rng.uniform(-4095, 4095);
        const std::string dc_bits = write_intra_dc(dc, chroma);
        if (kind == kIntraDc) {  // the DC alone
            Stream s(rng, dc_bits, trial % 8);
            const long start = s.pos();
            Kvt16s got = 77;
            ASSERT_EQ(kvtiDecodeVLC_IntraDCVLC_MPEG4_1u16s(&s.p, &s.offset, &got, chroma), kvtStsOk) << dc;
            ASSERT_EQ(got, dc);
            ASSERT_EQ(s.pos() - start, long(dc_bits.size())) << dc;
        }
        std::string bits = kind == kIntraDc ? dc_bits : "";
        for (const CoefEvent& e : events) ++written[t.mpeg4_forms(e)[0]];
        bits += write_events(rng, t, events);
        Block want = place(events, first, scan_order(kScanName[kind == kInter ? 0 : kScanOfDir[dir]]));
        if (kind == kIntraDc) want[0] = int16_t(dc);
        Block got;
        long moved;
        const int offset = trial % 8;
        ASSERT_EQ(decode(kind, rng, bits, offset, dir, chroma, got, moved), kvtStsOk) << "trial " << trial;
        ASSERT_EQ(got, want) << "trial " << trial;
        ASSERT_EQ(moved, long(bits.size())) << "trial " << trial;
    }
    for (Form f : {kPlain, kLevelEscape, kRunEscape, kFixedEscape}) EXPECT_GT(written[f], 20) << "form " << f;
}

// Third-form escapes at the limits of the 12-bit level, every run, both values of last; a run that
// carries the index to 64 stores nothing; bad codes, escapes, DC size codes and markers.
TEST(Mpeg4Coef, FixedEscapesAtTheLimitsAndRejectedCodes) {
    Rng rng(test_seed());
    const TcoefCodes& t = inter_codes();
    for (int level : {2047, -2047, 1, -1, 2046})
        for (int run = 0; run < 64; ++run) {
            const std::vector<CoefEvent> events{{1, run, level}};
            const std::string bits = t.write(events[0], kFixedEscape);
            Block got;
            long moved;
            ASSERT_EQ(decode(kInter, rng, bits, run % 8, 0, 0, got, moved), kvtStsOk);
            EXPECT_EQ(got, place(events, 0, scan_order("zigzag")));
            EXPECT_EQ(moved, 30);
        }
    const std::string esc3 = t.escape() + "11";
    const std::string plain_one = t.write({0, 0, 1}, kPlain);
    struct Case {
        std::string bits;
        Kind kind;
        int status;
        long moved;
        int chroma = 0;
    } cases[] = {
        {"01110", kInter, 0, 5},                                                // (1, 0, +1): one coefficient
        {esc3 + "1" + "000000" + "1" + "000000000000" + "1", kInter, -100, 0},  // level 0
        {esc3 + "1" + "000000" + "1" + "100000000000" + "1", kInter, -100, 0},  // level -2048
        {esc3 + "1" + "000000" + "0" + "000000000001" + "1", kInter, -100, 0},  // first marker
        {esc3 + "1" + "000000" + "1" + "000000000001" + "0", kInter, -100, 0},  // second marker
        {plain_one + esc3 + "1" + "111111" + "1" + "000000000001" + "1", kInter, -100, 0},  // index 64
        {esc3 + "1" + "111111" + "1" + "000000000001" + "1", kInter, 0, 30},                // index 63
        {"000000000" + std::string(8, '1'), kInter, -100, 0},                               // no code
        {t.escape() + "0" + t.escape() + "1", kInter, -100, 0},  // escape in escape
        {t.escape() + "10" + "000000000", kInter, -100, 0},
        {write_intra_dc(3, false) + "000000000", kIntraDc, -100,
         long(write_intra_dc(3, false).size())},                             // AC error: after the DC
        {"00000000000" + std::string(12, '1'), kIntraDc, -100, 0},           // luma size code too long
        {"0000000001" + std::string(11, '1') + "0", kIntraDc, -99, 0},       // size 11 without marker
        {std::string(12, '0') + "1", kIntraDc, -100, 0, 1},                  // chrominance code too long
        {"000000000001" + std::string(12, '1') + "0", kIntraDc, -99, 0, 1},  // size 12 without marker
    };
    for (const Case& c : cases)
        for (int offset = 0; offset < 8; ++offset) {
            SCOPED_TRACE(c.bits + " at offset " + std::to_string(offset));
            Block got;
            long moved;
            EXPECT_EQ(decode(c.kind, rng, c.bits, offset, 0, c.chroma, got, moved), c.status);
            EXPECT_EQ(moved, c.moved);
            if (c.status) {
                EXPECT_EQ(got, Block{}) << "a rejected block leaves zeros";
            }
        }
}

// The exported scan and escape-limit tables against the code tables (the direction-named scans are
// crossed on purpose), and the limits against the TCOEF tables they are derived from.
TEST(Mpeg4Coef, ExportedTables) {
    const auto equal = [](const Kvt8u* table, const std::vector<int>& order) {
        return std::equal(order.begin(), order.end(), table);
    };
    EXPECT_TRUE(equal(ZigzagC, scan_order("zigzag")));
    EXPECT_TRUE(equal(ZigzagH, scan_order("alternate_horizontal")));
    EXPECT_TRUE(equal(ZigzagV, scan_order("alternate_vertical")));
    EXPECT_TRUE(equal(_kvtClassicalZigzag, scan_order("zigzag")));
    EXPECT_TRUE(equal(_kvtVerticalZigzag, scan_order("alternate_horizontal")));
    EXPECT_TRUE(equal(_kvtHorizontalZigzag, scan_order("alternate_vertical")));
    for (int last = 0; last < 2; ++last)
        for (int i = 0; i < 64; ++i) {
            EXPECT_EQ(_kvtLMAXintra[last * 64 + i], intra_codes().lmax(last, i));
            EXPECT_EQ(_kvtLevelMAXinter[last * 64 + i], inter_codes().lmax(last, i));
            EXPECT_EQ(_kvtRunMAXintra[last * 64 + i], i ? intra_codes().rmax(last, i) + 1 : 0);
            EXPECT_EQ(_kvtRMAXinter[last * 64 + i], i ? inter_codes().rmax(last, i) + 1 : 0);
        }
    for (const TsvRow& r : read_table("mpeg4_lmax.tsv"))
        EXPECT_EQ((r["table"] == "intra" ? intra_codes() : inter_codes()).lmax(r.num("last"), r.num("run")),
                  r.num("lmax"));
}

// Null pointers, then the offset, then the byte pointer, then the direction; nothing written.
TEST(Mpeg4Coef, ArgumentChecksInOrder) {
    Kvt8u data[16] = {0x5A};
    Kvt8u *p = data, *null_p = nullptr;
    int off = 0, bad_off = 8;
    Block b;
    b.fill(7);
    Kvt16s dc = 7;
    EXPECT_EQ(kvtiDecodeVLC_IntraDCVLC_MPEG4_1u16s(nullptr, &off, &dc, 0), -8);
    EXPECT_EQ(kvtiDecodeVLC_IntraDCVLC_MPEG4_1u16s(&p, nullptr, &dc, 0), -8);
    EXPECT_EQ(kvtiDecodeVLC_IntraDCVLC_MPEG4_1u16s(&p, &off, nullptr, 0), -8);
    EXPECT_EQ(kvtiDecodeVLC_IntraDCVLC_MPEG4_1u16s(&null_p, &bad_off, &dc, 0), -8);
    EXPECT_EQ(kvtiDecodeVLC_IntraDCVLC_MPEG4_1u16s(&p, &bad_off, &dc, 0), -105);
    EXPECT_EQ(kvtiDecodeVLCZigzag_Inter_MPEG4_1u16s(&p, &off, nullptr), -8);
    EXPECT_EQ(kvtiDecodeVLCZigzag_Inter_MPEG4_1u16s(&null_p, &bad_off, b.data()), -105);  // offset first
    EXPECT_EQ(kvtiDecodeVLCZigzag_Inter_MPEG4_1u16s(&null_p, &off, b.data()), -8);
    EXPECT_EQ(kvtiDecodeVLCZigzag_IntraACVLC_MPEG4_1u16s(&null_p, &off, b.data(), 3), -8);
    EXPECT_EQ(kvtiDecodeVLCZigzag_IntraACVLC_MPEG4_1u16s(&p, &off, b.data(), 3), -93);
    EXPECT_EQ(kvtiDecodeVLCZigzag_IntraDCVLC_MPEG4_1u16s(&p, &off, b.data(), -1, 0), -93);
    EXPECT_EQ(kvtiDecodeVLCZigzag_IntraDCVLC_MPEG4_1u16s(&p, &bad_off, b.data(), -1, 0), -105);
    EXPECT_EQ(dc, 7);
    EXPECT_EQ(b[0], 7);
    EXPECT_EQ(p, data);
    EXPECT_EQ(off, 0);
}
