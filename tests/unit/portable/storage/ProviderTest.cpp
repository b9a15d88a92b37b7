#include <pkgcore/portable/storage/Provider.hpp>

#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include <gtest/gtest.h>

using namespace foundation::storage;

namespace {

class SmallestProvider : public provider::Provider {
public:
    provider::Traits traits() const override { return {}; }
    std::optional<provider::Item> find(const provider::Path& /*path*/) override { return std::nullopt; }
    std::unique_ptr<provider::Lister> list(const provider::Path& /*folder*/) override { return nullptr; }
    std::unique_ptr<provider::Reader> openReader(const provider::Path& /*file*/) override { return nullptr; }
};

class SmallestReader : public provider::Reader {
public:
    std::size_t read(char* /*out*/, std::size_t /*count*/) override { return 0; }
    std::optional<std::uint64_t> size() const override { return std::nullopt; }
};

TEST(Provider, RefusesEveryVerbThatItDoesNotHave) {
    SmallestProvider store;
    const provider::Path path(u"a");
    const auto policy = provider::ReplacementPolicy::FailIfExists;
    PKGCORE_EXPECT_FAILURE(NotSupported, store.openWriter(path, provider::WriteMode::Create));
    PKGCORE_EXPECT_FAILURE(NotSupported, store.createFolder(path));
    PKGCORE_EXPECT_FAILURE(NotSupported, store.remove(path));
    PKGCORE_EXPECT_FAILURE(NotSupported, store.removeTree(path));
    PKGCORE_EXPECT_FAILURE(NotSupported, store.copy(path, path, policy));
    PKGCORE_EXPECT_FAILURE(NotSupported, store.move(path, path, policy));
    PKGCORE_EXPECT_FAILURE(NotSupported, store.setWritable(path, true));
    PKGCORE_EXPECT_FAILURE(NotSupported, store.setLastModified(path, boost::posix_time::ptime()));
    EXPECT_NO_THROW(store.sync(path)) << "nothing is waiting for the disk";
    PKGCORE_EXPECT_FAILURE(NotSupported, SmallestReader().readAt(0, nullptr, 0));
}

}  // namespace
