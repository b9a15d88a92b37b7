#pragma once

#include <pkgcore/filesystem/FileSystemOps.hpp>

#include "tests/contract/RecordingOps.hpp"

#include <functional>
#include <string>
#include <vector>

namespace contract {

/// One public operation, called in either style with fixed arguments. The calls give the result as text, "-"
/// for none.
struct FacadeOperation {
    std::string name;
    std::function<std::string(RecordingOps&)> throwing;
    /// Empty where there is no such form.
    std::function<std::string(RecordingOps&, boost::system::error_code&)> reporting;
    /// What the back end must see, and what it answers.
    std::string backEndCall;
    std::string result;
};

/// All 25 operations that can fail.
const std::vector<FacadeOperation>& facadeOperations();

/// The 19 of them that have both styles.
std::vector<FacadeOperation> facadeOperationsWithBothStyles();

}  // namespace contract
