// The version record of each variant.
#include "core/variant.hpp"

namespace kuv::KUV_VARIANT {
namespace {

#define KUV_TEXT(x) #x
#define KUV_TEXT_EXPANDED(x) KUV_TEXT(x)

constexpr KuvLibraryVersion recordOf(Code wanted) {
    constexpr const char* titles[] = {
#define KUV_VARIANT_ROW(code, index, set, features, flags) "kuvCV " set " (" #code ")",
#include "core/variants.def"
#undef KUV_VARIANT_ROW
    };
    return {2017, 0, 3, 55431, KUV_TEXT_EXPANDED(KUV_VARIANT), titles[static_cast<int>(wanted)], "2017.0.3 (r55431)", "Apr 12 2017"};
}

constexpr KuvLibraryVersion record = recordOf(Code::KUV_VARIANT);

}  // namespace
}  // namespace kuv::KUV_VARIANT

const KuvLibraryVersion* KUV_VARIANT_FUNCTION(kuvcvGetLibVersion)(void) { return &kuv::KUV_VARIANT::record; }
