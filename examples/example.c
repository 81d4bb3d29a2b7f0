/* Fills a 16x16 block inside a larger plane, scales a coefficient row and counts zeros. */
#include <stdio.h>

#include <kvtvc.h>

int main(void) {
    const KvtLibraryVersion* v = kvtvcGetLibVersion();
    Kvt8u* plane = kvtsMalloc_8u(32 * 32);
    Kvt16s coeffs[64] = {0};
    KvtRegionSize block = {16, 16};
    Kvt32u zeros = 0;
    int i;

    if (!plane) return 1;
    kvtsSet_8u(0, plane, 32 * 32);
    if (kvtiSet_8u_C1R(128, plane + 8 * 32 + 8, 32, block) != kvtStsOk) return 1;

    for (i = 0; i < 8; ++i) coeffs[i] = (Kvt16s)(100 * i - 300);
    kvtsMulC_16s_ISfs(3, coeffs, 8, 1); /* x * 3 / 2, rounded half to even */
    kvtiCountZeros8x8_16s_C1(coeffs, &zeros);

    printf("%s %s: plane[8][8] = %d, coeffs[1] = %d, %u zero coefficients\n", v->name, v->version,
           plane[8 * 32 + 8], coeffs[1], (unsigned)zeros);
    kvtsFree(plane);
    return 0;
}
