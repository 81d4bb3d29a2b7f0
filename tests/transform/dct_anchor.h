// The exact orthonormal 8x8 DCT in double precision, written from its definition: the anchor the
// fixed-point transforms are measured against.
#pragma once

#include <cmath>

namespace kvt::test {

// c(k)/2 * cos((2n + 1) k pi / 16)
inline double dct_basis(int n, int k) {
    struct Table {
        double v[8][8];
        Table() {
            for (int i = 0; i < 8; ++i)
                for (int j = 0; j < 8; ++j)
                    v[i][j] = (j ? 0.5 : std::sqrt(0.125)) *
                              std::cos((2 * i + 1) * j * 3.14159265358979323846 / 16);
        }
    };
    static const Table table;
    return table.v[n][k];
}

// Forward: out[u][v] = sum_{i,j} B(i,u) B(j,v) in[i][j]; inverse: out[i][j] = sum_{u,v} B(i,u) B(j,v)
// in[u][v].
inline void exact_dct(const double* in, double* out, bool inverse) {
    double t[64];
    for (int a = 0; a < 8; ++a)  // along columns
        for (int c = 0; c < 8; ++c) {
            double s = 0;
            for (int b = 0; b < 8; ++b) s += (inverse ? dct_basis(a, b) : dct_basis(b, a)) * in[8 * b + c];
            t[8 * a + c] = s;
        }
    for (int r = 0; r < 8; ++r)  // along rows
        for (int a = 0; a < 8; ++a) {
            double s = 0;
            for (int b = 0; b < 8; ++b) s += (inverse ? dct_basis(a, b) : dct_basis(b, a)) * t[8 * r + b];
            out[8 * r + a] = s;
        }
}

}  // namespace kvt::test
