// Stores that do not keep to what a store has promised.

#include <pkgcore/portable/storage/ProviderParts.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>
#include <pkgcore/testing/FaultProvider.hpp>
#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/storage/BareProvider.hpp"

#include <gtest/gtest.h>

#include <limits>

using namespace foundation::storage;
using namespace foundation::storage::conformance;

namespace {

/// Shows one entry in every folder, whatever is there.
class ListsOneName : public test::BareProvider {
public:
    explicit ListsOneName(std::u16string name)
        : BareProvider(provider::makeMemoryProvider(),
                       [](Traits& traits) { traits.copiesFolders = traits.removesTrees = false; }),
          name_(std::move(name)) {}
    std::unique_ptr<provider::Lister> list(const Path& /*folder*/) override {
        return std::make_unique<provider::EntriesLister>(std::vector<provider::ListItem>{{name_}});
    }
    std::unique_ptr<provider::Reader> openReader(const Path& /*file*/) override {
        return std::make_unique<provider::BytesReader>("from elsewhere");
    }
    std::optional<provider::Item> find(const Path& path) override {
        provider::Item item;
        item.kind = path == Path(u"d", path.authority()) ? provider::Kind::Folder : provider::Kind::File;
        return item;
    }

private:
    std::u16string name_;
};

class StoreListing : public testing::TestWithParam<std::u16string> {
protected:
    Workplace at(const std::u16string& root) const {
        return Workplace(Ground{storage_, root, store_, provider::Path(u"", u"s"), nullptr});
    }

    std::shared_ptr<provider::Provider> store_ = std::make_shared<ListsOneName>(GetParam());
    vfs::StorageSystemReference storage_ = vfs::StorageSystemBuilder()
                                               .mount(u"bad", store_)
                                               .mount(u"good", provider::makeMemoryProvider())
                                               .build();
};

TEST_P(StoreListing, OfWhatIsNoNameIsAFailure) {
    PKGCORE_EXPECT_FAILURE(NotRecoverable, at(u"bad://s/").list(u"d"));
    PKGCORE_EXPECT_FAILURE(NotRecoverable, at(u"bad://s/").listTree(u"d"));
    PKGCORE_EXPECT_FAILURE(NotRecoverable,
                           at(u"bad://s/").folder(u"d").removeFolder(FolderRemovalPolicy::WithContents));
}

TEST_P(StoreListing, LeadsNoCopyOutOfItsFolder) {
    const Workplace good = at(u"good://s/");
    good.folder(u"in").createFolder();
    PKGCORE_EXPECT_FAILURE(NotRecoverable,
                           at(u"bad://s/").folder(u"d").copyFolder(good.folder(u"in/d"), kFail));
    EXPECT_EQ(good.everything(), (Contents{{u"in/", "(folder)"}}));
}

INSTANTIATE_TEST_SUITE_P(Names, StoreListing,
                         testing::Values(u"", u".", u"..", u"../evil", u"a/b", u"/",
                                         std::u16string(u"a\0b", 3)));

/// Says that it has read more than was wanted.
class ReadsTooMuch : public provider::BytesReader {
public:
    explicit ReadsTooMuch(std::size_t more) : BytesReader("text"), more_(more) {}
    std::size_t read(char* out, std::size_t count) override {
        return BytesReader::read(out, count), count + more_;
    }
    std::size_t readAt(std::uint64_t offset, char* out, std::size_t count) override {
        return BytesReader::readAt(offset, out, count), count + more_;
    }

private:
    std::size_t more_;
};

class HasSuchReaders : public test::BareProvider {
public:
    HasSuchReaders(std::size_t more, bool readsAt)
        : BareProvider(provider::makeMemoryProvider(),
                       [=](Traits& traits) {
                           traits.readsAt = readsAt;
                           traits.appends = traits.copiesFiles = false;
                       }),
          more_(more) {}
    std::unique_ptr<provider::Reader> openReader(const Path& /*file*/) override {
        return std::make_unique<ReadsTooMuch>(more_);
    }

private:
    std::size_t more_;
};

TEST(StoreReading, OfMoreThanWasWantedIsAFailure) {
    const std::size_t minusOne = std::numeric_limits<std::size_t>::max();
    for (const std::size_t more : {std::size_t{1}, minusOne - 100'000'000}) {
        for (const bool readsAt : {false, true}) {
            const Workplace place(storeFrom("reads", [=] {
                                      return std::make_shared<HasSuchReaders>(more, readsAt);
                                  }).makeGround());
            ASSERT_TRUE(place.write(u"f", "text"));
            vfs::ifstream stream(place.file(u"f"), std::ios_base::in);
            char bytes[8];
            EXPECT_TRUE(stream.read(bytes, sizeof bytes).bad());
            PKGCORE_EXPECT_FAILURE(IOError, place.file(u"f").copyFile(place.file(u"g"), kFail));
            EXPECT_FALSE(place.write(u"f", "x", std::ios_base::app));
            EXPECT_FALSE(place.write(u"f", "x", std::ios_base::in));
            EXPECT_EQ(place.list(u""), Names{u"f"});
        }
    }
}

/// A store out of which from one call on, or at one kind of call, come exceptions that nobody expects.
class StoreThrowing : public testing::Test {
protected:
    void throwFrom(std::size_t number) {
        store_->onCall([this, number](Verb /*verb*/) {
            if (++calls_ >= number) throw 1;
        });
        calls_ = 0;
    }
    void throwAt(Verb verb) {
        store_->onCall([verb](Verb called) {
            if (called == verb) throw 1;
        });
    }
    void behave() { store_->onCall({}); }

    Workplace at(const std::u16string& root) const {
        return Workplace(Ground{storage_, root, store_, provider::Path(u"", u"s"), nullptr});
    }

    std::size_t calls_ = 0;
    std::shared_ptr<FaultProvider> store_ = std::make_shared<FaultProvider>(provider::makeMemoryProvider());
    vfs::StorageSystemReference storage_ = vfs::StorageSystemBuilder()
                                               .mount(u"bad", store_)
                                               .mount(u"good", provider::makeMemoryProvider())
                                               .build();
};

TEST_F(StoreThrowing, SpoilsAStreamForGood) {
    const Workplace place = at(u"bad://s/");
    for (const Verb verb : {Verb::Write, Verb::Commit}) {
        for (const auto mode : {std::ios_base::out, std::ios_base::in}) {
            ASSERT_TRUE(place.write(u"f", "old"));
            vfs::ofstream stream(place.file(u"f"), mode);
            throwAt(verb);
            EXPECT_TRUE((stream << "first" << std::flush).bad());
            behave();
            stream.clear();
            EXPECT_TRUE((stream << "second" << std::flush).bad()) << "the first is missing in it";
            EXPECT_EQ(place.read(u"f"), "old");
        }
    }
}

TEST_F(StoreThrowing, EndsNoProgramThatDestroysAStream) {
    const Workplace place = at(u"bad://s/");
    for (const auto mode :
         {std::ios_base::out, std::ios_base::app, std::ios_base::in | std::ios_base::trunc}) {
        ASSERT_TRUE(place.write(u"f", "old"));
        {
            vfs::ofstream stream(place.file(u"f"), mode);
            stream << "new";
            throwAt(Verb::Commit);
        }
        behave();
        EXPECT_EQ(place.read(u"f"), "old");
    }
}

TEST_F(StoreThrowing, EndsNoProgramThatCleansUp) {
    const Workplace good = at(u"good://s/");
    good.folder(u"d").createFolder();
    ASSERT_TRUE(good.write(u"d/f", "text"));
    bool isDone = false;
    for (std::size_t number = 1; !isDone; ++number) {
        at(u"bad://s/").folder(u"d").createFolder();
        throwFrom(number);
        try {
            good.folder(u"d").copyFolder(at(u"bad://s/").folder(u"d"), kReplace);
            isDone = true;
        } catch (const int) {
            EXPECT_EQ(good.read(u"d/f"), "text");
        }
        behave();
        at(u"bad://s/").folder(u"d").removeFolder(FolderRemovalPolicy::WithContents);
    }
}

}  // namespace
