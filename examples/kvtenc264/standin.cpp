// TEMPORARY: plain versions of the library's H.264 block functions, used only until the H.264
// families land in kvtvc.h (CMakeLists.txt compiles this file only while they are missing).
#include <cstdlib>
#include <cstring>

#include "lib264.h"

namespace {

inline int clip255(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }
inline int clip3(int lo, int hi, int v) { return v < lo ? lo : v > hi ? hi : v; }
const int kV[6][3] = {{10, 16, 13}, {11, 18, 14}, {13, 20, 16}, {14, 23, 18}, {16, 25, 20}, {18, 29, 23}};
const int kMF[6][3] = {{13107, 5243, 8066}, {11916, 4660, 7490}, {10082, 4194, 6554},
                       {9362, 3647, 5825},  {8192, 3355, 5243}, {7282, 2893, 4559}};
const int kClass[16] = {0, 2, 0, 2, 2, 1, 2, 1, 0, 2, 0, 2, 2, 1, 2, 1};

}  // namespace

#ifdef KVTENC264_STANDIN_A
extern "C" {

KvtStatus kvtiPredictIntra_4x4_H264_8u_C1IR(Kvt8u* p, Kvt32s s, Kvt32s mode, Kvt32u av) {
    int U[8], L[4], M = 128;
    const bool up = av & 1, left = av & 2, corner = av & 32, ur = av & 64;
    for (int i = 0; i < 4; ++i) U[i] = up ? p[-s + i] : 128;
    for (int i = 4; i < 8; ++i) U[i] = (up && ur) ? p[-s + i] : U[3];
    for (int i = 0; i < 4; ++i) L[i] = left ? p[i * s - 1] : 128;
    if (corner) M = p[-s - 1];
    int pr[4][4];  // [y][x]
    auto a2 = [](int a, int b) { return (a + b + 1) >> 1; };
    auto a3 = [](int a, int b, int c) { return (a + 2 * b + c + 2) >> 2; };
    auto Ux = [&](int i) { return i < 0 ? M : U[i]; };
    auto Lx = [&](int i) { return i < 0 ? M : L[i]; };
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) {
            int v = 0;
            switch (mode) {
                case 0: v = U[x]; break;
                case 1: v = L[y]; break;
                case 2:
                    if (up && left) v = (U[0] + U[1] + U[2] + U[3] + L[0] + L[1] + L[2] + L[3] + 4) >> 3;
                    else if (up) v = (U[0] + U[1] + U[2] + U[3] + 2) >> 2;
                    else if (left) v = (L[0] + L[1] + L[2] + L[3] + 2) >> 2;
                    else v = 128;
                    break;
                case 3: v = (x == 3 && y == 3) ? (U[6] + 3 * U[7] + 2) >> 2 : a3(U[x + y], U[x + y + 1], U[x + y + 2]); break;
                case 4:
                    if (x > y) v = a3(Ux(x - y - 2), Ux(x - y - 1), Ux(x - y));
                    else if (x < y) v = a3(Lx(y - x - 2), Lx(y - x - 1), Lx(y - x));
                    else v = a3(U[0], M, L[0]);
                    break;
                case 5: {
                    int z = 2 * x - y;
                    if (z >= 0 && !(z & 1)) v = a2(Ux(x - (y >> 1) - 1), Ux(x - (y >> 1)));
                    else if (z >= 0) v = a3(Ux(x - (y >> 1) - 2), Ux(x - (y >> 1) - 1), Ux(x - (y >> 1)));
                    else if (z == -1) v = a3(L[0], M, U[0]);
                    else v = a3(Lx(y - 1), Lx(y - 2), Lx(y - 3));
                    break;
                }
                case 6: {
                    int z = 2 * y - x;
                    if (z >= 0 && !(z & 1)) v = a2(Lx(y - (x >> 1) - 1), Lx(y - (x >> 1)));
                    else if (z >= 0) v = a3(Lx(y - (x >> 1) - 2), Lx(y - (x >> 1) - 1), Lx(y - (x >> 1)));
                    else if (z == -1) v = a3(L[0], M, U[0]);
                    else v = a3(Ux(x - 1), Ux(x - 2), Ux(x - 3));
                    break;
                }
                case 7:
                    if (y == 0 || y == 2) v = a2(U[x + (y >> 1)], U[x + (y >> 1) + 1]);
                    else v = a3(U[x + (y >> 1)], U[x + (y >> 1) + 1], U[x + (y >> 1) + 2]);
                    break;
                case 8: {
                    int z = x + 2 * y;
                    if (z > 5) v = L[3];
                    else if (z == 5) v = (L[2] + 3 * L[3] + 2) >> 2;
                    else if (!(z & 1)) v = a2(L[y + (x >> 1)], L[y + (x >> 1) + 1]);
                    else v = a3(L[y + (x >> 1)], L[y + (x >> 1) + 1], L[y + (x >> 1) + 2]);
                    break;
                }
                default: return -11;
            }
            pr[y][x] = v;
        }
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) p[y * s + x] = (Kvt8u)pr[y][x];
    return 0;
}

static KvtStatus predict_nxn(Kvt8u* p, Kvt32s s, Kvt32s mode, Kvt32u av, int n) {
    const bool up = av & 1, left = av & 2, corner = av & 32;
    const bool chroma = n == 8;
    const int vert = chroma ? 2 : 0, dc = chroma ? 0 : 2;
    if ((mode == vert && !up) || (mode == 1 && !left) || (mode == 3 && !(up && left && corner))) return -117;
    int out[16][16];
    if (mode == vert || mode == 1) {
        for (int y = 0; y < n; ++y)
            for (int x = 0; x < n; ++x) out[y][x] = mode == 1 ? p[y * s - 1] : p[-s + x];
    } else if (mode == dc) {
        for (int by = 0; by < n; by += (chroma ? 4 : 16))
            for (int bx = 0; bx < n; bx += (chroma ? 4 : 16)) {
                int su = 0, sl = 0, m = chroma ? 4 : 16, v;
                for (int i = 0; i < m; ++i) su += up ? p[-s + bx + i] : 0;
                for (int i = 0; i < m; ++i) sl += left ? p[(by + i) * s - 1] : 0;
                int sh = chroma ? 2 : 4;
                bool useU = up, useL = left;
                if (chroma && bx && !by && up) useL = false;  // top-right: upper only
                if (chroma && by && !bx && left) useU = false;  // bottom-left: left only
                if (useU && useL) v = (su + sl + (1 << sh)) >> (sh + 1);
                else if (useU) v = (su + (1 << (sh - 1))) >> sh;
                else if (useL) v = (sl + (1 << (sh - 1))) >> sh;
                else v = 128;
                for (int y = 0; y < m; ++y)
                    for (int x = 0; x < m; ++x) out[by + y][bx + x] = v;
            }
    } else if (mode == 3) {
        int h = n / 2, H = 0, V = 0;
        for (int i = 1; i <= h; ++i) {
            H += i * (p[-s + h - 1 + i] - p[-s + h - 1 - i]);
            V += i * (p[(h - 1 + i) * s - 1] - p[(h - 1 - i) * s - 1]);
        }
        int b = chroma ? (17 * H + 16) >> 5 : (5 * H + 32) >> 6;
        int c = chroma ? (17 * V + 16) >> 5 : (5 * V + 32) >> 6;
        int a = 16 * (p[(n - 1) * s - 1] + p[-s + n - 1]);
        for (int y = 0; y < n; ++y)
            for (int x = 0; x < n; ++x) out[y][x] = clip255((a + b * (x - (h - 1)) + c * (y - (h - 1)) + 16) >> 5);
    } else {
        return -11;
    }
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) p[y * s + x] = (Kvt8u)out[y][x];
    return 0;
}

KvtStatus kvtiPredictIntra_16x16_H264_8u_C1IR(Kvt8u* p, Kvt32s s, Kvt32s mode, Kvt32u av) {
    return predict_nxn(p, s, mode, av, 16);
}
KvtStatus kvtiPredictIntraChroma8x8_H264_8u_C1IR(Kvt8u* p, Kvt32s s, Kvt32s mode, Kvt32u av) {
    return predict_nxn(p, s, mode, av, 8);
}

KvtStatus kvtiTransformDequantLumaDC_H264_16s_C1I(Kvt16s* c, Kvt32s qp) {
    int t[16], f[16];
    for (int x = 0; x < 4; ++x) {  // columns
        int a = c[x], b = c[4 + x], d = c[8 + x], e = c[12 + x];
        t[x] = a + b + d + e; t[4 + x] = a + b - d - e; t[8 + x] = a - b - d + e; t[12 + x] = a - b + d - e;
    }
    for (int y = 0; y < 4; ++y) {
        int a = t[4 * y], b = t[4 * y + 1], d = t[4 * y + 2], e = t[4 * y + 3];
        f[4 * y] = a + b + d + e; f[4 * y + 1] = a + b - d - e; f[4 * y + 2] = a - b - d + e; f[4 * y + 3] = a - b + d - e;
    }
    int T = qp < 12 ? kV[qp % 6][0] : kV[qp % 6][0] << (qp / 6 - 2);
    for (int i = 0; i < 16; ++i)
        c[i] = (Kvt16s)(qp < 6 ? (f[i] * T + 2) >> 2 : qp < 12 ? (f[i] * T + 1) >> 1 : f[i] * T);
    return 0;
}

KvtStatus kvtiTransformDequantChromaDC_H264_16s_C1I(Kvt16s* c, Kvt32s qp) {
    int f[4] = {c[0] + c[1] + c[2] + c[3], c[0] - c[1] + c[2] - c[3], c[0] + c[1] - c[2] - c[3],
                c[0] - c[1] - c[2] + c[3]};
    int m = kV[qp % 6][0] << (qp / 6);
    for (int i = 0; i < 4; ++i) c[i] = (Kvt16s)((f[i] * m) >> 1);
    return 0;
}

KvtStatus kvtiDequantTransformResidualAndAdd_H264_16s_C1I(const Kvt8u* pred, Kvt16s* c, const Kvt16s* pDC,
                                                          Kvt8u* dst, Kvt32s ps, Kvt32s ds, Kvt32s qp,
                                                          Kvt32s ac) {
    int q = qp / 6, r = qp % 6;
    int d[16];
    d[0] = pDC ? *pDC : (Kvt16s)(c[0] * (kV[r][0] << q));
    if (!ac) {
        int v = clip3(-256, 256, (d[0] + 32) >> 6);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 4; ++x) dst[y * ds + x] = (Kvt8u)clip255(pred[y * ps + x] + v);
        return 0;
    }
    for (int i = 1; i < 16; ++i) d[i] = c[i] * (kV[r][kClass[i]] << q);
    int t[16];
    for (int y = 0; y < 4; ++y) {
        int* a = d + 4 * y;
        int e = a[0] + a[2], f = a[0] - a[2], g = (a[1] >> 1) - a[3], h = a[1] + (a[3] >> 1);
        t[4 * y] = e + h; t[4 * y + 1] = f + g; t[4 * y + 2] = f - g; t[4 * y + 3] = e - h;
    }
    for (int x = 0; x < 4; ++x) {
        int a0 = t[x], a1 = t[4 + x], a2 = t[8 + x], a3 = t[12 + x];
        int e = a0 + a2, f = a0 - a2, g = (a1 >> 1) - a3, h = a1 + (a3 >> 1);
        int o[4] = {e + h, f + g, f - g, e - h};
        for (int y = 0; y < 4; ++y) dst[y * ds + x] = (Kvt8u)clip255(pred[y * ps + x] + ((o[y] + 32) >> 6));
    }
    return 0;
}

static void fwd4x4(const Kvt16s* in, int* out) {
    int t[16];
    for (int y = 0; y < 4; ++y) {
        const Kvt16s* p = in + 4 * y;
        int s = p[0] + p[3], tt = p[1] + p[2], u = p[0] - p[3], v = p[1] - p[2];
        t[4 * y] = s + tt; t[4 * y + 1] = 2 * u + v; t[4 * y + 2] = s - tt; t[4 * y + 3] = u - 2 * v;
    }
    for (int x = 0; x < 4; ++x) {
        int s = t[x] + t[12 + x], tt = t[4 + x] + t[8 + x], u = t[x] - t[12 + x], v = t[4 + x] - t[8 + x];
        out[x] = s + tt; out[4 + x] = 2 * u + v; out[8 + x] = s - tt; out[12 + x] = u - 2 * v;
    }
}

static KvtStatus finish(const int* lev, int n, Kvt16s* dst, Kvt8s* cnt, const Kvt16s* scan, Kvt8u* last) {
    int count = 0, lastPos = 0;
    for (int i = 0; i < n; ++i) {
        if (std::abs(lev[i]) > 2063) return -13;
        if (lev[i]) {
            ++count;
            if (scan && scan[i] > lastPos) lastPos = scan[i];
        }
    }
    for (int i = 0; i < n; ++i) dst[i] = (Kvt16s)lev[i];
    *cnt = (Kvt8s)(lev[0] ? -count : count);
    if (last) *last = (Kvt8u)(lastPos & 127);
    return 0;
}

KvtStatus kvtiTransformQuantResidual_H264_16s_C1I(Kvt16s* c, Kvt32s qp, Kvt8s* cnt, Kvt8u intra,
                                                  const Kvt16s* scan, Kvt8u* last) {
    int t[16], lev[16], q = qp / 6, r = qp % 6;
    fwd4x4(c, t);
    int f = (1 << (15 + q)) / (intra ? 3 : 6);
    for (int i = 0; i < 16; ++i) {
        int m = (std::abs(t[i]) * kMF[r][kClass[i]] + f) >> (15 + q);
        lev[i] = t[i] < 0 ? -m : m;
    }
    return finish(lev, 16, c, cnt, scan, last);
}

KvtStatus kvtiTransformQuantLumaDC_H264_16s_C1I(Kvt16s* c, Kvt16s* tb, Kvt32s qp, Kvt8s* cnt, Kvt8u needT,
                                                const Kvt16s* scan, Kvt8u* last) {
    if (needT) {
        int t[16];
        for (int x = 0; x < 4; ++x) {
            int a = c[x], b = c[4 + x], d = c[8 + x], e = c[12 + x];
            t[x] = a + b + d + e; t[4 + x] = a + b - d - e; t[8 + x] = a - b - d + e; t[12 + x] = a - b + d - e;
        }
        for (int y = 0; y < 4; ++y) {
            int a = t[4 * y], b = t[4 * y + 1], d = t[4 * y + 2], e = t[4 * y + 3];
            tb[4 * y] = (Kvt16s)((a + b + d + e) >> 1); tb[4 * y + 1] = (Kvt16s)((a + b - d - e) >> 1);
            tb[4 * y + 2] = (Kvt16s)((a - b - d + e) >> 1); tb[4 * y + 3] = (Kvt16s)((a - b + d - e) >> 1);
        }
    }
    int lev[16], q = qp / 6, r = qp % 6, f = (1 << (16 + q)) / 3;
    for (int i = 0; i < 16; ++i) {
        int m = (int)(((long long)std::abs(tb[i]) * kMF[r][0] + f) >> (16 + q));
        lev[i] = tb[i] < 0 ? -m : m;
    }
    return finish(lev, 16, c, cnt, scan, last);
}

KvtStatus kvtiTransformQuantChromaDC_H264_16s_C1I(Kvt16s* c, Kvt16s* tb, Kvt32s qp, Kvt8s* cnt, Kvt8u intra,
                                                  Kvt8u needT) {
    if (needT) {
        int f[4] = {c[0] + c[1] + c[2] + c[3], c[0] - c[1] + c[2] - c[3], c[0] + c[1] - c[2] - c[3],
                    c[0] - c[1] - c[2] + c[3]};
        for (int i = 0; i < 4; ++i) tb[i] = (Kvt16s)f[i];
    }
    int lev[4], q = qp / 6, r = qp % 6, f = (1 << (16 + q)) / (intra ? 3 : 6);
    for (int i = 0; i < 4; ++i) {
        int m = (int)(((long long)std::abs(tb[i]) * kMF[r][0] + f) >> (16 + q));
        lev[i] = tb[i] < 0 ? -m : m;
    }
    return finish(lev, 4, c, cnt, nullptr, nullptr);
}

}  // extern "C"
#endif

#ifdef KVTENC264_STANDIN_B
extern "C" {

static int six(int a, int b, int c, int d, int e, int f) { return a - 5 * b + 20 * c + 20 * d - 5 * e + f; }

KvtStatus kvtiInterpolateLuma_H264_8u_C1R(const Kvt8u* src, Kvt32s ss, Kvt8u* dst, Kvt32s ds, Kvt32s dx,
                                          Kvt32s dy, KvtRegionSize roi) {
    auto G = [&](int x, int y) { return (int)src[y * ss + x]; };
    auto hb = [&](int x, int y) {  // horizontal half sample right of (x,y), unclipped sum
        return six(G(x - 2, y), G(x - 1, y), G(x, y), G(x + 1, y), G(x + 2, y), G(x + 3, y));
    };
    auto vh = [&](int x, int y) {
        return six(G(x, y - 2), G(x, y - 1), G(x, y), G(x, y + 1), G(x, y + 2), G(x, y + 3));
    };
    auto b = [&](int x, int y) { return clip255((hb(x, y) + 16) >> 5); };
    auto h = [&](int x, int y) { return clip255((vh(x, y) + 16) >> 5); };
    auto j = [&](int x, int y) {
        int s = six(vh(x - 2, y), vh(x - 1, y), vh(x, y), vh(x + 1, y), vh(x + 2, y), vh(x + 3, y));
        return clip255((s + 512) >> 10);
    };
    auto av = [](int a, int c) { return (a + c + 1) >> 1; };
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            int v = 0;
            switch (dx * 4 + dy) {
                case 0: v = G(x, y); break;
                case 4: v = av(G(x, y), b(x, y)); break;
                case 8: v = b(x, y); break;
                case 12: v = av(b(x, y), G(x + 1, y)); break;
                case 1: v = av(G(x, y), h(x, y)); break;
                case 2: v = h(x, y); break;
                case 3: v = av(h(x, y), G(x, y + 1)); break;
                case 5: v = av(b(x, y), h(x, y)); break;
                case 13: v = av(b(x, y), h(x + 1, y)); break;
                case 7: v = av(b(x, y + 1), h(x, y)); break;
                case 15: v = av(b(x, y + 1), h(x + 1, y)); break;
                case 10: v = j(x, y); break;
                case 9: v = av(j(x, y), b(x, y)); break;
                case 11: v = av(j(x, y), b(x, y + 1)); break;
                case 6: v = av(j(x, y), h(x, y)); break;
                case 14: v = av(j(x, y), h(x + 1, y)); break;
            }
            dst[y * ds + x] = (Kvt8u)v;
        }
    return 0;
}

KvtStatus kvtiInterpolateChroma_H264_8u_C1R(const Kvt8u* s, Kvt32s ss, Kvt8u* d, Kvt32s ds, Kvt32s dx, Kvt32s dy,
                                            KvtRegionSize roi) {
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            const Kvt8u* p = s + y * ss + x;
            d[y * ds + x] = (Kvt8u)(((8 - dx) * (8 - dy) * p[0] + dx * (8 - dy) * p[1] + (8 - dx) * dy * p[ss] +
                                     dx * dy * p[ss + 1] + 32) >> 6);
        }
    return 0;
}

static KvtStatus cavlc(const Kvt16s* c, int first, const Kvt32s* scan, int last, Kvt8u* t1, Kvt8u* sg,
                       Kvt8u* n, Kvt8u* tz, Kvt16s* lv, Kvt8u* runs) {
    int T = 0, S = 0, N = 0, R = 0, Z = 0;
    bool coll = true;
    for (int i = last; i >= first; --i) {
        int v = c[scan ? scan[i] : i];
        if (!v) { ++R; continue; }
        if (coll && (v == 1 || v == -1)) {
            ++T;
            S = ((S << 1) & 255) | (v < 0);
            coll = T < 3;
        } else {
            lv[N - T] = (Kvt16s)v;
            coll = false;
        }
        if (N > 0) { runs[N - 1] = (Kvt8u)R; Z += R; }
        R = 0;
        ++N;
    }
    *t1 = (Kvt8u)T; *sg = (Kvt8u)S; *n = (Kvt8u)N; *tz = (Kvt8u)(Z + R);
    return 0;
}

KvtStatus kvtiEncodeCoeffsCAVLC_H264_16s(const Kvt16s* c, Kvt8u first, const Kvt32s* scan, Kvt8u last, Kvt8u* t1,
                                         Kvt8u* sg, Kvt8u* n, Kvt8u* tz, Kvt16s* lv, Kvt8u* runs) {
    return cavlc(c, first, scan, last, t1, sg, n, tz, lv, runs);
}
KvtStatus kvtiEncodeChromaDcCoeffsCAVLC_H264_16s(const Kvt16s* c, Kvt8u* t1, Kvt8u* sg, Kvt8u* n, Kvt8u* tz,
                                                 Kvt16s* lv, Kvt8u* runs) {
    return cavlc(c, 0, nullptr, 3, t1, sg, n, tz, lv, runs);
}

// One line across an edge: q[k * qs] are q0..q3, q[-(k + 1) * qs] are p0..p3.
static void filter_line(Kvt8u* q, int qs, int alpha, int beta, int bs, int tc0, bool chroma) {
    int p0 = q[-qs], p1 = q[-2 * qs], q0 = q[0], q1 = q[qs];
    if (!(std::abs(p0 - q0) < alpha && std::abs(p1 - p0) < beta && std::abs(q1 - q0) < beta)) return;
    int p2 = chroma ? 0 : q[-3 * qs], q2 = chroma ? 0 : q[2 * qs];
    int ap = std::abs(p2 - p0), aq = std::abs(q2 - q0);
    if (bs < 4) {
        int tc = chroma ? tc0 + 1 : tc0 + (ap < beta) + (aq < beta);
        int d = clip3(-tc, tc, (((q0 - p0) << 2) + (p1 - q1) + 4) >> 3);
        q[-qs] = (Kvt8u)clip255(p0 + d);
        q[0] = (Kvt8u)clip255(q0 - d);
        if (!chroma && ap < beta) q[-2 * qs] = (Kvt8u)(p1 + clip3(-tc0, tc0, (p2 + ((p0 + q0 + 1) >> 1) - (p1 << 1)) >> 1));
        if (!chroma && aq < beta) q[qs] = (Kvt8u)(q1 + clip3(-tc0, tc0, (q2 + ((p0 + q0 + 1) >> 1) - (q1 << 1)) >> 1));
        return;
    }
    if (chroma) {
        q[-qs] = (Kvt8u)((2 * p1 + p0 + q1 + 2) >> 2);
        q[0] = (Kvt8u)((2 * q1 + q0 + p1 + 2) >> 2);
        return;
    }
    int p3 = q[-4 * qs], q3 = q[3 * qs];
    bool strong = std::abs(p0 - q0) < ((alpha >> 2) + 2);
    if (ap < beta && strong) {
        q[-qs] = (Kvt8u)((p2 + 2 * p1 + 2 * p0 + 2 * q0 + q1 + 4) >> 3);
        q[-2 * qs] = (Kvt8u)((p2 + p1 + p0 + q0 + 2) >> 2);
        q[-3 * qs] = (Kvt8u)((2 * p3 + 3 * p2 + p1 + p0 + q0 + 4) >> 3);
    } else {
        q[-qs] = (Kvt8u)((2 * p1 + p0 + q1 + 2) >> 2);
    }
    if (aq < beta && strong) {
        q[0] = (Kvt8u)((p1 + 2 * p0 + 2 * q0 + 2 * q1 + q2 + 4) >> 3);
        q[qs] = (Kvt8u)((p0 + q0 + q1 + q2 + 2) >> 2);
        q[2 * qs] = (Kvt8u)((2 * q3 + 3 * q2 + q1 + q0 + p0 + 4) >> 3);
    } else {
        q[0] = (Kvt8u)((2 * q1 + q0 + p1 + 2) >> 2);
    }
}

// vertical edges: across = 1 (step along x), along = row step
static void deblock(Kvt8u* p, int step, const Kvt8u* A, const Kvt8u* B, const Kvt8u* tc, const Kvt8u* bs,
                    bool vertical, bool chroma) {
    const int edges = chroma ? 2 : 4, len = chroma ? 8 : 16;
    const int across = vertical ? 1 : step, along = vertical ? step : 1;
    for (int e = 0; e < edges; ++e) {
        int le = chroma ? e * 2 : e;  // luma edge whose strengths apply
        int alpha = A[e ? 1 : 0], beta = B[e ? 1 : 0];
        for (int i = 0; i < len; ++i) {
            int seg = chroma ? i / 2 : i / 4;
            int s = bs[le * 4 + seg];
            if (!s) continue;
            filter_line(p + e * (chroma ? 4 : 4) * across + i * along, across, alpha, beta, s, tc[e * 4 + seg], chroma);
        }
    }
}

KvtStatus kvtiFilterDeblockingLuma_VerEdge_H264_8u_C1IR(Kvt8u* p, Kvt32s s, const Kvt8u* a, const Kvt8u* b,
                                                        const Kvt8u* t, const Kvt8u* bs) {
    deblock(p, s, a, b, t, bs, true, false);
    return 0;
}
KvtStatus kvtiFilterDeblockingLuma_HorEdge_H264_8u_C1IR(Kvt8u* p, Kvt32s s, const Kvt8u* a, const Kvt8u* b,
                                                        const Kvt8u* t, const Kvt8u* bs) {
    deblock(p, s, a, b, t, bs, false, false);
    return 0;
}
KvtStatus kvtiFilterDeblockingChroma_VerEdge_H264_8u_C1IR(Kvt8u* p, Kvt32s s, const Kvt8u* a, const Kvt8u* b,
                                                          const Kvt8u* t, const Kvt8u* bs) {
    deblock(p, s, a, b, t, bs, true, true);
    return 0;
}
KvtStatus kvtiFilterDeblockingChroma_HorEdge_H264_8u_C1IR(Kvt8u* p, Kvt32s s, const Kvt8u* a, const Kvt8u* b,
                                                          const Kvt8u* t, const Kvt8u* bs) {
    deblock(p, s, a, b, t, bs, false, true);
    return 0;
}

}  // extern "C"
#endif
