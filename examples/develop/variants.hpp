// The variants of the library's code.
#pragma once

#include <string>
#include <vector>

namespace develop {

// Switches the whole library to a variant ("px" .. "h9"), or to the best one that the processor runs ("auto"). Throws
// UsageError, and then no other function of the library may be called.
void selectVariant(const std::string& name);

// Those that the processor runs, the plainest first. Leaves the best one selected.
std::vector<std::string> availableVariants();

}  // namespace develop
