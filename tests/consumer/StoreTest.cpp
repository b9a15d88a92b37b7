// What the writer of a store does: the installed suite on a store that is no part of the library, which can
// only be read.

#include <pkgcore/testing/FaultProvider.hpp>
#include <pkgcore/testing/ProviderConformance.hpp>

#include <pkgcore/portable/storage/ProviderParts.hpp>

#include <gtest/gtest.h>

namespace {

using namespace foundation::storage::provider;
namespace conformance = foundation::storage::conformance;
namespace vfs = foundation::storage::vfs;

const conformance::Contents kPoems{{u"spring/rain", "drop by drop"}, {u"winter", ""}};

class PoemStore : public Provider {
public:
    Traits traits() const override { return {}; }

    std::optional<Item> find(const Path& path) override {
        const bool isFile = kPoems.count(path.text()) == 1;
        const bool isFolder = path.isRoot() || path.text() == u"spring";
        Item item;
        item.kind = isFile ? Kind::File : Kind::Folder;
        item.isWritable = false;
        return isFile || isFolder ? std::optional<Item>(item) : std::nullopt;
    }

    std::unique_ptr<Lister> list(const Path& folder) override {
        const std::optional<Item> found = find(folder);
        require(found && found->kind == Kind::Folder, vfs::ErrorCode::NotFound);
        return std::make_unique<EntriesLister>(
            folder.isRoot() ? std::vector<ListItem>{{u"winter"}, {u"spring", Kind::Folder}}
                            : std::vector<ListItem>{{u"rain"}});
    }

    std::unique_ptr<Reader> openReader(const Path& file) override {
        const auto poem = kPoems.find(file.text());
        require(poem != kPoems.end(), vfs::ErrorCode::NotFound);
        return std::make_unique<InOrder>(poem->second);
    }

private:
    /// Its traits promise no more.
    class InOrder : public Reader {
    public:
        explicit InOrder(const std::string& text) : bytes_(text) {}
        std::size_t read(char* out, std::size_t count) override { return bytes_.read(out, count); }
        std::optional<std::uint64_t> size() const override { return bytes_.size(); }

    private:
        BytesReader bytes_;
    };
};

TEST(PoemStore, ShowsAFaultAsABrokenStream) {
    const auto store = std::make_shared<conformance::FaultProvider>(std::make_shared<PoemStore>());
    const auto storage = vfs::StorageSystemBuilder().mount(u"poem", store).build();
    const vfs::File rain(vfs::CanonicalAbsoluteIRI(u"poem:///spring/rain"), storage);
    store->fail({1, conformance::Verb::Read});
    vfs::ifstream stream(rain, std::ios_base::in);
    EXPECT_EQ(stream.get(), std::char_traits<char>::eof());
    EXPECT_TRUE(stream.bad());
    EXPECT_EQ(store->struck(), 1U);
}

}  // namespace

namespace foundation::storage::conformance {

INSTANTIATE_TEST_SUITE_P(
    Poems, ProviderConformance,
    testing::Values(storeFrom("poems", std::make_shared<PoemStore>, kPoems),
                    storeFrom(
                        "withoutFaults",
                        [] { return std::make_shared<FaultProvider>(std::make_shared<PoemStore>()); },
                        kPoems)),
    backendName);

}  // namespace foundation::storage::conformance
