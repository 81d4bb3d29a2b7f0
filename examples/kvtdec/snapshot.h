// One decoded picture as an RGB image file: PNG (.png) or binary PPM (.ppm), chosen by the name.
#pragma once

#include <string>

namespace kvtdec {

class Frame;

// Converts the top-left width x height samples (BT.601, studio range) to RGB and writes them.
// Returns an empty string on success, otherwise what went wrong.
std::string write_snapshot(const std::string& path, const Frame& frame, int width, int height);

}  // namespace kvtdec
