// Fuzz target over the kvtdec example decoder: whatever the input, decoding either succeeds or
// stops with a DecodeError; AddressSanitizer checks that no reader leaves the padded stream.
//
// The first input byte picks a prefix so that most inputs reach the macroblock layers: 0 none,
// 1 an MPEG-4 QCIF video object layer with resync markers and a VOP start code, 2 an H.263
// picture start code. The rest of the input follows it.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "decoder.h"
#include "stream.h"

namespace {

const Kvt8u kMpeg4Prefix[] = {0x00, 0x00, 0x01, 0xB0, 0x01, 0x00, 0x00, 0x01, 0xB5, 0x89, 0x13, 0x00,
                              0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x20, 0x00, 0xC4, 0x8D, 0x88, 0x00,
                              0xCD, 0x05, 0x84, 0x12, 0x14, 0x43, 0x00, 0x00, 0x01, 0xB6};
const Kvt8u kH263Prefix[] = {0x00, 0x00, 0x80};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    std::vector<Kvt8u> bytes;
    if (data[0] % 3 == 1) bytes.assign(kMpeg4Prefix, kMpeg4Prefix + sizeof kMpeg4Prefix);
    if (data[0] % 3 == 2) bytes.assign(kH263Prefix, kH263Prefix + sizeof kH263Prefix);
    bytes.insert(bytes.end(), data + 1, data + size);
    kvtdec::Stream stream(std::move(bytes));
    try {
        kvtdec::Decoder decoder(stream, 256);  // small pictures keep the runs fast
        for (int frames = 0; frames < 4 && decoder.decode_next(); ++frames) {
        }
    } catch (const kvtdec::DecodeError&) {
    }
    return 0;
}
