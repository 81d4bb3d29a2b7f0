// The command line: kvtenc264 -i IN.yuv -s WxH [-n FRAMES] [--qp QP] [--keyint N] -o OUT.264
// [--recon RECON.yuv]
#pragma once
#include <string>

namespace enc264 {

struct Options {
    std::string input, output, recon;
    int width = 0, height = 0;
    int frames = -1;  // -1: the whole input
    int qp = 26;
    int keyint = 250;
};

// Parses argv; on a bad command line returns false with a message in *error.
bool parse_options(int argc, char** argv, Options* opt, std::string* error);

extern const char kUsage[];

}  // namespace enc264
