#include "checkasm.h"

#include <sstream>

namespace kvt::test {

std::string Outputs::diff(const Outputs& ref, const Outputs& simd) {
    std::ostringstream os;
    if (ref.items_.size() != simd.items_.size()) {
        os << "output count " << ref.items_.size() << " vs " << simd.items_.size();
        return os.str();
    }
    for (size_t i = 0; i < ref.items_.size(); ++i) {
        const Item &a = ref.items_[i], &b = simd.items_[i];
        if (a.bytes.size() != b.bytes.size()) {
            os << a.name << ": size " << a.bytes.size() << " vs " << b.bytes.size();
            return os.str();
        }
        for (size_t k = 0; k < a.bytes.size(); ++k) {
            if (a.bytes[k] != b.bytes[k]) {
                os << a.name << ": byte " << k << " ref " << int(a.bytes[k]) << " simd " << int(b.bytes[k]);
                return os.str();
            }
        }
    }
    return {};
}

std::string table_path(const std::string& file) { return std::string(KVT_TABLES_DIR) + "/" + file; }

}  // namespace kvt::test
