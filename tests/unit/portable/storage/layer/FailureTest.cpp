#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>
#include <pkgcore/testing/FaultProvider.hpp>
#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/storage/BareProvider.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <set>

using namespace foundation::storage;
using namespace foundation::storage::conformance;

namespace {

[[noreturn]] void fail(vfs::ErrorCode code) { throw vfs::Exception(code, "on demand"); }

/// What goes wrong in a store, and when.
struct Faults {
    int writesUntilFailure = -1;
    int commitsUntilFailure = -1;
    std::uint64_t readableBytes = ~std::uint64_t{0};
    std::set<std::u16string> fixed;  ///< paths that cannot be removed
    bool changesContent = false;
    bool findFails = false;
    unsigned code = 8;

    void count(int& left) const {
        if (left == 0) fail(static_cast<vfs::ErrorCode>(code));
        if (left > 0) --left;
    }
};

class FaultyWriter : public provider::Writer {
public:
    FaultyWriter(std::unique_ptr<provider::Writer> writer, Faults& faults)
        : writer_(std::move(writer)), faults_(faults) {}
    void write(const char* bytes, std::size_t count) override {
        faults_.count(faults_.writesUntilFailure);
        std::string content(bytes, count);
        if (faults_.changesContent) content[0] = static_cast<char>(content[0] + 1);
        writer_->write(content.data(), count);
    }
    void commit() override {
        faults_.count(faults_.commitsUntilFailure);
        writer_->commit();
    }
    void discard() noexcept override { writer_->discard(); }

private:
    std::unique_ptr<provider::Writer> writer_;
    Faults& faults_;
};

class FaultyReader : public provider::Reader {
public:
    FaultyReader(std::unique_ptr<provider::Reader> reader, Faults& faults)
        : reader_(std::move(reader)), faults_(faults) {}
    std::size_t read(char* out, std::size_t count) override {
        position_ += count;
        if (position_ > faults_.readableBytes) fail(vfs::ErrorCode::IOError);
        return reader_->read(out, count);
    }
    std::optional<std::uint64_t> size() const override { return reader_->size(); }

private:
    std::unique_ptr<provider::Reader> reader_;
    Faults& faults_;
    std::uint64_t position_ = 0;
};

class FaultyProvider : public test::BareProvider {
public:
    FaultyProvider(Faults& faults, const std::function<void(Traits&)>& hide)
        : BareProvider(provider::makeMemoryProvider(),
                       [&hide](Traits& traits) {
                           traits.readsAt = traits.removesTrees = false;
                           traits.copiesFiles = traits.copiesFolders = false;
                           hide(traits);
                       }),
          faults_(faults) {}
    std::optional<provider::Item> find(const Path& path) override {
        if (faults_.findFails) fail(static_cast<vfs::ErrorCode>(faults_.code));
        return BareProvider::find(path);
    }
    std::unique_ptr<provider::Reader> openReader(const Path& file) override {
        return std::make_unique<FaultyReader>(BareProvider::openReader(file), faults_);
    }
    std::unique_ptr<provider::Writer> openWriter(const Path& file, provider::WriteMode mode) override {
        return std::make_unique<FaultyWriter>(BareProvider::openWriter(file, mode), faults_);
    }
    void remove(const Path& path) override {
        if (faults_.fixed.count(path.text()) != 0) fail(vfs::ErrorCode::AccessDenied);
        BareProvider::remove(path);
    }

private:
    Faults& faults_;
};

class StorageFailure : public testing::Test {
protected:
    Workplace storeWith(const std::function<void(provider::Traits&)>& hide) {
        return Workplace(storeFrom("faulty", [&] {
                             return std::make_shared<FaultyProvider>(faults_, hide);
                         }).makeGround());
    }
    Workplace store() {
        return storeWith([](provider::Traits& /*traits*/) {});
    }
    Workplace storeWithoutMoves() {
        return storeWith([](provider::Traits& traits) { traits.movesFiles = traits.movesFolders = false; });
    }

    Faults faults_;
};

TEST_F(StorageFailure, OfWritingShowsAsBadbitAndLeavesTheOldContent) {
    const Workplace place = store();
    ASSERT_TRUE(place.write(u"f", "old"));
    faults_.writesUntilFailure = 1;
    vfs::ofstream stream(place.file(u"f"), std::ios_base::out);
    stream << someBytes(40'000);
    EXPECT_TRUE(stream.good());
    stream << someBytes(40'000);
    EXPECT_TRUE(stream.bad());
    stream.clear();
    stream << "more" << std::flush;
    EXPECT_TRUE(stream.bad());
    EXPECT_EQ(place.read(u"f"), "old");
}

TEST_F(StorageFailure, OfPublishingShowsAsBadbitOnFlush) {
    const Workplace place = store();
    ASSERT_TRUE(place.write(u"f", "old"));
    faults_.commitsUntilFailure = 1;
    vfs::ofstream stream(place.file(u"f"), std::ios_base::out);
    stream << "first" << std::flush;
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(place.read(u"f"), "first");
    stream << " second";
    EXPECT_TRUE(stream.good());
    stream.flush();
    EXPECT_TRUE(stream.bad());
    EXPECT_EQ(place.read(u"f"), "first");
}

TEST_F(StorageFailure, OfReadingIsNotTheEndOfTheFile) {
    const Workplace place = store();
    ASSERT_TRUE(place.write(u"f", someBytes(300'000)));
    faults_.readableBytes = 200'000;
    vfs::ifstream stream(place.file(u"f"), std::ios_base::in);
    std::string bytes(1'000, '\0');
    while (stream.read(bytes.data(), 1'000)) {
    }
    EXPECT_TRUE(stream.bad());
    EXPECT_FALSE(stream.eof());
}

TEST_F(StorageFailure, OfALookUpIsNoAnswer) {
    const Workplace place = store();
    faults_.findFails = true;
    faults_.code = 7;
    PKGCORE_EXPECT_FAILURE(TemporarilyBusy, place.existence(u"f"));
    PKGCORE_EXPECT_FAILURE(TemporarilyBusy, place.file(u"f").removeFile());
}

TEST_F(StorageFailure, HasTheLocationAndAKnownCode) {
    const Workplace place = store();
    faults_.findFails = true;
    for (const unsigned code : {0u, 9u, 12u, 99u}) {
        faults_.code = code;
        try {
            place.existence(u"a b");
            ADD_FAILURE();
        } catch (const vfs::Exception& failure) {
            EXPECT_EQ(static_cast<unsigned>(failure.getErrorCode()), code < 12 ? code : 9);
            EXPECT_EQ(failure.getLocation().toString(), u"conformance://store/a%20b");
            EXPECT_STREQ(failure.what(), "on demand");
        }
    }
}

std::u16string locationOfFailure(const std::function<void()>& call) {
    try {
        call();
    } catch (const vfs::Exception& failure) {
        return failure.getLocation().toString();
    }
    return u"(none)";
}

TEST_F(StorageFailure, KeepsThePlaceThatTheStoreTells) {
    const auto faults = std::make_shared<FaultProvider>(provider::makeMemoryProvider());
    const Workplace place(storeFrom("telling", [&] { return faults; }).makeGround());
    const vfs::AbsoluteIRI elsewhere(u"conformance://store/elsewhere");
    faults->onCall(
        [&elsewhere](Verb /*verb*/) { throw vfs::Exception(ErrorCode::TemporarilyBusy, "busy", elsewhere); });
    EXPECT_EQ(locationOfFailure([&] { place.existence(u"f"); }), elsewhere.toString());
}

TEST(StorageException, HasAMessageForACodeThatItDoesNotKnow) {
    const vfs::Exception failure(static_cast<ErrorCode>(99), vfs::AbsoluteIRI(u"mem://s/f"));
    EXPECT_STREQ(failure.what(), "The storage failed");
    EXPECT_EQ(failure.getErrorCode(), static_cast<ErrorCode>(99));
}

TEST_F(StorageFailure, OfACopyNamesThePlaceThatWasAskedFor) {
    const Workplace place = store();
    place.folder(u"d/e").createFolderRecursive();
    ASSERT_TRUE(place.write(u"d/e/f", "text"));
    ASSERT_TRUE(place.write(u"g", "text"));
    EXPECT_EQ(locationOfFailure([&] { place.file(u"g").copyFile(place.file(u"missing/h"), kFail); }),
              u"conformance://store/missing/h");
    faults_.commitsUntilFailure = 0;
    EXPECT_EQ(locationOfFailure([&] { place.folder(u"d").copyFolder(place.folder(u"to"), kFail); }),
              u"conformance://store/to/e/f");
    EXPECT_EQ(locationOfFailure([&] { place.file(u"missing").copyFile(place.file(u"h"), kFail); }),
              u"conformance://store/missing");
}

TEST_F(StorageFailure, OfACopyLeavesTheOldDestinationAndNothingElse) {
    for (const Workplace& place : {store(), storeWithoutMoves()}) {
        faults_ = Faults();
        ASSERT_TRUE(place.write(u"f", someBytes(600'000)));
        ASSERT_TRUE(place.write(u"g", "old"));
        faults_.writesUntilFailure = 1;
        PKGCORE_EXPECT_FAILURE(NoSpace, place.file(u"f").copyFile(place.file(u"g"), kReplace));
        PKGCORE_EXPECT_FAILURE(NoSpace, place.file(u"f").copyFile(place.file(u"new"), kFail));
        EXPECT_EQ(place.read(u"g"), "old");
        EXPECT_EQ(place.list(u""), (Names{u"f", u"g"}));
    }
}

TEST_F(StorageFailure, OfAFolderCopyLeavesTheOldFolder) {
    const Workplace place = store();
    place.folder(u"d/e").createFolderRecursive();
    place.folder(u"old").createFolder();
    ASSERT_TRUE(place.write(u"d/a", "text"));
    ASSERT_TRUE(place.write(u"d/b", "text"));
    faults_.commitsUntilFailure = 1;
    PKGCORE_EXPECT_FAILURE(NoSpace, place.folder(u"d").copyFolder(place.folder(u"old"), kReplace));
    EXPECT_EQ(place.listTree(u""), (Names{u"d/", u"d/a", u"d/b", u"d/e/", u"old/"}));
}

TEST_F(StorageFailure, OfAMoveLosesNothing) {
    const Workplace place = storeWithoutMoves();
    ASSERT_TRUE(place.write(u"f", "text"));
    faults_.commitsUntilFailure = 0;
    PKGCORE_EXPECT_FAILURE(NoSpace, place.file(u"f").moveFile(place.file(u"g"), kFail));
    EXPECT_EQ(place.read(u"f"), "text");
    EXPECT_TRUE(place.isMissing(u"g"));
}

TEST_F(StorageFailure, OfAStoreThatKeepsOtherBytesLosesNothing) {
    const Workplace place = storeWithoutMoves();
    ASSERT_TRUE(place.write(u"f", "text"));
    faults_.changesContent = true;
    PKGCORE_EXPECT_FAILURE(IOError, place.file(u"f").moveFile(place.file(u"g"), kFail));
    EXPECT_EQ(place.read(u"f"), "text");
}

TEST_F(StorageFailure, OfOneRemovalDoesNotStopTheOthers) {
    const Workplace place = store();
    place.folder(u"d/e").createFolderRecursive();
    for (const std::u16string path : {u"d/a", u"d/e/b", u"d/e/c", u"d/z"}) {
        ASSERT_TRUE(place.write(path, "text"));
    }
    faults_.fixed = {u"d/e/b"};
    PKGCORE_EXPECT_FAILURE(AccessDenied, place.folder(u"d").removeFolder(FolderRemovalPolicy::WithContents));
    EXPECT_EQ(place.listTree(u""), (Names{u"d/", u"d/e/", u"d/e/b"}));
}

TEST(StorageFailureOfListing, DoesNotStopTheRemovalOfTheRest) {
    const auto faults = std::make_shared<FaultProvider>(std::make_shared<test::BareProvider>(
        provider::makeMemoryProvider(), [](provider::Traits& traits) { traits.removesTrees = false; }));
    const Workplace place(storeFrom("listing", [&] { return faults; }).makeGround());
    place.folder(u"d/b/sub").createFolderRecursive();
    for (const char16_t* const path : {u"d/a", u"d/b/sub/f", u"d/b/z", u"d/c"}) {
        ASSERT_TRUE(place.write(path, ""));
    }
    faults->fail({3, Verb::ListNext, Effect::FailBefore, ErrorCode::AccessDenied});  // that of d/b/sub
    PKGCORE_EXPECT_FAILURE(AccessDenied, place.folder(u"d").removeFolder(FolderRemovalPolicy::WithContents));
    EXPECT_EQ(place.listTree(u"d"), (Names{u"b/", u"b/sub/", u"b/sub/f"}));
}

TEST_F(StorageFailure, OfRemovingTheSourceLeavesBothPlaces) {
    const Workplace place = storeWithoutMoves();
    ASSERT_TRUE(place.write(u"f", "text"));
    faults_.fixed = {u"f"};
    PKGCORE_EXPECT_FAILURE(AccessDenied, place.file(u"f").moveFile(place.file(u"g"), kFail));
    EXPECT_EQ(place.read(u"f"), "text");
    EXPECT_EQ(place.read(u"g"), "text");
}

}  // namespace
