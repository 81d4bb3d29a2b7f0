#include "snapshot.h"

#include "frame_store.h"

#if KVTDEC_HAVE_ZLIB
#include <zlib.h>
#endif

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

namespace kvtdec {
namespace {

uint8_t clip255(int v) { return uint8_t(std::min(255, std::max(0, v))); }

// RGB rows, 3 bytes per pixel, from 4:2:0 with each chroma sample covering 2x2 luma samples.
// ITU-R BT.601 studio range in 16.16 fixed point.
std::vector<uint8_t> to_rgb(const Frame& f, int width, int height) {
    std::vector<uint8_t> rgb(size_t(width) * height * 3);
    uint8_t* out = rgb.data();
    for (int y = 0; y < height; ++y) {
        const Kvt8u* luma = f.plane[0].at(0, y);
        const Kvt8u* cb = f.plane[1].at(0, y / 2);
        const Kvt8u* cr = f.plane[2].at(0, y / 2);
        for (int x = 0; x < width; ++x) {
            const int l = 76309 * (luma[x] - 16), u = cb[x / 2] - 128, v = cr[x / 2] - 128;
            *out++ = clip255((l + 104597 * v + 32768) >> 16);
            *out++ = clip255((l - 25675 * u - 53279 * v + 32768) >> 16);
            *out++ = clip255((l + 132201 * u + 32768) >> 16);
        }
    }
    return rgb;
}

#if KVTDEC_HAVE_ZLIB
void put_be32(std::vector<uint8_t>& v, uint32_t x) {
    for (int s = 24; s >= 0; s -= 8) v.push_back(uint8_t(x >> s));
}

// One PNG chunk: length, type, data, CRC of type and data.
void put_chunk(std::vector<uint8_t>& png, const char* type, const std::vector<uint8_t>& data) {
    put_be32(png, uint32_t(data.size()));
    const size_t start = png.size();
    png.insert(png.end(), type, type + 4);
    png.insert(png.end(), data.begin(), data.end());
    put_be32(png, uint32_t(crc32(0, png.data() + start, uInt(png.size() - start))));
}

std::string encode_png(const std::vector<uint8_t>& rgb, int width, int height, std::vector<uint8_t>& png) {
    std::vector<uint8_t> rows;  // each row: filter type 0, then the pixels
    rows.reserve(size_t(height) * (1 + 3 * size_t(width)));
    for (int y = 0; y < height; ++y) {
        rows.push_back(0);
        const uint8_t* r = rgb.data() + size_t(y) * width * 3;
        rows.insert(rows.end(), r, r + size_t(width) * 3);
    }
    uLongf packed_size = compressBound(uLong(rows.size()));
    std::vector<uint8_t> packed(packed_size);
    if (compress2(packed.data(), &packed_size, rows.data(), uLong(rows.size()), 6) != Z_OK)
        return "compression failed";
    packed.resize(packed_size);

    static const uint8_t signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    png.assign(signature, signature + 8);
    std::vector<uint8_t> ihdr;
    put_be32(ihdr, uint32_t(width));
    put_be32(ihdr, uint32_t(height));
    ihdr.insert(ihdr.end(), {8, 2, 0, 0, 0});  // 8 bits, truecolour, deflate, no filter set, no interlace
    put_chunk(png, "IHDR", ihdr);
    put_chunk(png, "IDAT", packed);
    put_chunk(png, "IEND", {});
    return "";
}
#else
std::string encode_png(const std::vector<uint8_t>&, int, int, std::vector<uint8_t>&) {
    return "this build has no zlib for PNG; write a .ppm snapshot";
}
#endif

bool ends_with(const std::string& s, const char* suffix) {
    const std::string t(suffix);
    if (s.size() < t.size()) return false;
    return std::equal(t.rbegin(), t.rend(), s.rbegin(),
                      [](char a, char b) { return a == std::tolower(static_cast<unsigned char>(b)); });
}

}  // namespace

std::string write_snapshot(const std::string& path, const Frame& frame, int width, int height) {
    const bool png = ends_with(path, ".png");
    if (!png && !ends_with(path, ".ppm")) return "snapshot name must end in .png or .ppm";
    const std::vector<uint8_t> rgb = to_rgb(frame, width, height);
    std::vector<uint8_t> file;
    if (png) {
        const std::string err = encode_png(rgb, width, height, file);
        if (!err.empty()) return err;
    } else {
        const std::string head = "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n";
        file.assign(head.begin(), head.end());
        file.insert(file.end(), rgb.begin(), rgb.end());
    }
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> out(std::fopen(path.c_str(), "wb"), std::fclose);
    if (!out || std::fwrite(file.data(), 1, file.size(), out.get()) != file.size())
        return "cannot write " + path;
    return "";
}

}  // namespace kvtdec
