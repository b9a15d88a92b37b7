// What holds for every path, tried on random ones made of few characters, so that roots, runs and dots are
// frequent.

#include <pkgcore/portable/path/PosixSyntax.hpp>
#include <pkgcore/portable/path/WindowsSyntax.hpp>

#include "tests/reference/ReferencePaths.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>

using namespace fl::filesystem::syntax;

namespace {

using Text = std::u16string;

struct Syntax {
    const char* name;
    Text (*native)(Text, bool);
    Text (*generic)(Text);
    Text (*extension)(const Text&);
    Text (*filename)(const Text&);
    Text (*parent)(const Text&);
    Text (*join)(const Text&, const Text&, bool);
    bool (*absolute)(const Text&);
};

const Syntax kSyntaxes[] = {
    {"posix", posix::make_native_form, posix::make_generic_form, posix::extract_extension,
     posix::extract_filename, posix::extract_parent_path, posix::concatenate_pathname, posix::is_absolute},
    {"windows", windows::make_native_form, windows::make_generic_form, windows::extract_extension,
     windows::extract_filename, windows::extract_parent_path, windows::concatenate_pathname,
     windows::is_absolute},
};

class PathProperty : public testing::TestWithParam<Syntax> {
protected:
    using Check = std::function<void(const Text&)>;

    static void forManyPaths(const Check& check) {
        std::mt19937 random(20240611);
        for (int i = 0; i < 5000 && !HasFailure(); ++i) {
            check(randomPath(random));
        }
    }

private:
    static Text randomPath(std::mt19937& random) {
        static constexpr std::u16string_view kAlphabet = u"///\\\\\\..ab:C?UN\u00E4 ";
        Text path(std::uniform_int_distribution<std::size_t>(0, 24)(random), u' ');
        for (char16_t& unit : path) {
            unit = kAlphabet[std::uniform_int_distribution<std::size_t>(0, kAlphabet.size() - 1)(random)];
        }
        return path;
    }
};

TEST_P(PathProperty, TidyingTwiceIsTidyingOnce) {
    forManyPaths([&](const Text& path) {
        const Text once = GetParam().native(path, true);
        EXPECT_EQ(GetParam().native(once, true), once) << testing::PrintToString(path);
    });
}

TEST_P(PathProperty, TidyingLeavesNoRunAndNeverGrowsAPath) {
    forManyPaths([&](const Text& path) {
        const Text tidied = GetParam().native(path, true);
        const Text separator = GetParam().native(u"/", false);
        EXPECT_EQ(tidied.find(separator + separator, 1), Text::npos) << testing::PrintToString(path);
        EXPECT_LE(tidied.size(), path.size());
    });
}

TEST_P(PathProperty, ParentAndFilenameMakeThePathAgain) {
    forManyPaths([&](const Text& path) {
        const Text tidied = GetParam().native(path, true);
        const Text name = GetParam().filename(tidied);
        if (!name.empty()) {
            EXPECT_EQ(GetParam().join(GetParam().parent(tidied), name, true), tidied);
        }
    });
}

TEST_P(PathProperty, WalkingUpEnds) {
    forManyPaths([&](const Text& path) {
        Text current = GetParam().native(path, true);
        while (!current.empty()) {
            const Text parent = GetParam().parent(current);
            ASSERT_LT(parent.size(), current.size());
            current = parent;
        }
    });
}

TEST_P(PathProperty, OnlyARootHasNeitherFilenameNorParent) {
    forManyPaths([&](const Text& path) {
        const Text tidied = GetParam().native(path, true);
        if (GetParam().filename(tidied).empty()) {
            EXPECT_EQ(GetParam().parent(tidied), Text()) << testing::PrintToString(path);
        }
    });
}

TEST_P(PathProperty, ExtensionFollowsTheRuleOfNames) {
    forManyPaths([&](const Text& path) {
        const Text tidied = GetParam().native(path, true);
        EXPECT_EQ(GetParam().extension(tidied), reference::extensionOfName(GetParam().filename(tidied)));
    });
}

TEST_P(PathProperty, TheGenericFormLeadsBackToTheNativeOne) {
    forManyPaths([&](const Text& path) {
        const Text tidied = GetParam().native(path, true);
        EXPECT_EQ(GetParam().native(GetParam().generic(tidied), true), tidied);
    });
}

TEST_P(PathProperty, AParentIsAbsoluteWhereThePathIs) {
    forManyPaths([&](const Text& path) {
        const Text tidied = GetParam().native(path, true);
        const Text parent = GetParam().parent(tidied);
        if (!parent.empty()) {
            EXPECT_EQ(GetParam().absolute(parent), GetParam().absolute(tidied))
                << testing::PrintToString(path);
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Both, PathProperty, testing::ValuesIn(kSyntaxes),
                         [](const testing::TestParamInfo<Syntax>& syntax) { return syntax.param.name; });

}  // namespace
