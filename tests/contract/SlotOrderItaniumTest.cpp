// The order of the virtual functions is part of the binary interface. CMake compiles this file where the
// compiler follows the Itanium C++ ABI.

#include <pkgcore/filesystem/FileSystemOps.hpp>
#include <pkgcore/filesystem/LocalFileSystemOps.hpp>
#include <pkgcore/filesystem/VirtualFileSystemOps.hpp>

#include "tests/support/SlotItanium.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace {

/// Names the protected operations of `Ops`.
template <typename Ops>
class Opened : public Ops {
public:
    static std::vector<std::size_t> slots() {
        return {test::slotOf(&Opened::doGetTempName),
                test::slotOf(&Opened::doGetParentPath),
                test::slotOf(&Opened::doGetFilename),
                test::slotOf(&Opened::doGetExtension),
                test::slotOf(&Opened::doAppendPath),
                test::slotOf(&Opened::doNormalizePath),
                test::slotOf(&Opened::doGetLocalPath),
                test::slotOf(&Opened::doIsAbsolutePath),
                test::slotOf(&Opened::doExists),
                test::slotOf(&Opened::doIsFile),
                test::slotOf(&Opened::doIsFolder),
                test::slotOf(&Opened::doIsSymlink),
                test::slotOf(&Opened::doGetPermissions),
                test::slotOf(&Opened::doSetPermissions),
                test::slotOf(&Opened::doGetLastModifiedTime),
                test::slotOf(&Opened::doSetLastModifiedTime),
                test::slotOf(&Opened::doGetLinkTarget),
                test::slotOf(&Opened::doGetFiles),
                test::slotOf(&Opened::doCreateInputStream),
                test::slotOf(&Opened::doCreateOutputStream),
                test::slotOf(&Opened::doCreateFolder),
                test::slotOf(&Opened::doCreateFolders),
                test::slotOf(&Opened::doCreateSymlink),
                test::slotOf(&Opened::doCopy),
                test::slotOf(&Opened::doRename),
                test::slotOf(&Opened::doRemove),
                test::slotOf(&Opened::doRemoveAll)};
    }
};

/// The destructor comes first; under this ABI it takes two places.
std::vector<std::size_t> afterTheDestructor() {
    std::vector<std::size_t> slots;
    for (std::size_t slot = 2; slot < 2 + 27; ++slot) {
        slots.push_back(slot);
    }
    return slots;
}

TEST(SlotOrder, OfTheInterfaceIsFixed) {
    EXPECT_EQ(Opened<opc::FileSystemOps>::slots(), afterTheDestructor());
}

TEST(SlotOrder, OfTheBackEndsIsThatOfTheInterface) {
    EXPECT_EQ(Opened<opc::LocalFileSystemOps>::slots(), afterTheDestructor());
    EXPECT_EQ(Opened<opc::VirtualFileSystemOps>::slots(), afterTheDestructor());
}

}  // namespace
