// What is wrong with a note package: a look at every part of it, one by one, with nothing recovered or passed over.
#pragma once

#include <string>
#include <vector>

namespace platform {
class FileWrapper;
}

namespace quillet {

struct PackageProblem {
    std::string entry; // of the package; "" for the package itself
    std::string message;
    friend bool operator==(const PackageProblem&, const PackageProblem&) = default;
};

// Empty for a sound package. The parts that every package has come first, then what the text names in vain, then files
// that neither the text nor its RTFD form names (which is told only where both can be read).
std::vector<PackageProblem> problemsOfPackage(const platform::FileWrapper& package);

} // namespace quillet
