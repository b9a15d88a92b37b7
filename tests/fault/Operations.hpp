#pragma once

#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"

#include <cerrno>
#include <functional>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace test {

/// What a failed run may have left.
struct Outcome {
    const TreeSnapshot& before;
    const TreeSnapshot& after;
    const TreeSnapshot& done;  ///< what a run that succeeds leaves
    bool couldCleanUp;         ///< false where the calls that clean up failed as well
};

/// One operation of the library on a small tree of its own, with what must hold after it failed at any point.
struct Operation {
    std::string name;

    /// Makes the tree, without the library.
    std::function<void(const TempTree&)> prepare;

    /// Runs the operation and gives its result, if it has one, as text. Throws what the library throws, or
    /// ReportedFailure where the library reports in another way.
    std::function<std::string(const TempTree&)> run;

    /// "", or what was lost.
    std::function<std::string(const Outcome&)> lost;

    /// Makes room again for the same operation, where a failed one may leave things in its way.
    std::function<void(const TempTree&)> recover = [](const TempTree&) {};

    /// The calls that may fail without a failure of the operation, as "call" or "call(last name of the
    /// path)", each with the reason. The operation must then have done all of its work.
    std::map<std::string, std::string> harmless;

    /// With what the calls fail: a failure of the device, of space, of this process and of rights; the
    /// library answers the last by itself here and there.
    std::vector<int> errors = {EIO, ENOSPC, EMFILE, EACCES};
};

/// A failure that the library reports otherwise than by an exception: by a null, or in the state of a stream.
struct ReportedFailure {};

std::vector<Operation> operations();

/// The same for every operation of the local back end that takes a call or two.
std::vector<Operation> localOperations();

/// The same for stores over files of the machine, through virtual storage.
std::vector<Operation> storageOperations();

void PrintTo(const Operation& operation, std::ostream* out);

}  // namespace test
