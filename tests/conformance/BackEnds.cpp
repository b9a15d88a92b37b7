#include "tests/conformance/BackEnds.hpp"

#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/TempTree.hpp"

namespace test {

namespace {

class LocalPlace : public Place {
public:
    opc::FileSystemOps& ops() override { return selector_.getLocal(); }
    opc::ustring folder() const override { return text(tree_.path()); }

private:
    NoDescriptorLeft noDescriptorLeft_;
    TempTree tree_;
    opc::FileSystemOpsSelector selector_;
};

class MemoryPlace : public Place {
public:
    MemoryPlace() { ops().createFolder(folder()); }

    opc::FileSystemOps& ops() override { return selector_.getVirtual(); }
    opc::ustring folder() const override { return u"mem://store/place"; }

private:
    opc::FileSystemOpsSelector selector_{
        foundation::storage::vfs::StorageSystemBuilder()
            .mount(u"mem", foundation::storage::provider::makeMemoryProvider())
            .build()};
};

class FileSchemePlace : public Place {
public:
    opc::FileSystemOps& ops() override { return selector_.getVirtual(); }
    opc::ustring folder() const override { return u"file://" + text(tree_.path()); }

private:
    NoDescriptorLeft noDescriptorLeft_;
    TempTree tree_;
    opc::FileSystemOpsSelector selector_{foundation::storage::vfs::StorageSystemBuilder().build()};
};

}  // namespace

std::vector<BackEnd> backEnds() {
    BackEnd local{"Local", [] { return std::make_unique<LocalPlace>(); }, true, false, true, true};
    BackEnd memory{
        "VirtualMemory", [] { return std::make_unique<MemoryPlace>(); }, false, true, false, false};
    BackEnd disk{"VirtualFile", [] { return std::make_unique<FileSchemePlace>(); }, false, true, false, true};
    std::vector<BackEnd> all = optionalBackEnds();
    all.insert(all.begin(), {local, memory, disk});
    return all;
}

}  // namespace test
