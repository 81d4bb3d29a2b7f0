// Values the decoder predicts from neighbours, on hand-built neighbourhoods where H.264 names the
// answer: motion vector predictors (8.4.1.3), the P_Skip vector (8.4.1.1), Intra4x4PredMode
// (8.3.1.1), nC of coeff_token (9.2.1) and the deblocking boundary strength (8.7.2.1).
#include <gtest/gtest.h>

#include <vector>

#include "deblock.h"
#include "mvpred.h"
#include "neighbours.h"

namespace {

using enc264::MbInfo;
using enc264::MbType;
using enc264::Mv;

Mv mv(int x, int y) { return Mv{static_cast<int16_t>(x), static_cast<int16_t>(y)}; }

MbInfo inter_mb(Mv v) {
    MbInfo m;
    m.type = MbType::P16x16;
    for (Mv& b : m.mv) b = v;
    return m;
}
MbInfo intra_mb() {
    MbInfo m;
    m.type = MbType::I16x16;
    return m;
}

// A picture of 3 x 2 macroblocks; the current one is (1, 1) unless a test says otherwise.
struct Picture3x2 {
    std::vector<MbInfo> mbs = std::vector<MbInfo>(6, intra_mb());
    MbInfo& at(int x, int y) { return mbs[y * 3 + x]; }
    MbInfo cur;
    enc264::MvPredictor pred{mbs, 3};
    void begin(int x, int y) { pred.begin(x, y, &cur); }
};

TEST(Kvtenc264Prediction, MedianOfLeftAboveAndAboveRight) {
    Picture3x2 p;
    p.at(0, 1) = inter_mb(mv(4, -8));  // A
    p.at(1, 0) = inter_mb(mv(12, 0));  // B
    p.at(2, 0) = inter_mb(mv(-3, 5));  // C
    p.begin(1, 1);
    EXPECT_EQ(p.pred.predict(0, 0, 4, MbType::P16x16, 0), mv(4, 0));
    EXPECT_EQ(p.pred.skip(), mv(4, 0));
}

TEST(Kvtenc264Prediction, OneMatchingReferenceWins) {
    Picture3x2 p;
    p.at(1, 0) = inter_mb(mv(12, 7));  // B is the only inter neighbour; A and C are intra
    p.begin(1, 1);
    EXPECT_EQ(p.pred.predict(0, 0, 4, MbType::P16x16, 0), mv(12, 7));
}

TEST(Kvtenc264Prediction, AboveRightMissingFallsBackToAboveLeft) {
    Picture3x2 p;
    p.at(1, 0) = inter_mb(mv(8, 8));   // B
    p.at(0, 0) = inter_mb(mv(-8, 0));  // D
    p.at(0, 1) = inter_mb(mv(0, 4));   // A
    p.begin(2, 1);                     // no macroblock above-right of the right column
    p.at(1, 1) = inter_mb(mv(0, 4));   // A of (2, 1)
    p.at(2, 0) = inter_mb(mv(8, 8));   // B of (2, 1)
    p.at(1, 0) = inter_mb(mv(-8, 0));  // D of (2, 1)
    EXPECT_EQ(p.pred.predict(0, 0, 4, MbType::P16x16, 0), mv(0, 4));  // median(0, 8, -8), median(4, 8, 0)
}

TEST(Kvtenc264Prediction, TopRowTakesTheLeftVector) {
    Picture3x2 p;
    p.at(0, 0) = inter_mb(mv(6, -2));
    p.begin(1, 0);  // B and C outside the picture: both take A
    EXPECT_EQ(p.pred.predict(0, 0, 4, MbType::P16x16, 0), mv(6, -2));
    EXPECT_EQ(p.pred.skip(), Mv{}) << "P_Skip is zero without an upper neighbour";
}

TEST(Kvtenc264Prediction, SkipIsZeroNextToAStillNeighbour) {
    Picture3x2 p;
    p.at(0, 1) = inter_mb(mv(0, 0));
    p.at(1, 0) = inter_mb(mv(9, 9));
    p.at(2, 0) = inter_mb(mv(9, 9));
    p.begin(1, 1);
    EXPECT_EQ(p.pred.skip(), Mv{});
    EXPECT_EQ(p.pred.predict(0, 0, 4, MbType::P16x16, 0), mv(9, 9));
    p.at(0, 1) = intra_mb();  // an intra left neighbour is available but has no vector
    EXPECT_EQ(p.pred.skip(), mv(9, 9));
}

TEST(Kvtenc264Prediction, DirectionalRulesOf16x8And8x16) {
    Picture3x2 p;
    p.at(0, 1) = inter_mb(mv(1, 1));  // A
    p.at(1, 0) = inter_mb(mv(2, 2));  // B
    p.at(2, 0) = inter_mb(mv(3, 3));  // C
    p.begin(1, 1);
    EXPECT_EQ(p.pred.predict(0, 0, 4, MbType::P16x8, 0), mv(2, 2)) << "upper 16x8 from B";
    p.cur = inter_mb(mv(50, 50));
    p.pred.mark(0, 0, 4, 2);
    EXPECT_EQ(p.pred.predict(0, 2, 4, MbType::P16x8, 1), mv(1, 1)) << "lower 16x8 from A";
    p.begin(1, 1);
    EXPECT_EQ(p.pred.predict(0, 0, 2, MbType::P8x16, 0), mv(1, 1)) << "left 8x16 from A";
    p.pred.mark(0, 0, 2, 4);
    EXPECT_EQ(p.pred.predict(2, 0, 2, MbType::P8x16, 1), mv(3, 3)) << "right 8x16 from C";
    // Without a matching directional neighbour the median applies.
    p.at(2, 0) = intra_mb();
    p.begin(1, 1);
    p.pred.mark(0, 0, 2, 4);
    EXPECT_EQ(p.pred.predict(2, 0, 2, MbType::P8x16, 1), mv(2, 2))
        << "C intra (not replaced by D): median of A, B and a zero C";
}

TEST(Kvtenc264Prediction, LastEightByEightUsesItsUpperLeftSibling) {
    Picture3x2 p;
    p.at(0, 1) = inter_mb(mv(0, 0));
    p.at(1, 0) = inter_mb(mv(0, 0));
    p.begin(1, 1);
    p.cur.type = MbType::P8x8;
    const Mv sub[3] = {mv(40, 0), mv(-40, 4), mv(8, 40)};
    const int xy[3][2] = {{0, 0}, {2, 0}, {0, 2}};
    for (int k = 0; k < 3; ++k) {
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 2; ++x) p.cur.mv[xy[k][0] + x + 4 * (xy[k][1] + y)] = sub[k];
        p.pred.mark(xy[k][0], xy[k][1], 2, 2);
    }
    // A = sub-block 2, B = sub-block 1, C (right of the macroblock) missing: D = sub-block 0.
    EXPECT_EQ(p.pred.predict(2, 2, 2, MbType::P8x8, 3), mv(8, 4));
    // Sub-block 2: A from the left macroblock, B = sub-block 0, C = sub-block 1 (already coded).
    p.begin(1, 1);
    p.pred.mark(0, 0, 4, 2);
    EXPECT_EQ(p.pred.predict(0, 2, 2, MbType::P8x8, 2), mv(0, 0));  // median(0, 40, -40), median(0, 0, 4)
}

TEST(Kvtenc264Prediction, Intra4x4ModeIsTheSmallerNeighbourOrDc) {
    MbInfo left, above, cur;
    left.type = above.type = cur.type = MbType::I4x4;
    for (int r = 0; r < 16; ++r) left.i4_mode[r] = 7, above.i4_mode[r] = 5, cur.i4_mode[r] = 8;
    left.i4_mode[3] = 4;    // right column, top row of the left macroblock
    above.i4_mode[12] = 6;  // bottom row, left column of the macroblock above
    EXPECT_EQ(enc264::Neighbours(&left, &above, &cur).predicted_i4_mode(0), 4);
    EXPECT_EQ(enc264::Neighbours(&left, &above, &cur).predicted_i4_mode(5), 8) << "inside: min(8, 8)";
    EXPECT_EQ(enc264::Neighbours(nullptr, &above, &cur).predicted_i4_mode(0), 2) << "left missing";
    EXPECT_EQ(enc264::Neighbours(&left, nullptr, &cur).predicted_i4_mode(1), 2) << "above missing";
    above.type = MbType::P16x16;  // not Intra4x4: counts as DC
    EXPECT_EQ(enc264::Neighbours(&left, &above, &cur).predicted_i4_mode(0), 2);
    EXPECT_EQ(enc264::Neighbours(&left, &above, &cur).predicted_i4_mode(4), 7) << "min(left 7, inside 8)";
}

TEST(Kvtenc264Prediction, CoeffTokenTableFromNeighbourCounts) {
    MbInfo left, above, cur;
    left.nnz[3] = 5, above.nnz[12] = 2, cur.nnz[0] = 7;
    left.nnz_chroma[1][1] = 3, above.nnz_chroma[1][2] = 4;
    EXPECT_EQ(enc264::Neighbours(&left, &above, &cur).luma_nc(0), 4) << "(5 + 2 + 1) >> 1";
    EXPECT_EQ(enc264::Neighbours(nullptr, &above, &cur).luma_nc(0), 2);
    EXPECT_EQ(enc264::Neighbours(&left, nullptr, &cur).luma_nc(0), 5);
    EXPECT_EQ(enc264::Neighbours(nullptr, nullptr, &cur).luma_nc(0), 0);
    EXPECT_EQ(enc264::Neighbours(nullptr, nullptr, &cur).luma_nc(1), 7) << "left inside the macroblock";
    EXPECT_EQ(enc264::Neighbours(&left, &above, &cur).chroma_nc(1, 0), 4) << "Cr: (3 + 4 + 1) >> 1";
    EXPECT_EQ(enc264::Neighbours(&left, &above, &cur).chroma_nc(0, 0), 0) << "Cb counts are separate";
}

TEST(Kvtenc264Prediction, BoundaryStrength) {
    const MbInfo intra = intra_mb();
    MbInfo a = inter_mb(mv(0, 0)), b = inter_mb(mv(3, -3));
    EXPECT_EQ(enc264::boundary_strength(intra, 3, a, 0, true), 4);
    EXPECT_EQ(enc264::boundary_strength(a, 3, intra, 0, false), 3);
    EXPECT_EQ(enc264::boundary_strength(a, 3, b, 0, true), 0) << "vectors less than a sample apart";
    b.mv[0] = mv(4, 0);
    EXPECT_EQ(enc264::boundary_strength(a, 3, b, 0, true), 1);
    b.mv[0] = mv(0, -4);
    EXPECT_EQ(enc264::boundary_strength(a, 3, b, 0, false), 1);
    a.nnz[3] = 1;
    EXPECT_EQ(enc264::boundary_strength(a, 3, b, 0, true), 2);
    EXPECT_EQ(enc264::boundary_strength(b, 1, a, 3, false), 2) << "coefficients on the q side";
}

}  // namespace
