// Fronts of the VLC tables: build, decode one code, release.
#include "bitstream/vlc_decode.h"
#include "bitstream/vlc_dsp.h"
#include "kvtvc.h"

using namespace kvt;

namespace {

template <VlcRecord kind>
KvtStatus init_alloc(const Kvt32s* pInputTable, KvtVCHuffmanSpec_32s** ppVLCSpec) {
    if (!pInputTable || !ppVLCSpec) return kvtStsNullPointer;
    const int words = kind == VlcRecord::Plain ? kVlcPlainWords : kVlcRunLevelWords;
    auto* table = reinterpret_cast<Kvt32s*>(kvtsMalloc_8u(words * 4));
    if (!table) return kvtStsNoMemory;
    vlc_build<kind>(pInputTable, table);
    *ppVLCSpec = table;
    return kvtStsOk;
}

}  // namespace

KvtStatus kvtiVCHuffmanInitAlloc_32s(const Kvt32s* pInputTable, KvtVCHuffmanSpec_32s** ppVLCSpec) {
    return init_alloc<VlcRecord::Plain>(pInputTable, ppVLCSpec);
}

KvtStatus kvtiVCHuffmanInitAllocRL_32s(const Kvt32s* pInputTable, KvtVCHuffmanSpec_32s** ppVLCSpec) {
    return init_alloc<VlcRecord::RunLevel>(pInputTable, ppVLCSpec);
}

// The offset and result addresses are not checked, as for the other word-cursor readers.
KvtStatus kvtiVCHuffmanDecodeOne_1u32s(Kvt32u** ppBitStream, int* pOffset, Kvt32s* pDst,
                                       const KvtVCHuffmanSpec_32s* pVLCSpec) {
    if (!ppBitStream || !pVLCSpec) return kvtStsNullPointer;
    WordCursor c{*ppBitStream, *pOffset};
    const bool found = vlc_decode_one(c, pVLCSpec, pDst);
    // A miss still moves the cursor past the bits the lookups read.
    *ppBitStream = const_cast<Kvt32u*>(c.word);
    *pOffset = c.offset;
    return found ? kvtStsOk : kvtStsBadVlcCode;
}

KvtStatus kvtiVCHuffmanFree_32s(KvtVCHuffmanSpec_32s** ppVLCSpec) {
    if (!ppVLCSpec) return kvtStsNullPointer;
    if (!*ppVLCSpec) return kvtStsOk;
    kvtsFree(*ppVLCSpec);
    *ppVLCSpec = nullptr;
    return kvtStsOk;
}
