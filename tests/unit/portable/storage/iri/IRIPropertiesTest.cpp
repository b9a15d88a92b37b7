#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/NativePaths.hpp>

#include "tests/unit/portable/storage/iri/Shown.hpp"

#include <gtest/gtest.h>

#include <random>

using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::CanonicalAbsoluteIRI;
using foundation::storage::vfs::fromAbsoluteIRI;
using foundation::storage::vfs::toAbsoluteIRI;
using test::shown;

namespace {

constexpr int kRounds = 20'000;

/// Texts in which every class of characters is frequent.
class RandomText {
public:
    explicit RandomText(unsigned seed) : random_(seed) {}

    /// A name that a store can keep.
    std::u16string name() {
        std::u16string text;
        do {
            text.clear();
            for (unsigned left = 1 + pick(12); left > 0; --left) {
                appendCharacter(text);
            }
        } while (text == u"." || text == u"..");
        return text;
    }

    unsigned pick(unsigned count) { return static_cast<unsigned>(random_() % count); }

    /// Of the characters that mean something in an IRI, and some that do not.
    std::u16string soup() {
        static const std::u16string kPieces[] = {u"/",      u"/",   u".", u"..", u"%41",
                                                 u"%20",    u"%2e", u"a", u"B",  u"\u00E9",
                                                 u"%C3%A9", u":",   u"~", u"//", u"%25"};
        std::u16string text;
        for (unsigned left = pick(12); left > 0; --left) {
            text += kPieces[pick(std::size(kPieces))];
        }
        return text;
    }

private:
    void appendCharacter(std::u16string& text) {
        switch (pick(6)) {
            case 0:
                text += u"%?#.\\ :@[]{}\"\n"[pick(14)];
                break;
            case 1:
                text += static_cast<char16_t>(0x80 + pick(0xD800 - 0x80));
                break;
            case 2:
                text += static_cast<char16_t>(0xE000 + pick(0x2000));
                break;
            case 3:
                text += static_cast<char16_t>(0xD800 + pick(0x400));
                text += static_cast<char16_t>(0xDC00 + pick(0x400));
                break;
            default:
                text += static_cast<char16_t>(u'a' + pick(26));
        }
    }

    std::mt19937 random_;
};

TEST(IRIProperties, ANameSurvivesTheWayIntoAnIRIAndBack) {
    RandomText random(1);
    const AbsoluteIRI base(u"mem://store/folder");
    for (int i = 0; i < kRounds; ++i) {
        const std::u16string name = random.name();
        const CanonicalAbsoluteIRI iri(AbsoluteIRI(base, name).toString());
        ASSERT_EQ(iri.getName(), name) << shown(iri.toString());
        ASSERT_EQ(iri.getParent().toString(), base.toString()) << shown(name);
    }
}

TEST(IRIProperties, EveryByteOfANativeNameSurvives) {
    RandomText random(2);
    for (int i = 0; i < kRounds; ++i) {
        std::u16string path = u"/" + random.name() + u"/x";
        path.insert(1, 1, static_cast<char16_t>(0xDC80 + random.pick(0x40)));
        const AbsoluteIRI iri = toAbsoluteIRI(u"file", path);
        ASSERT_EQ(fromAbsoluteIRI(iri), path) << shown(iri.toString());
    }
}

TEST(IRIProperties, ASpelledIRIIsSpelledTheSameAgain) {
    RandomText random(3);
    for (int i = 0; i < kRounds; ++i) {
        const std::u16string spelled = AbsoluteIRI(u"mem://s/" + random.soup()).toString();
        ASSERT_EQ(AbsoluteIRI(spelled).toString(), spelled);
    }
}

TEST(IRIProperties, TheCanonicalFormIsItsOwnAndStaysBelowItsRoot) {
    RandomText random(4);
    for (int i = 0; i < kRounds; ++i) {
        const std::u16string given = u"mem://s/" + random.soup();
        const CanonicalAbsoluteIRI iri(given);
        ASSERT_EQ(CanonicalAbsoluteIRI(iri.toString()), iri) << shown(given);
        ASSERT_EQ(iri.toString().substr(0, 8), u"mem://s/") << shown(given);
        const std::u16string path = iri.toString().substr(7) + u"/";
        ASSERT_EQ(path.find(u"/./"), std::u16string::npos) << shown(given);
        ASSERT_EQ(path.find(u"/../"), std::u16string::npos) << shown(given);
    }
}

TEST(IRIProperties, WalkingUpEndsAtTheRoot) {
    RandomText random(5);
    for (int i = 0; i < kRounds; ++i) {
        CanonicalAbsoluteIRI iri(u"mem://s/" + random.soup());
        int steps = 0;
        for (; iri.hasParent(); ++steps) {
            const AbsoluteIRI joined(iri.getParent(), iri.getName());
            ASSERT_EQ(joined.toString(), iri.toString());
            iri = iri.getParent();
            ASSERT_LT(steps, 20);
        }
        ASSERT_EQ(iri.toString(), u"mem://s/");
    }
}

}  // namespace
