// kvtdec command line: kvtdec [-o OUT.yuv] [--frames N] [--snapshot N FILE] INPUT
//
// Decodes an H.263 or MPEG-4 visual elementary stream, writes the pictures as raw I420, one
// picture as a PNG or PPM image, and a one-line summary on stderr.
#include "decoder.h"
#include "snapshot.h"
#include "stream.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

constexpr const char* kUsage =
    "usage: kvtdec [-o OUT.yuv] [--frames N] [--snapshot N FILE] INPUT\n"
    "  INPUT             H.263 (.263) or MPEG-4 visual (.m4v) elementary stream\n"
    "  -o OUT.yuv        write every decoded frame as planar 4:2:0 (I420)\n"
    "  --frames N        stop after N frames\n"
    "  --snapshot N FILE write frame N (counted from 0) as FILE, .png or .ppm\n";

struct Options {
    std::string input, output, snapshot_file;
    long frames = -1;  // no limit
    long snapshot = -1;
};

bool parse_count(const char* text, long* value) {
    char* end = nullptr;
    *value = std::strtol(text, &end, 10);
    return *text && !*end && *value >= 0;
}

// Fills opts; returns an error message, or an empty string.
std::string parse_args(int argc, char** argv, Options& opts) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool more = i + 1 < argc;
        if (arg == "-o" && more) {
            opts.output = argv[++i];
        } else if (arg == "--frames" && more) {
            if (!parse_count(argv[++i], &opts.frames)) return "--frames needs a count";
        } else if (arg == "--snapshot" && i + 2 < argc) {
            if (!parse_count(argv[++i], &opts.snapshot)) return "--snapshot needs a frame number";
            opts.snapshot_file = argv[++i];
        } else if (arg.size() > 1 && arg[0] == '-') {
            return "unknown or incomplete option " + arg;
        } else if (opts.input.empty()) {
            opts.input = arg;
        } else {
            return "more than one input";
        }
    }
    return opts.input.empty() ? "no input" : "";
}

bool read_file(const std::string& path, std::vector<Kvt8u>& bytes) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> f(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!f) return false;
    // Straight into place when the size is known, with room for the stream's padding, so that
    // nothing is copied or moved later; a pipe is read in chunks.
    long size = -1;
    if (std::fseek(f.get(), 0, SEEK_END) == 0) {
        size = std::ftell(f.get());
        std::rewind(f.get());
    }
    if (size > 0) {
        bytes.reserve(size_t(size) + kvtdec::Stream::kPadding);
        bytes.resize(size_t(size));
        bytes.resize(std::fread(bytes.data(), 1, bytes.size(), f.get()));
    }
    Kvt8u chunk[1 << 16];
    size_t n;
    while ((n = std::fread(chunk, 1, sizeof chunk, f.get())) > 0) bytes.insert(bytes.end(), chunk, chunk + n);
    return !std::ferror(f.get());
}

}  // namespace

int main(int argc, char** argv) {
    Options opts;
    const std::string usage_error = parse_args(argc, argv, opts);
    if (!usage_error.empty()) {
        std::fprintf(stderr, "kvtdec: %s\n%s", usage_error.c_str(), kUsage);
        return 2;
    }
    std::vector<Kvt8u> bytes;
    if (!read_file(opts.input, bytes)) {
        std::fprintf(stderr, "kvtdec: cannot read %s\n", opts.input.c_str());
        return 1;
    }
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> out(nullptr, std::fclose);
    if (!opts.output.empty()) {
        out.reset(std::fopen(opts.output.c_str(), "wb"));
        if (!out) {
            std::fprintf(stderr, "kvtdec: cannot create %s\n", opts.output.c_str());
            return 1;
        }
    }

    kvtdec::Stream stream(std::move(bytes));
    std::unique_ptr<kvtdec::Decoder> dec;
    long frames = 0;
    bool snapshot_written = false;
    double seconds = 0;  // decoding alone, not the writing
    try {
        dec = std::make_unique<kvtdec::Decoder>(stream);
        for (;;) {
            if (opts.frames >= 0 && frames >= opts.frames) break;
            const auto start = std::chrono::steady_clock::now();
            const bool more = dec->decode_next();
            seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
            if (!more) break;
            const kvtdec::Frame& pic = dec->picture();
            if (out && !pic.write_i420(out.get(), dec->width(), dec->height())) {
                std::fprintf(stderr, "kvtdec: cannot write %s\n", opts.output.c_str());
                return 1;
            }
            if (frames == opts.snapshot) {
                const std::string err =
                    kvtdec::write_snapshot(opts.snapshot_file, pic, dec->width(), dec->height());
                if (!err.empty()) {
                    std::fprintf(stderr, "kvtdec: %s\n", err.c_str());
                    return 1;
                }
                snapshot_written = true;
            }
            ++frames;
        }
    } catch (const kvtdec::DecodeError& e) {
        if (dec)
            std::fprintf(stderr, "kvtdec: %s: %s: %s\n", opts.input.c_str(), dec->where().c_str(), e.what());
        else
            std::fprintf(stderr, "kvtdec: %s: %s\n", opts.input.c_str(), e.what());
        return 1;
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "kvtdec: out of memory\n");
        return 1;
    }
    if (out && std::fflush(out.get()) != 0) {
        std::fprintf(stderr, "kvtdec: cannot write %s\n", opts.output.c_str());
        return 1;
    }
    std::fprintf(stderr, "kvtdec: %s %dx%d, %ld frames, %.3f s, %.1f fps\n", dec->codec_name(), dec->width(),
                 dec->height(), frames, seconds, seconds > 0 ? frames / seconds : 0.0);
    if (opts.snapshot >= 0 && !snapshot_written) {
        std::fprintf(stderr, "kvtdec: no frame %ld for the snapshot (%ld decoded)\n", opts.snapshot, frames);
        return 1;
    }
    return 0;
}
