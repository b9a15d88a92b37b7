// The order of the virtual functions is part of the binary interface. CMake compiles this file where the
// compiler follows the Itanium C++ ABI, which tells how a pointer to a virtual member function holds the
// place in the table (2.3).

#include <pkgcore/filesystem/FileSystemOps.hpp>
#include <pkgcore/filesystem/LocalFileSystemOps.hpp>
#include <pkgcore/filesystem/VirtualFileSystemOps.hpp>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace {

/// The place in the table, counted from 0. On most hosts the pointer holds the offset plus 1, on some the
/// offset.
template <typename Member>
std::size_t slotOf(Member member) {
    std::uintptr_t stored;
    static_assert(sizeof member >= sizeof stored);
    std::memcpy(&stored, &member, sizeof stored);
    return (stored & ~std::uintptr_t{1}) / sizeof(void*);
}

/// Names the protected operations of `Ops`.
template <typename Ops>
class Opened : public Ops {
public:
    static std::vector<std::size_t> slots() {
        return {slotOf(&Opened::doGetTempName),
                slotOf(&Opened::doGetParentPath),
                slotOf(&Opened::doGetFilename),
                slotOf(&Opened::doGetExtension),
                slotOf(&Opened::doAppendPath),
                slotOf(&Opened::doNormalizePath),
                slotOf(&Opened::doGetLocalPath),
                slotOf(&Opened::doIsAbsolutePath),
                slotOf(&Opened::doExists),
                slotOf(&Opened::doIsFile),
                slotOf(&Opened::doIsFolder),
                slotOf(&Opened::doIsSymlink),
                slotOf(&Opened::doGetPermissions),
                slotOf(&Opened::doSetPermissions),
                slotOf(&Opened::doGetLastModifiedTime),
                slotOf(&Opened::doSetLastModifiedTime),
                slotOf(&Opened::doGetLinkTarget),
                slotOf(&Opened::doGetFiles),
                slotOf(&Opened::doCreateInputStream),
                slotOf(&Opened::doCreateOutputStream),
                slotOf(&Opened::doCreateFolder),
                slotOf(&Opened::doCreateFolders),
                slotOf(&Opened::doCreateSymlink),
                slotOf(&Opened::doCopy),
                slotOf(&Opened::doRename),
                slotOf(&Opened::doRemove),
                slotOf(&Opened::doRemoveAll)};
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
