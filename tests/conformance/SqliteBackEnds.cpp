#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>

#include "tests/conformance/BackEnds.hpp"
#include "tests/support/DescriptorCount.hpp"
#include "tests/support/storage/StoreFile.hpp"

namespace test {

namespace {

class SqlitePlace : public Place {
public:
    SqlitePlace() { ops().createFolder(folder()); }

    opc::FileSystemOps& ops() override { return selector_.getVirtual(); }
    opc::ustring folder() const override { return u"sqlite://store/place"; }

private:
    NoDescriptorLeft noDescriptorLeft_;
    StoreFile file_;
    opc::FileSystemOpsSelector selector_{
        foundation::storage::vfs::StorageSystemBuilder().mount(u"sqlite", u"store", file_.open()).build()};
};

}  // namespace

std::vector<BackEnd> optionalBackEnds() {
    return {{"VirtualSqlite", [] { return std::make_unique<SqlitePlace>(); }, false, false, false}};
}

}  // namespace test
