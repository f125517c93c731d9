#include "support/cases.hpp"

namespace kuvbench {

namespace {

struct AddedPeer {
    std::string function;
    std::type_index form;
    Peer peer;
};

// Filled before main(), by files in any order.
std::vector<Case>& cases() {
    static std::vector<Case> list;
    return list;
}
std::vector<AddedPeer>& peers() {
    static std::vector<AddedPeer> list;
    return list;
}

}  // namespace

void addCase(Case added) { cases().push_back(std::move(added)); }

bool addPeer(const std::string& function, std::type_index form, Peer peer) {
    peers().push_back({function, form, std::move(peer)});
    return true;
}

std::vector<Case> allCases() {
    std::vector<Case> result = cases();
    for (Case& each : result) {
        if (each.aspect != Aspect::speed) continue;
        for (const auto& [function, form, peer] : peers()) {
            if (function != each.function || form != each.form || (peer.largeOnly && !isLarge(each.size))) continue;
            each.peers.push_back(peer);
        }
    }
    return result;
}

void* dataOf(const Case& wanted) {
    static std::shared_ptr<void> data;
    static std::string owner;
    const std::string name = std::string(wanted.form.name()) + " " + wanted.sizeName();
    if (name != owner) {
        data.reset();
        data = wanted.makeData();
        owner = name;
    }
    return data.get();
}

}  // namespace kuvbench
