/* The public header compiles as strict C99; a few calls prove the C linkage. */
#include "kvtvc.h"

#include <string.h>

int main(void) {
    const KvtLibraryVersion* v = kvtvcGetLibVersion();
    Kvt8u* p = kvtsMalloc_8u(64);
    KvtRegionSize roi = {8, 8};
    int ok = v != NULL && v->major == 4 && strcmp(v->version, "v4.1") == 0 && p != NULL &&
             kvtiSet_8u_C1R(7, p, 8, roi) == kvtStsOk && p[63] == 7 && sizeof(KvtMotionVec) == 4;
    kvtsFree(p);
    return ok ? 0 : 1;
}
