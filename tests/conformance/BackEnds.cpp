#include "tests/conformance/BackEnds.hpp"

#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/folder/FolderProvider.hpp>
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
    TempTree tree_{fastFolder()};
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

class FolderPlace : public Place {
public:
    FolderPlace() { ops().createFolder(folder()); }

    opc::FileSystemOps& ops() override { return selector_.getVirtual(); }
    opc::ustring folder() const override { return u"box://inbox/place"; }

private:
    NoDescriptorLeft noDescriptorLeft_;
    TempTree tree_{fastFolder()};
    opc::FileSystemOpsSelector selector_{
        foundation::storage::vfs::StorageSystemBuilder()
            .mount(u"box", u"inbox", foundation::storage::provider::makeFolderProvider(text(tree_.path())))
            .build()};
};

class FileSchemePlace : public Place {
public:
    opc::FileSystemOps& ops() override { return selector_.getVirtual(); }
    opc::ustring folder() const override { return u"file://" + text(tree_.path()); }

private:
    NoDescriptorLeft noDescriptorLeft_;
    TempTree tree_{fastFolder()};
    opc::FileSystemOpsSelector selector_{foundation::storage::vfs::StorageSystemBuilder().build()};
};

}  // namespace

std::vector<BackEnd> backEnds() {
    std::vector<BackEnd> all = {
        {"Local", [] { return std::make_unique<LocalPlace>(); }, true, true, true},
        {"VirtualMemory", [] { return std::make_unique<MemoryPlace>(); }, false, false, false},
        {"VirtualFile", [] { return std::make_unique<FileSchemePlace>(); }, false, true, false},
        {"VirtualFolder", [] { return std::make_unique<FolderPlace>(); }, false, false, false},
    };
    const std::vector<BackEnd> optional = optionalBackEnds();
    all.insert(all.end(), optional.begin(), optional.end());
    return all;
}

}  // namespace test
