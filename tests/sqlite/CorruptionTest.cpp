// Stores with damage in them: what is read is what was written, or an error.

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

/// Of changes: what rows say that are not verified, a header that says that only a newer SQLite writes, and a
/// table in which what is put is not found again.
bool isCodeOfDamage(ErrorCode code) {
    constexpr ErrorCode kCodes[] = {ErrorCode::NotFound,       ErrorCode::NotRecoverable,
                                    ErrorCode::AlreadyExists,  ErrorCode::AccessDenied,
                                    ErrorCode::FolderNotEmpty, ErrorCode::ReadOnlyStorage,
                                    ErrorCode::IOError};
    return std::find(std::begin(kCodes), std::end(kCodes), code) != std::end(kCodes);
}

/// Copies, moves and removes what may be damaged. True if that was noticed.
bool change(provider::Provider& store) {
    bool isNoticed = false;
    const auto attempt = [&isNoticed](const auto& act) {
        try {
            act();
        } catch (const vfs::Exception& failure) {
            isNoticed |= failure.getErrorCode() == ErrorCode::NotRecoverable;
            EXPECT_TRUE(isCodeOfDamage(failure.getErrorCode())) << failure.what();
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
    switch (random() % 8) {
        case 0:  // cut off
            bytes.resize(at);
            break;
        case 1:  // a sector of zeros
            std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at / 512 * 512),
                        std::min<std::size_t>(512, bytes.size() - at / 512 * 512), '\0');
            break;
        case 2: {  // a page in the place of another one
            const std::size_t from = random() % (bytes.size() / kPageSize) * kPageSize;
            bytes.replace(at / kPageSize * kPageSize, kPageSize, std::string(bytes, from, kPageSize));
            break;
        }
        case 3:  // some bytes
            for (std::size_t i = at; i < std::min(at + 8, bytes.size()); ++i)
                bytes[i] = static_cast<char>(random());
            break;
        case 4:  // a byte in the head of a page, where its structure is
            bytes[at / kPageSize * kPageSize + random() % 64] = static_cast<char>(random());
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
    unsigned missing = 0;  ///< something that was written is said not to be there
    unsigned untouched = 0;
    unsigned noticedByChange = 0;  ///< something could not be copied, moved or removed
};

/// Looks at everything that a store should hold and at everything that it shows.
class Look {
public:
    Look(provider::Provider& store, const Tree& truth) : store_(store), truth_(truth) {
        for (const auto& known : truth) attempt([&] { readOne(known.first, known.second); });
        attempt([&] { list(Path()); });
    }

    bool isNoticed() const noexcept { return isNoticed_; }
    bool isMissing() const noexcept { return isMissing_; }

private:
    template <typename Read>
    void attempt(Read read) {
        try {
            read();
        } catch (const vfs::Exception& failure) {
            const ErrorCode code = failure.getErrorCode();
            isMissing_ |= code == ErrorCode::NotFound;
            isNoticed_ |= code == ErrorCode::NotRecoverable;
            EXPECT_TRUE(code == ErrorCode::NotFound || code == ErrorCode::NotRecoverable) << failure.what();
        }
    }

    void readOne(const std::u16string& path, const Thing& thing) {
        const std::optional<provider::Item> item = store_.find(Path(path));
        if (!item) {
            isMissing_ = true;
            return;
        }
        const bool isFolder = item->kind == provider::Kind::Folder;
        EXPECT_TRUE(isFolder == thing.isFolder && item->isWritable == thing.isWritable) << utf8(path);
        if (thing.isFolder || isFolder) return;
        EXPECT_TRUE(readFile(store_, path) == *thing.bytes) << "wrong bytes in " << utf8(path);
    }

    void list(const Path& folder) {
        const auto lister = store_.list(folder);
        for (auto page = lister->next(); !page.empty(); page = lister->next()) {
            for (const provider::ListItem& item : page) {
                const Path path = folder.child(item.name);
                const auto known = truth_.find(path.text());
                ASSERT_NE(known, truth_.end()) << "an invented name: " << utf8(path.text());
                if (known->second.isFolder) attempt([&] { list(path); });
            }
        }
    }

    provider::Provider& store_;
    const Tree& truth_;
    bool isNoticed_ = false;
    bool isMissing_ = false;
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
        const Look look(*store, truth_);
        tally_.noticed += look.isNoticed() ? 1U : 0U;
        tally_.missing += look.isMissing() ? 1U : 0U;
        tally_.untouched += look.isNoticed() || look.isMissing() ? 0U : 1U;
        if (!isReadOnly) {
            tally_.noticedByChange += change(*store) ? 1U : 0U;
            const Look after(*store, truthAfterChange_);
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
    RecordProperty("missing", static_cast<int>(tally_.missing));
    RecordProperty("untouched", static_cast<int>(tally_.untouched));
    RecordProperty("noticedByChange", static_cast<int>(tally_.noticedByChange));
    EXPECT_GT(tally_.refused, mutants / 50);
    EXPECT_GT(tally_.noticed, mutants / 10);
    EXPECT_LE(tally_.missing, mutants / 100 + 1);
    EXPECT_GT(tally_.noticedByChange, mutants / 4 / 20);
}

INSTANTIATE_TEST_SUITE_P(Part, SqliteDamage, testing::Range(0U, kParts));

}  // namespace

}  // namespace test
