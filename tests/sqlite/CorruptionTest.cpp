// Stores with damage in them: what is read, found and listed is what was written, or it is an error.

#include <pkgcore/platform/storage/Exceptions.hpp>

#include "tests/sqlite/Soundness.hpp"
#include "tests/sqlite/Tree.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <set>

namespace test {

namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using provider::Path;
using provider::WriteMode;
using vfs::ErrorCode;

constexpr std::size_t kPageSize = 4096;

/// A store with a past: everything in it was something else before, and much was removed.
void fill(provider::Provider& store) {
    for (const char16_t* const folder : {u"d", u"d/inner", u"e", u"gone"}) store.createFolder(Path(folder));
    for (unsigned i = 0; i < 5; ++i) {
        const std::u16string name(1, static_cast<char16_t>(u'a' + i));
        for (const char16_t* const folder : {u"d/", u"d/inner/", u"e/", u"gone/"}) {
            writeFile(store, folder + name, patternOf(i, i % 3 * 300U));
        }
        writeFile(store, u"e/" + name, patternOf(i + 100, 1'500U * i));
        writeFile(store, u"d/" + name, patternOf(i + 200, 50U * i), WriteMode::Append);
    }
    writeFile(store, u"large", patternOf(300, 100'000));
    writeFile(store, u"large", patternOf(301, 90'000));
    writeFile(store, u"large", patternOf(302, 10'000), WriteMode::Append);
    store.copy(Path(u"large"), Path(u"d/large"), provider::ReplacementPolicy::FailIfExists);
    store.removeTree(Path(u"gone"));
    store.move(Path(u"e"), Path(u"d/moved"), provider::ReplacementPolicy::FailIfExists);
    store.setWritable(Path(u"d/a"), false);
    store.createFolder(Path(u"guarded"));
    writeFile(store, u"guarded/f", "text");
    store.setWritable(Path(u"guarded"), false);
}

/// Copies, moves and removes what may be damaged. True if that was noticed.
bool change(provider::Provider& store) {
    bool isNoticed = false;
    const auto attempt = [&isNoticed](const auto& act) {
        try {
            act();
        } catch (const vfs::Exception& failure) {
            isNoticed = true;
            EXPECT_EQ(failure.getErrorCode(), ErrorCode::NotRecoverable) << failure.what();
        }
    };
    constexpr auto kFail = provider::ReplacementPolicy::FailIfExists;
    attempt([&] { store.copy(Path(u"d"), Path(u"copy"), kFail); });
    attempt([&] { store.copy(Path(u"large"), Path(u"d/inner/copy"), kFail); });
    attempt([&] { store.move(Path(u"large"), Path(u"moved"), kFail); });
    attempt([&] { store.move(Path(u"d/inner"), Path(u"inner"), kFail); });
    attempt([&] { store.remove(Path(u"d/b")); });
    attempt([&] { store.removeTree(Path(u"d")); });
    return isNoticed;
}

/// What there may be then, with what would be there if nothing had been changed.
Tree truthAfterChange(const Tree& truth) {
    const auto renamed = [](const std::u16string& path, const std::u16string& from,
                            const std::u16string& to) {
        const bool isBelow = path.compare(0, from.size() + 1, from + u"/") == 0;
        return path == from || isBelow ? to + path.substr(from.size()) : std::u16string();
    };
    Tree after = truth;
    for (const auto& [path, thing] : truth) {
        after.emplace(renamed(path, u"d", u"copy"), thing);
        after.emplace(renamed(path, u"large", u"moved"), thing);
        after.emplace(renamed(path, u"large", u"d/inner/copy"), thing);
        after.emplace(renamed(path, u"large", u"inner/copy"), thing);
        after.emplace(renamed(path, u"d/inner", u"inner"), thing);
    }
    after.erase(u"");
    return after;
}

/// The bytes of a store with something done to them.
std::string damaged(std::string bytes, std::mt19937& random) {
    const std::size_t at = random() % bytes.size();
    const std::size_t page = at / kPageSize * kPageSize;
    const std::size_t otherPage = random() % (bytes.size() / kPageSize) * kPageSize;
    switch (random() % 10) {
        case 0:  // cut off
            bytes.resize(random() % 2 == 0 ? at : page);
            break;
        case 1:  // a sector of zeros
            bytes.replace(at / 512 * 512, 512, 512, '\0');
            break;
        case 2:  // a page in the place of another one
            bytes.replace(page, kPageSize, std::string(bytes, otherPage, kPageSize));
            break;
        case 8:  // two pages, each in the place of the other one
            std::swap_ranges(bytes.data() + page, bytes.data() + page + kPageSize, bytes.data() + otherPage);
            break;
        case 9:  // a page of zeros
            bytes.replace(page, kPageSize, kPageSize, '\0');
            break;
        case 3:  // some bytes
            for (std::size_t i = at; i < std::min(at + 8, bytes.size()); ++i)
                bytes[i] = static_cast<char>(random());
            break;
        case 4:  // a byte in the head of a page, where its structure is
            bytes[page + random() % 64] = static_cast<char>(random());
            break;
        case 5:  // a byte
            bytes[at] = static_cast<char>(random());
            break;
        default:  // a bit
            bytes[at] = static_cast<char>(bytes[at] ^ (1 << random() % 8));
    }
    return bytes;
}

/// What reading the damaged stores has come to.
struct Tally {
    unsigned refused = 0;  ///< not even opened
    unsigned noticed = 0;  ///< something was "damaged"
    unsigned untouched = 0;
    unsigned noticedByChange = 0;  ///< something could not be copied, moved or removed
};

enum class Expect : unsigned char {
    Everything,  ///< nothing may be missing
    NothingElse  ///< what is there is right
};

/// Looks at everything that a store should hold and at everything that it shows.
class Look {
public:
    Look(provider::Provider& store, const Tree& truth, Expect expected)
        : store_(store), truth_(truth), isComplete_(expected == Expect::Everything) {
        for (const auto& known : truth) attempt([&] { readOne(known.first, known.second); });
        attempt([&] { list(Path()); });
    }

    bool isNoticed() const noexcept { return isNoticed_; }

private:
    template <typename Read>
    void attempt(Read read) {
        try {
            read();
        } catch (const vfs::Exception& failure) {
            isNoticed_ = true;
            EXPECT_EQ(failure.getErrorCode(), ErrorCode::NotRecoverable) << failure.what();
        }
    }

    void readOne(const std::u16string& path, const Thing& thing) {
        const std::optional<provider::Item> item = store_.find(Path(path));
        if (!item) {
            EXPECT_FALSE(isComplete_) << "missing: " << utf8(path);
            return;
        }
        const bool isFolder = item->kind == provider::Kind::Folder;
        EXPECT_TRUE(isFolder == thing.isFolder && item->isWritable == thing.isWritable) << utf8(path);
        if (thing.isFolder || isFolder) return;
        EXPECT_TRUE(readFile(store_, path) == *thing.bytes) << "wrong bytes in " << utf8(path);
    }

    void list(const Path& folder) {
        const auto lister = store_.list(folder);
        std::set<std::u16string> shown;
        for (auto page = lister->next(); !page.empty(); page = lister->next()) {
            for (const provider::ListItem& item : page) {
                const Path path = folder.child(item.name);
                const auto known = truth_.find(path.text());
                ASSERT_NE(known, truth_.end()) << "an invented name: " << utf8(path.text());
                EXPECT_TRUE(shown.insert(path.text()).second) << "shown twice: " << utf8(path.text());
                if (known->second.isFolder) attempt([&] { list(path); });
            }
        }
        if (isComplete_) expectAll(folder, shown);
    }

    void expectAll(const Path& folder, const std::set<std::u16string>& shown) {
        for (const auto& known : truth_) {
            const bool isInFolder = Path(known.first).parent() == folder;
            EXPECT_TRUE(!isInFolder || shown.count(known.first) == 1) << "not listed: " << utf8(known.first);
        }
    }

    provider::Provider& store_;
    const Tree& truth_;
    bool isNoticed_ = false;
    bool isComplete_;
};

class SqliteDamage : public testing::TestWithParam<unsigned> {
protected:
    SqliteDamage() {
        fill(*file_.open());
        const auto store = file_.open();
        truth_ = contentsOf(*store);
        truthAfterChange_ = truthAfterChange(truth_);
    }

    void judge(const std::string& bytes, bool isReadOnly) {
        ::unlink((file_.native() + "-journal").c_str());
        ::unlink(file_.native().c_str());
        makeFile(file_.native(), bytes);
        StoreFile::Options options = StoreFile::fast();
        options.isReadOnly = isReadOnly;
        options.mayCreate = false;
        std::shared_ptr<provider::Provider> store;
        try {
            store = file_.open(options);
        } catch (const vfs::Exception& failure) {
            const ErrorCode code = failure.getErrorCode();
            EXPECT_TRUE(code == ErrorCode::NotRecoverable || code == ErrorCode::NotSupported)
                << failure.what();
            ++tally_.refused;
            return;
        }
        const Look look(*store, truth_, Expect::Everything);
        (look.isNoticed() ? tally_.noticed : tally_.untouched) += 1;
        if (!isReadOnly) {
            tally_.noticedByChange += change(*store) ? 1U : 0U;
            const Look after(*store, truthAfterChange_, Expect::NothingElse);
        }
    }

    StoreFile file_;
    Tree truth_;
    Tree truthAfterChange_;
    Tally tally_;
};

/// Sanitizers make it ten times slower.
constexpr unsigned kMutants = kIsSanitized ? 2'000 : 20'000;

constexpr unsigned kParts = 8;

// PKGCORE_SQLITE_MUTANTS=1000000 asks for as many; PKGCORE_SQLITE_SEED for others.
TEST_P(SqliteDamage, GivesTheRightBytesOrAnError) {
    const std::string whole = contentOf(file_.native());
    std::mt19937 random(GetParam() + amountOf("PKGCORE_SQLITE_SEED", 0) * kParts);
    judge(whole, true);
    judge(whole, false);
    ASSERT_EQ(tally_.untouched, 2U) << "nothing is to be noticed yet";
    ASSERT_EQ(tally_.noticedByChange, 0U);
    const unsigned mutants = amountOf("PKGCORE_SQLITE_MUTANTS", kMutants) / kParts;
    for (unsigned mutant = 0; mutant < mutants && !HasFailure(); ++mutant) {
        SCOPED_TRACE(mutant);
        judge(damaged(whole, random), mutant % 4 != 0);
    }
    RecordProperty("refused", static_cast<int>(tally_.refused));
    RecordProperty("noticed", static_cast<int>(tally_.noticed));
    RecordProperty("untouched", static_cast<int>(tally_.untouched));
    RecordProperty("noticedByChange", static_cast<int>(tally_.noticedByChange));
    EXPECT_GT(tally_.refused, mutants / 50);
    EXPECT_GT(tally_.noticed, mutants / 10);
    EXPECT_GT(tally_.noticedByChange, mutants / 4 / 20);
}

/// Of the file, in which SQLite has what it must know of the database before it reads any page.
constexpr std::size_t kHeaderSize = 100;

TEST_P(SqliteDamage, NoOtherByteIsTakenInTheHeader) {
    const std::string whole = contentOf(file_.native());
    unsigned tried = 0;
    for (std::size_t at = GetParam(); at < kHeaderSize; at += kParts) {
        for (unsigned change = 1; change < 256; change += kIsSanitized ? 16 : 1) {
            std::string bytes = whole;
            bytes[at] = static_cast<char>(static_cast<unsigned char>(bytes[at]) ^ change);
            judge(bytes, change % 4 != 0);
            ++tried;
        }
    }
    EXPECT_EQ(tally_.refused, tried);
}

/// As long as they may be, and the same but for the end.
Tree storeLongNames(const StoreFile& file) {
    const auto store = file.open();
    for (char16_t last = u'a'; last <= u'l'; ++last) {
        writeFile(*store, std::u16string(store->traits().maxNameLength - 1, u'n') + last,
                  patternOf(last, 200));
    }
    return contentsOf(*store);
}

TEST(SqliteDamageOfLongNames, APageOfZerosHidesNone) {
    const StoreFile file;
    const Tree truth = storeLongNames(file);
    const std::string whole = contentOf(file.native());
    StoreFile::Options options = StoreFile::fast();
    options.isReadOnly = true;
    unsigned noticed = 0;
    for (std::size_t page = 0; page < whole.size(); page += kPageSize) {
        SCOPED_TRACE(page / kPageSize + 1);
        ::unlink(file.native().c_str());
        makeFile(file.native(), std::string(whole).replace(page, kPageSize, kPageSize, '\0'));
        try {
            const auto store = file.open(options);
            noticed += Look(*store, truth, Expect::Everything).isNoticed() ? 1U : 0U;
        } catch (const vfs::Exception&) {
            ++noticed;
        }
    }
    EXPECT_GE(noticed, 5U) << "the first one, those of names and those of contents";
}

INSTANTIATE_TEST_SUITE_P(Part, SqliteDamage, testing::Range(0U, kParts));

}  // namespace

}  // namespace test
