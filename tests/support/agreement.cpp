#include "support/agreement.hpp"

#include <sstream>

namespace kuvtest {
namespace {

std::string compareElements(const DrawnImage& got, const DrawnImage& wanted) {
    const Geometry& geometry = got.image.geometry();
    for (int r = 0; r < geometry.rows; ++r) {
        for (int at = 0; at < geometry.rowBytes; at += geometry.elementBytes) {
            const unsigned char* const a = got.image.row(r) + at;
            const unsigned char* const b = wanted.image.row(r) + at;
            if (got.same(a, b)) continue;
            std::uint64_t gotBits = 0, wantedBits = 0;
            std::memcpy(&gotBits, a, static_cast<std::size_t>(geometry.elementBytes));
            std::memcpy(&wantedBits, b, static_cast<std::size_t>(geometry.elementBytes));
            std::ostringstream text;
            text << got.image.name() << ", row " << r << " element " << at / geometry.elementBytes << ": got " << gotBits << " (0x"
                 << std::hex << gotBits << "), wanted " << std::dec << wantedBits << " (0x" << std::hex << wantedBits << ")";
            return text.str();
        }
    }
    return {};
}

}  // namespace

std::string disagreement(Draw& got, Draw& wanted) {
    for (Draw* draw : {&wanted, &got}) {
        for (const DrawnImage& each : draw->images()) {
            const std::string found = each.role == Role::source ? each.image.difference(each.before)
                                                                : each.image.strayWrite(each.before);
            if (!found.empty()) return found;
        }
    }
    for (std::size_t i = 0; i < got.images().size(); ++i) {
        const Role role = got.images()[i].role;
        if (role == Role::source || role == Role::scratch) continue;
        const std::string found = compareElements(got.images()[i], wanted.images()[i]);
        if (!found.empty()) return found;
    }
    return {};
}

}  // namespace kuvtest
