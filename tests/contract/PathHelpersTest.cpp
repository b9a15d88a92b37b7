// Which form of a path each path helper asks the platform for, and in which order.

#include <pkgcore/filesystem/PathHelpers.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

#include <gtest/gtest.h>

using namespace opc::detail;
using scripted::Calls;

namespace {

class PathHelpersContract : public testing::Test {
protected:
    scripted::Platform platform;
};

TEST_F(PathHelpersContract, ExtensionStaysInNativeForm) {
    EXPECT_EQ(getExtension(u"a"), u"extension(native(a))");
    EXPECT_EQ(platform.calls(), (Calls{"make_native_form('a', true)", "extract_extension('native(a)')"}));
}

TEST_F(PathHelpersContract, FilenameStaysInNativeForm) {
    EXPECT_EQ(getFilename(u"a"), u"filename(native(a))");
    EXPECT_EQ(platform.calls(), (Calls{"make_native_form('a', true)", "extract_filename('native(a)')"}));
}

TEST_F(PathHelpersContract, ParentIsMadeNativeAgainAndThenGeneric) {
    EXPECT_EQ(getParentPath(u"a"), u"generic(native(parent(native(a))))");
    EXPECT_EQ(platform.calls(), (Calls{"make_native_form('a', true)", "extract_parent_path('native(a)')",
                                       "make_native_form('parent(native(a))', true)",
                                       "make_generic_form('native(parent(native(a)))')"}));
}

TEST_F(PathHelpersContract, AnEmptyParentIsNotMadeNative) {
    platform.extract_parent_path.returns(std::u16string());
    EXPECT_EQ(getParentPath(u"a"), u"generic()");
    EXPECT_EQ(platform.calls(), (Calls{"make_native_form('a', true)", "extract_parent_path('native(a)')",
                                       "make_generic_form('')"}));
}

TEST_F(PathHelpersContract, NormalizedPathIsTheGenericOfTheNativeForm) {
    EXPECT_EQ(normalizePath(u"a"), u"generic(native(a))");
    EXPECT_EQ(platform.calls(), (Calls{"make_native_form('a', true)", "make_generic_form('native(a)')"}));
}

TEST_F(PathHelpersContract, NativePathIsTheAccessFormOfTheWideNativeForm) {
    EXPECT_EQ(makeNativePath(u"a"), L"access(wide(native(a)))");
    EXPECT_EQ(platform.calls(), (Calls{"make_native_form('a', true)", "to_filesystem('native(a)')",
                                       "make_access_form('wide(native(a))')"}));
}

TEST_F(PathHelpersContract, AnEmptyPathIsNeverMadeNative) {
    EXPECT_EQ(getExtension(u""), u"extension()");
    EXPECT_EQ(getFilename(u""), u"filename()");
    platform.extract_parent_path.returns(std::u16string());
    EXPECT_EQ(getParentPath(u""), u"generic()");
    EXPECT_EQ(normalizePath(u""), u"generic()");
    EXPECT_EQ(makeNativePath(u""), L"access(wide())");
    EXPECT_EQ(platform.callsTo({"make_native_form"}), Calls{});
}

TEST_F(PathHelpersContract, WhatThePlatformThrowsPassesUnchanged) {
    platform.make_native_form.throws(7);
    EXPECT_THROW(getExtension(u"a"), int);
    EXPECT_THROW(getFilename(u"a"), int);
    EXPECT_THROW(getParentPath(u"a"), int);
    EXPECT_THROW(normalizePath(u"a"), int);
    EXPECT_THROW(makeNativePath(u"a"), int);
}

}  // namespace
