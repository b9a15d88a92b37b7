// Every public operation on every kind of item, by every back end: the code, the result and what is there
// afterwards are the same, but for the differences that stand here and in docs/errors.md.

#include "tests/conformance/BackEndCalls.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

namespace test {

namespace {

namespace errc = boost::system::errc;

using Codes = std::set<int>;

bool isOneOf(const std::string& text, const std::set<std::string>& texts) { return texts.count(text) == 1; }
bool beginsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

bool isFile(const std::string& name) {
    return isOneOf(name, {"file", "other", "full/inner", "full/deep/leaf"});
}
bool isFolder(const std::string& name) { return isOneOf(name, {"empty", "full", "full/deep"}); }
bool isAtOrBelow(const std::string& one, const std::string& other) {
    return one == other || beginsWith(one, other + '/');
}
bool isTransfer(const Call& call) { return call.name == "rename" || beginsWith(call.name, "copy"); }

bool namesNothing(const Call& call) { return call.from.empty() || (isTransfer(call) && call.to.empty()); }
bool hasALongName(const Call& call) { return call.from == kLongName || call.to == kLongName; }
bool removesTheRoot(const Call& call) { return call.from == "/"; }
bool looksForALongLink(const Call& call) { return call.name == "isSymlink" && hasALongName(call); }
bool needsLinks(const Call& call) { return isOneOf(call.name, {"getLinkTarget", "createSymlink"}); }
bool setsNoTime(const Call& call) { return call.name == "setLastModifiedTime none"; }
bool setsATimeThatIsRefused(const Call& call) { return call.name == "setLastModifiedTime endless"; }
bool overlaps(const Call& call) {
    return isTransfer(call) && (isFile(call.from) || isFolder(call.from)) &&
           (isAtOrBelow(call.from, call.to) || isAtOrBelow(call.to, call.from));
}
bool wantsAFolderAtAFile(const Call& call) {
    return call.from == "file/below" || call.to == "file/below" ||
           (isFile(call.from) && (beginsWith(call.name, "getFiles") || call.name == "createFolders"));
}
bool putsOneKindOntoTheOther(const Call& call) {
    return (isFile(call.from) && isFolder(call.to)) || (isFolder(call.from) && isFile(call.to));
}
bool putsAFolderOntoAFolder(const Call& call) { return isFolder(call.from) && isFolder(call.to); }

/// Calls that the first that fits is about, and how they may end.
struct Difference {
    const char* name;
    bool (*concerns)(const Call&);
    Codes local;
    Codes other;
};

const Difference kDifferences[] = {
    {"links are native alone",
     needsLinks,
     {errc::success, errc::no_such_file_or_directory, errc::invalid_argument, errc::file_exists,
      errc::not_a_directory, errc::filename_too_long},
     {errc::operation_not_supported}},
    {"nobody looks for a link in a store", looksForALongLink, {errc::filename_too_long}, {errc::success}},
    {"the empty path is no IRI",
     namesNothing,
     {errc::success, errc::no_such_file_or_directory, errc::invalid_argument, errc::io_error},
     {errc::bad_address}},
    {"the root removed", removesTheRoot, {errc::device_or_resource_busy}, {errc::operation_not_supported}},
    {"a time that is refused",
     setsATimeThatIsRefused,
     {errc::invalid_argument},
     {errc::operation_not_supported, errc::no_such_file_or_directory}},
    {"no time for a missing item is nothing to do",
     setsNoTime,
     {errc::success},
     {errc::no_such_file_or_directory, errc::operation_not_supported}},
    {"a name that is too long", hasALongName, {errc::filename_too_long}, {errc::operation_not_supported}},
    {"onto or into itself, or onto what holds it",
     overlaps,
     {errc::success, errc::file_exists, errc::invalid_argument, errc::not_a_directory, errc::is_a_directory,
      errc::directory_not_empty, errc::no_such_file_or_directory},
     {errc::operation_not_supported}},
    {"a file where a folder is wanted",
     wantsAFolderAtAFile,
     {errc::not_a_directory},
     {errc::no_such_file_or_directory, errc::file_exists}},
    {"one kind onto the other",
     putsOneKindOntoTheOther,
     {errc::success, errc::is_a_directory, errc::not_a_directory},
     {errc::file_exists}},
    {"a folder onto a folder",
     putsAFolderOntoAFolder,
     {errc::success, errc::directory_not_empty},
     {errc::success, errc::file_exists}},
};

const Difference* differenceFor(const Call& call) {
    const auto* const found = std::find_if(std::begin(kDifferences), std::end(kDifferences),
                                           [&call](const Difference& one) { return one.concerns(call); });
    return found == std::end(kDifferences) ? nullptr : found;
}

BackEnd backEnd(const std::string& name) {
    const std::vector<BackEnd> all = backEnds();
    return *std::find_if(all.begin(), all.end(), [&name](const BackEnd& one) { return one.name == name; });
}

const char* const kStores[] = {"VirtualMemory", "VirtualFile", "VirtualFolder"};

TEST(BackEndAgreement, EveryStoreDoesTheSame) {
    for (const Call& call : allCalls()) {
        const Outcome expected = call.on(backEnd(kStores[0]));
        EXPECT_EQ(call.on(backEnd(kStores[1])), expected) << call;
        EXPECT_EQ(call.on(backEnd(kStores[2])), expected) << call;
    }
}

/// Those over files of the machine.
TEST(BackEndAgreement, StoresWithTheLimitsOfTheHostDoTheSameWithALongName) {
    for (const Call& call : longNameCalls()) {
        EXPECT_EQ(call.on(backEnd("VirtualFolder")), call.on(backEnd("VirtualFile"))) << call;
    }
}

TEST(BackEndAgreement, NativePathsAndIRIsDoTheSameButForTheDifferences) {
    std::map<const Difference*, std::pair<Codes, Codes>> seen;
    std::vector<Call> calls = allCalls();
    const std::vector<Call> longNames = longNameCalls();
    calls.insert(calls.end(), longNames.begin(), longNames.end());
    for (const Call& call : calls) {
        const Outcome local = call.on(backEnd("Local"));
        const Outcome other = call.on(backEnd("VirtualFile"));
        if (local == other) {
            continue;
        }
        const Difference* const difference = differenceFor(call);
        ASSERT_NE(difference, nullptr) << call << "\n  " << local << "\n  " << other;
        SCOPED_TRACE(difference->name);
        EXPECT_EQ(difference->local.count(local.code.value()), 1U)
            << call << "\n  " << local << "\n  " << other;
        EXPECT_EQ(difference->other.count(other.code.value()), 1U)
            << call << "\n  " << local << "\n  " << other;
        seen[difference].first.insert(local.code.value());
        seen[difference].second.insert(other.code.value());
    }
    for (const Difference& difference : kDifferences) {
        EXPECT_EQ(seen[&difference].first, difference.local)
            << difference.name << ": not all of this happens";
        EXPECT_EQ(seen[&difference].second, difference.other)
            << difference.name << ": not all of this happens";
    }
}

TEST(BackEndAgreement, WhatAStoreRefusesChangesNothing) {
    const BackEnd store = backEnd("VirtualMemory");
    const std::string before = Scene(store).tree();
    for (const Call& call : allCalls()) {
        const Outcome outcome = call.on(store);
        if (outcome.code.failed()) {
            EXPECT_EQ(outcome.code.category(), boost::system::generic_category()) << call;
            EXPECT_EQ(outcome.tree, before) << call;
        }
    }
}

}  // namespace

}  // namespace test
