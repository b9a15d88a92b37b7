#pragma once

#include "tests/fault/Operations.hpp"

#include <map>
#include <string>

/// What must hold after a failed operation, and which failures nobody needs to be told of.
namespace test {

bool isTemporary(const std::string& name);
bool isNothing(const std::string& name);

/// The words for an item that is not as it should be.
std::string differs(const std::string& name, const TreeSnapshot& found);

/// Everything is as it was, but for remains with such a name where they could not be removed: "", or the
/// difference in words.
std::string changed(const Outcome& outcome, bool (*isRemains)(const std::string&));

/// A part of a tree is gone and the rest is as it was.
std::string changedBesidesRemoval(const TreeSnapshot& before, const TreeSnapshot& after,
                                  const std::string& removed);

/// What is new is a part of what was to be made: its files whole, unless a broken one could not be removed.
std::string isNoPartOfDone(const Outcome& outcome);

/// Calls that may fail, each with the reason.
using Reasons = std::map<std::string, std::string>;

Reasons together(Reasons reasons, const Reasons& more);

extern const Reasons kCopyIsHarmless;
extern const Reasons kRemovalIsHarmless;
extern const Reasons kReadingIsHarmless;

}  // namespace test
