#include "support/agreement.hpp"

namespace kuvtest {
namespace {

std::string compareElements(const DrawnImage& got, const DrawnImage& wanted) {
    const Geometry& geometry = got.image.geometry();
    for (int r = 0; r < geometry.rows; ++r) {
        if (std::memcmp(got.image.row(r), wanted.image.row(r), static_cast<std::size_t>(geometry.rowBytes)) == 0) continue;
        for (int at = 0; at < geometry.rowBytes; at += geometry.elementBytes) {
            const unsigned char* const a = got.image.row(r) + at;
            const unsigned char* const b = wanted.image.row(r) + at;
            if (got.same(a, b)) continue;
            return got.image.name() + ", row " + std::to_string(r) + " element " + std::to_string(at / geometry.elementBytes) + ": " +
                   gotAndWanted(a, b, geometry.elementBytes);
        }
    }
    return {};
}

}  // namespace

std::string trespass(const Draw& draw, bool failed) {
    for (const DrawnImage& each : draw.images()) {
        const bool mayChange = each.mayChange() && !failed;
        const std::string found = mayChange ? each.image.strayWrite(each.before) : each.image.difference(each.before);
        if (!found.empty()) return found;
    }
    return {};
}

std::string disagreement(const Draw& got, const Draw& wanted) {
    for (const Draw* draw : {&wanted, &got}) {
        const std::string found = trespass(*draw, false);
        if (!found.empty()) return found;
    }
    if (got.images().size() != wanted.images().size()) return "the calls have not the same images";
    for (std::size_t i = 0; i < got.images().size(); ++i) {
        const DrawnImage& each = got.images()[i];
        if (!each.mayChange() || each.role == Role::scratch) continue;
        if (each.image.geometry().rowBytes != wanted.images()[i].image.geometry().rowBytes) return "the calls have not the same images";
        const std::string found = compareElements(each, wanted.images()[i]);
        if (!found.empty()) return found;
    }
    return {};
}

std::vector<TabledCall>& tabledCalls() {
    static std::vector<TabledCall> calls;
    return calls;
}

void printArgument(std::ostream& stream, const KuviSize& size) { stream << size.width << " x " << size.height; }
void printArgument(std::ostream& stream, const KuviRect& rect) {
    stream << rect.width << " x " << rect.height << " at " << rect.x << ", " << rect.y;
}
void printArgument(std::ostream& stream, const KuviPoint& point) { stream << point.x << ", " << point.y; }
void printArgument(std::ostream& stream, const void* address) {
    if (address == nullptr) stream << "null";
    else stream << address << ", " << Image::whereIs(address);
}

}  // namespace kuvtest
