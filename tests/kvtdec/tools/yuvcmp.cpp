// yuvcmp: compares two raw I420 files frame by frame.
//   yuvcmp A.yuv B.yuv WIDTH HEIGHT [--min-avg DB] [--min-frame DB] [--max-diff N]
// Prints the frame count, the average and worst PSNR over all three planes and the largest sample
// difference (and where it is); exits 1 when the files differ in length or a limit is not met.
// -v adds a line per frame; --luma-psnr prints only the luma PSNR of each frame, one per line.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    if (argc < 5) {
        std::fprintf(stderr,
                     "usage: yuvcmp A.yuv B.yuv WIDTH HEIGHT [--min-avg DB] [--min-frame DB] [--max-diff N] "
                     "[-v | --luma-psnr]\n");
        return 2;
    }
    const int w = std::atoi(argv[3]), h = std::atoi(argv[4]);
    double min_avg = -1, min_frame = -1;
    int max_diff = 256;
    bool verbose = false, luma_only = false;
    for (int i = 5; i < argc; i += 2) {
        const std::string opt = argv[i];
        if (opt == "-v" || opt == "--luma-psnr") {
            (opt == "-v" ? verbose : luma_only) = true;
            --i;
            continue;
        }
        if (i + 1 == argc) break;
        if (opt == "--min-avg")
            min_avg = std::atof(argv[i + 1]);
        else if (opt == "--min-frame")
            min_frame = std::atof(argv[i + 1]);
        else if (opt == "--max-diff")
            max_diff = std::atoi(argv[i + 1]);
    }
    std::FILE* a = std::fopen(argv[1], "rb");
    std::FILE* b = std::fopen(argv[2], "rb");
    if (!a || !b) {
        std::fprintf(stderr, "yuvcmp: cannot open the inputs\n");
        return 2;
    }
    const size_t luma = size_t(w) * h, frame = luma + 2 * size_t((w + 1) / 2) * ((h + 1) / 2);
    std::vector<unsigned char> fa(frame), fb(frame);
    int frames = 0, worst_diff = 0, worst_frame = 0;
    size_t worst_at = 0;
    double sum_psnr = 0, min_psnr = 1e9;
    bool length_differs = false;
    for (;;) {
        const size_t na = std::fread(fa.data(), 1, frame, a), nb = std::fread(fb.data(), 1, frame, b);
        if (na != nb) length_differs = true;
        if (na != frame || nb != frame) break;
        double sse = 0;
        int frame_diff = 0;
        for (size_t i = 0; i < frame; ++i) {
            const int d = std::abs(int(fa[i]) - int(fb[i]));
            sse += double(d) * d;
            if (d > frame_diff) frame_diff = d;
            if (d > worst_diff) worst_diff = d, worst_frame = frames, worst_at = i;
        }
        if (luma_only) {  // one line per frame: the luma PSNR alone
            double luma_sse = 0;
            for (size_t i = 0; i < luma; ++i)
                luma_sse += double(int(fa[i]) - int(fb[i])) * (int(fa[i]) - int(fb[i]));
            std::printf("%.2f\n",
                        luma_sse == 0 ? 100.0 : 10 * std::log10(255.0 * 255.0 * double(luma) / luma_sse));
        }
        const double psnr = sse == 0 ? 100.0 : 10 * std::log10(255.0 * 255.0 * double(frame) / sse);
        if (verbose) std::printf("frame %d: %.2f dB, max difference %d\n", frames, psnr, frame_diff);
        sum_psnr += psnr;
        if (psnr < min_psnr) min_psnr = psnr;
        ++frames;
    }
    if (luma_only) return length_differs ? 1 : 0;
    const double avg = frames ? sum_psnr / frames : 0;
    std::printf("%d frames, PSNR average %.2f dB, worst %.2f dB, max difference %d", frames, avg,
                frames ? min_psnr : 0.0, worst_diff);
    if (worst_diff) {
        const char* plane = worst_at < luma ? "Y" : worst_at < luma + (frame - luma) / 2 ? "U" : "V";
        const size_t off = worst_at < luma ? worst_at : (worst_at - luma) % ((frame - luma) / 2);
        const int pw = worst_at < luma ? w : (w + 1) / 2;
        std::printf(" (frame %d, %s x %zu y %zu)", worst_frame, plane, off % pw, off / pw);
    }
    std::printf("%s\n", length_differs ? ", LENGTHS DIFFER" : "");
    const bool ok = !length_differs && frames > 0 && avg >= min_avg && (frames ? min_psnr : 0) >= min_frame &&
                    worst_diff <= max_diff;
    return ok ? 0 : 1;
}
