#include "options.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace enc264 {

const char kUsage[] =
    "usage: kvtenc264 -i IN.yuv -s WxH [-n FRAMES] [--qp QP] [--keyint N] -o OUT.264 [--recon RECON.yuv]\n"
    "  IN is raw I420 (planar 4:2:0, 8 bits); OUT is an H.264 Annex B stream (constrained baseline);\n"
    "  RECON receives the pictures a decoder reconstructs from OUT. QP 0..51 (default 26), keyint\n"
    "  1 codes every picture as IDR (default 250).\n";

namespace {

// A whole decimal number in [lo, hi].
bool parse_int(const char* s, int lo, int hi, int* out) {
    char* end = nullptr;
    errno = 0;
    const long v = std::strtol(s, &end, 10);
    if (errno || end == s || *end || v < lo || v > hi) return false;
    *out = static_cast<int>(v);
    return true;
}

bool parse_size(const char* s, int* w, int* h) {
    const char* x = std::strchr(s, 'x');
    if (!x) return false;
    const std::string width(s, x);
    return parse_int(width.c_str(), 1, 16384, w) && parse_int(x + 1, 1, 16384, h);
}

}  // namespace

bool parse_options(int argc, char** argv, Options* opt, std::string* error) {
    bool have_size = false;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        const bool known = a == "-i" || a == "-o" || a == "-s" || a == "-n" || a == "--qp" ||
                           a == "--keyint" || a == "--recon";
        if (!known) return *error = "unknown argument '" + a + "'", false;
        if (i + 1 >= argc) return *error = a + " needs a value", false;
        const char* v = argv[++i];
        if (a == "-i")
            opt->input = v;
        else if (a == "-o")
            opt->output = v;
        else if (a == "--recon")
            opt->recon = v;
        else if (a == "-s") {
            if (!parse_size(v, &opt->width, &opt->height))
                return *error = "bad size '" + std::string(v) + "' (WxH)", false;
            have_size = true;
        } else if (a == "-n") {
            if (!parse_int(v, 1, 1 << 30, &opt->frames))
                return *error = "bad frame count '" + std::string(v) + "'", false;
        } else if (a == "--qp") {
            if (!parse_int(v, 0, 51, &opt->qp))
                return *error = "bad QP '" + std::string(v) + "' (0..51)", false;
        } else if (!parse_int(v, 1, 1 << 30, &opt->keyint)) {
            return *error = "bad keyint '" + std::string(v) + "' (1 or more)", false;
        }
    }
    if (opt->input.empty()) return *error = "no input file (-i)", false;
    if (opt->output.empty()) return *error = "no output file (-o)", false;
    if (!have_size) return *error = "no picture size (-s WxH)", false;
    if (opt->width % 2 || opt->height % 2)
        return *error = "width and height must be even (4:2:0 chroma has half the samples)", false;
    return true;
}

}  // namespace enc264
