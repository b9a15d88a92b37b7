// What a client is told when a store fails: the code, and a text with the IRI.

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/Provider.hpp>

#include "tests/e2e/VirtualTest.hpp"

#include <stdexcept>

namespace test {

namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

/// Delivers one page of two files and fails then.
class HalfALister : public provider::Lister {
public:
    std::vector<provider::ListItem> next() override {
        if (delivered_) {
            throw vfs::Exception(vfs::ErrorCode::IOError, "the cable is out");
        }
        delivered_ = true;
        return {{u"a", provider::Kind::File, false}, {u"b", provider::Kind::File, false}};
    }

private:
    bool delivered_ = false;
};

/// A store that holds one folder, its root, and fails at everything else.
class FailingStore : public provider::Provider {
public:
    std::exception_ptr failure;

    provider::Traits traits() const override {
        provider::Traits traits;
        traits.createsFolders = true;
        return traits;
    }

    std::optional<provider::Item> find(const provider::Path& path) override {
        if (path.isRoot()) {
            provider::Item root;
            root.kind = provider::Kind::Folder;
            return root;
        }
        std::rethrow_exception(failure);
    }

    std::unique_ptr<provider::Lister> list(const provider::Path& /*folder*/) override {
        return std::make_unique<HalfALister>();
    }

    std::unique_ptr<provider::Reader> openReader(const provider::Path& /*file*/) override {
        std::rethrow_exception(failure);
    }

    void createFolder(const provider::Path& /*folder*/) override { std::rethrow_exception(failure); }
};

class VirtualFailures : public ::testing::Test {
protected:
    template <typename Failure>
    void failWith(const Failure& failure) const {
        store->failure = std::make_exception_ptr(failure);
    }

    const std::shared_ptr<FailingStore> store = std::make_shared<FailingStore>();
    opc::FileSystemOpsSelector selector{vfs::StorageSystemBuilder().mount(u"broken", store).build()};
    opc::FileSystemOps& ops = selector.getForPath(u"broken:///x");
};

TEST_F(VirtualFailures, EachCodeOfAStoreArrivesWithItsWordsAndThePlace) {
    const errc::errc_t codes[] = {errc::directory_not_empty,
                                  errc::no_such_device_or_address,
                                  errc::permission_denied,
                                  errc::file_exists,
                                  errc::no_such_file_or_directory,
                                  errc::read_only_file_system,
                                  errc::file_too_large,
                                  errc::resource_unavailable_try_again,
                                  errc::no_space_on_device,
                                  errc::io_error,
                                  errc::state_not_recoverable,
                                  errc::operation_not_supported};
    for (unsigned code = 0; code < std::size(codes); ++code) {
        SCOPED_TRACE(code);
        failWith(vfs::Exception(static_cast<vfs::ErrorCode>(code), "words of the store"));
        EXPECT_TRUE(fails([&](auto&... ec) { return ops.isFile(u"broken:///x", ec...); }, codes[code],
                          "isFile failed: words of the store: broken:///x"));
    }
}

TEST_F(VirtualFailures, ALookUpThatFailsIsNeverNothing) {
    failWith(vfs::Exception(vfs::ErrorCode::IOError, "words"));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.exists(u"broken:///x", ec...); }, errc::io_error,
                      "exists failed: words: broken:///x"));
    EXPECT_TRUE(
        fails([&](auto&... ec) { return ops.copy(u"broken:///x", u"broken:///y", opc::Ignore, ec...); },
              errc::io_error, "copy failed: words: broken:///x"));
    try {
        ops.getTempName(u"broken:///");
        ADD_FAILURE() << "nothing was thrown";
    } catch (const opc::Exception& failure) {
        EXPECT_THAT(failure.what(), testing::StartsWith("getTempName failed: words: broken:///."));
        EXPECT_EQ(failure.code(), make_error_code(errc::io_error));
    }
}

TEST_F(VirtualFailures, AStoreThatCannotBeOpenedGivesNoStreamAndNoWords) {
    failWith(vfs::Exception(vfs::ErrorCode::AccessDenied, "words"));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.createInputStream(u"broken:///x", 0, ec...); },
                      errc::io_error, "createInputStream failed: "));
}

TEST_F(VirtualFailures, AListingThatFailsHalfwayKeepsWhatItHad) {
    std::vector<opc::ustring> found{u"before"};
    boost::system::error_code ec;
    ops.getFiles(u"broken:///", found, false, ec);
    EXPECT_EQ(ec, make_error_code(errc::io_error));
    EXPECT_EQ(found, (std::vector<opc::ustring>{u"before", u"broken:///a", u"broken:///b"}));
    EXPECT_TRUE(throws([&] { ops.getFiles(u"broken:///", found, false); }, make_error_code(errc::io_error),
                       "getFiles failed: the cable is out: broken:///"));
}

TEST_F(VirtualFailures, WhatIsNotOfTheStorageIsAnIOError) {
    failWith(std::runtime_error("words of somebody else"));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.createFolder(u"broken:///x", ec...); }, errc::io_error,
                      "createFolder failed: words of somebody else"));
    failWith(std::bad_alloc());
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.createFolder(u"broken:///x", ec...); }, errc::io_error,
                      "createFolder failed: Unknown error"));
}

TEST_F(VirtualFailures, WhatAStoreDoesNotDoIsNotSupportedAndSaysWhere) {
    failWith(vfs::Exception(vfs::ErrorCode::NotFound, "unused"));
    EXPECT_TRUE(reports([&](auto&... ec) { return ops.setLastModifiedTime(u"broken:///", {}, ec...); },
                        boost::system::error_code()));
    const boost::posix_time::ptime time(boost::gregorian::date(2024, 2, 29));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.setLastModifiedTime(u"broken:///", time, ec...); },
                      errc::operation_not_supported,
                      "setLastModifiedTime failed: The storage does not support this operation: broken:///"));
}

}  // namespace

}  // namespace test
