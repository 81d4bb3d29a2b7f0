// Comparison and printing of motion vectors for the test assertions (global, for lookup by ADL).
#pragma once

#include <ostream>

#include "kvtvc.h"

inline bool operator==(KvtMotionVec a, KvtMotionVec b) { return a.dx == b.dx && a.dy == b.dy; }
inline std::ostream& operator<<(std::ostream& os, KvtMotionVec v) { return os << "(" << v.dx << ", " << v.dy << ")"; }
