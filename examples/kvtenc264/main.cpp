// kvtenc264: a constrained-baseline H.264 encoder whose block work is done by kvtvc.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "encoder.h"
#include "options.h"
#include "yuv_io.h"

using namespace enc264;

namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File open_file(const std::string& name, const char* mode) {
    return File(std::fopen(name.c_str(), mode), &std::fclose);
}

// Sums of squared differences of the visible area, per plane.
struct Distortion {
    double sse[3] = {};
    void add(const Picture& a, const Picture& b, int width, int height) {
        for (int c = 0; c < 3; ++c) {
            const int w = c ? width / 2 : width, h = c ? height / 2 : height;
            for (int y = 0; y < h; ++y) {
                const uint8_t *pa = a.plane(c).at(0, y), *pb = b.plane(c).at(0, y);
                int s = 0;  // at most 255^2 * 16384
                for (int x = 0; x < w; ++x) s += (pa[x] - pb[x]) * (pa[x] - pb[x]);
                sse[c] += static_cast<double>(s);
            }
        }
    }
    double psnr(int c, double samples) const {
        return sse[c] > 0 ? 10.0 * std::log10(255.0 * 255.0 * samples / sse[c]) : 99.99;
    }
};

int fail(const std::string& message) {
    std::fprintf(stderr, "kvtenc264: %s\n", message.c_str());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    Options opt;
    std::string error;
    if (!parse_options(argc, argv, &opt, &error)) {
        std::fprintf(stderr, "kvtenc264: %s\n%s", error.c_str(), kUsage);
        return 2;
    }
    File in = open_file(opt.input, "rb");
    if (!in) return fail("cannot open input '" + opt.input + "'");
    File out = open_file(opt.output, "wb");
    if (!out) return fail("cannot create output '" + opt.output + "'");
    File recon(nullptr, &std::fclose);
    if (!opt.recon.empty() && !(recon = open_file(opt.recon, "wb")))
        return fail("cannot create '" + opt.recon + "'");

    EncoderConfig cfg;
    cfg.width = opt.width, cfg.height = opt.height, cfg.qp = opt.qp, cfg.keyint = opt.keyint;
    Encoder enc(cfg);
    Picture pic = enc.new_picture();
    YuvReader reader(in.get(), opt.width, opt.height);
    std::vector<uint8_t> bytes;
    Distortion dist;
    long long total_bytes = 0;
    int frames = 0;
    const auto start = std::chrono::steady_clock::now();
    while (opt.frames < 0 || frames < opt.frames) {
        if (!reader.read(pic)) {
            if (reader.short_frame()) return fail("input ends inside frame " + std::to_string(frames));
            if (opt.frames >= 0)
                return fail("input holds " + std::to_string(frames) + " frames, -n asks for " +
                            std::to_string(opt.frames));
            break;
        }
        bytes.clear();
        enc.encode(pic, bytes);
        if (std::fwrite(bytes.data(), 1, bytes.size(), out.get()) != bytes.size())
            return fail("cannot write output");
        if (recon && !write_yuv(recon.get(), enc.reconstruction(), opt.width, opt.height))
            return fail("cannot write reconstruction");
        dist.add(pic, enc.reconstruction(), opt.width, opt.height);
        total_bytes += static_cast<long long>(bytes.size());
        ++frames;
    }
    if (frames == 0) return fail("input '" + opt.input + "' holds no frame");
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const double luma = static_cast<double>(opt.width) * opt.height * frames;
    std::fprintf(
        stderr,
        "kvtenc264: %d frames %dx%d QP %d, %.1f kbit/s at 25 fps (%lld bytes), PSNR Y %.2f U %.2f V %.2f dB, "
        "%.1f fps\n",
        frames, opt.width, opt.height, opt.qp, total_bytes * 8.0 * 25 / frames / 1000, total_bytes,
        dist.psnr(0, luma), dist.psnr(1, luma / 4), dist.psnr(2, luma / 4), frames / seconds);
    return 0;
}
