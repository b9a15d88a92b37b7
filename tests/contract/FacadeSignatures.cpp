// What holds at compile time for the interface and its types: nothing here runs.

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/filesystem/FileSystemOps.hpp>
#include <pkgcore/filesystem/LocalFileSystemOps.hpp>

#include <type_traits>

namespace signatures {

using boost::posix_time::ptime;
using opc::FileSystemOps;
using opc::LocalFileSystemOps;
using opc::ustring;
using Code = boost::system::error_code;
using InputPointer = boost::shared_ptr<std::istream>;
using OutputPointer = boost::shared_ptr<std::ostream>;
using PermsTag = opc::Perms::Perms_tag;

// Only named in operands that are never evaluated.
FileSystemOps& ops() noexcept;
const ustring& path() noexcept;
ustring& text() noexcept;
std::vector<ustring>& files() noexcept;
Code& ec() noexcept;
PermsTag perms() noexcept;
ptime when() noexcept;
opc::ExistsMode mode() noexcept;

template <typename Result, typename Actual>
constexpr bool kResult = std::is_same_v<Result, Actual>;

// Operations with the throwing form alone.
static_assert(kResult<ustring, decltype(ops().getTempName(path()))>);
static_assert(kResult<ustring, decltype(ops().getParentPath(path()))>);
static_assert(kResult<ustring, decltype(ops().getFilename(path()))>);
static_assert(kResult<ustring, decltype(ops().getExtension(path()))>);
static_assert(kResult<ustring, decltype(ops().appendPath(path(), path()))>);
static_assert(kResult<ustring, decltype(ops().normalizePath(path()))>);
static_assert(kResult<bool, decltype(ops().isAbsolutePath(path()))>);
static_assert(kResult<bool, decltype(ops().getLocalPath(path(), text()))>);
static_assert(!noexcept(ops().getTempName(path())));
static_assert(!noexcept(ops().getParentPath(path())));
static_assert(!noexcept(ops().getFilename(path())));
static_assert(!noexcept(ops().getExtension(path())));
static_assert(!noexcept(ops().appendPath(path(), path())));
static_assert(!noexcept(ops().normalizePath(path())));
static_assert(!noexcept(ops().isAbsolutePath(path())));
static_assert(!noexcept(ops().getLocalPath(path(), text())));

// The others: the throwing form promises nothing, the form with a code never throws.
static_assert(!noexcept(ops().exists(path())) && noexcept(ops().exists(path(), ec())));
static_assert(!noexcept(ops().isFile(path())) && noexcept(ops().isFile(path(), ec())));
static_assert(!noexcept(ops().isFolder(path())) && noexcept(ops().isFolder(path(), ec())));
static_assert(!noexcept(ops().isSymlink(path())) && noexcept(ops().isSymlink(path(), ec())));
static_assert(!noexcept(ops().getPermissions(path())) && noexcept(ops().getPermissions(path(), ec())));
static_assert(!noexcept(ops().setPermissions(path(), perms())) && noexcept(
    ops().setPermissions(path(), perms(), ec())));
static_assert(!noexcept(ops().getLastModifiedTime(path())) && noexcept(ops().getLastModifiedTime(path(),
                                                                                                 ec())));
static_assert(!noexcept(ops().setLastModifiedTime(path(), when())) && noexcept(
    ops().setLastModifiedTime(path(), when(), ec())));
static_assert(!noexcept(ops().getLinkTarget(path())) && noexcept(ops().getLinkTarget(path(), ec())));
static_assert(!noexcept(ops().getFiles(path(), files(), true)) && noexcept(ops().getFiles(path(), files(),
                                                                                          true, ec())));
static_assert(!noexcept(ops().createInputStream(path(), 0)) && noexcept(ops().createInputStream(path(), 0,
                                                                                                ec())));
static_assert(!noexcept(ops().createOutputStream(path(), 0)) && noexcept(ops().createOutputStream(path(), 0,
                                                                                                  ec())));
static_assert(!noexcept(ops().createFolder(path())) && noexcept(ops().createFolder(path(), ec())));
static_assert(!noexcept(ops().createFolders(path())) && noexcept(ops().createFolders(path(), ec())));
static_assert(!noexcept(ops().createSymlink(path(), path())) && noexcept(ops().createSymlink(path(), path(),
                                                                                             ec())));
static_assert(!noexcept(ops().copy(path(), path(), mode())) && noexcept(ops().copy(path(), path(), mode(),
                                                                                   ec())));
static_assert(!noexcept(ops().rename(path(), path())) && noexcept(ops().rename(path(), path(), ec())));
static_assert(!noexcept(ops().remove(path())) && noexcept(ops().remove(path(), ec())));
static_assert(!noexcept(ops().removeAll(path())) && noexcept(ops().removeAll(path(), ec())));

// Both forms give the same type.
template <typename Result, typename Throwing, typename Reporting>
constexpr bool kBothResult = kResult<Result, Throwing>&& kResult<Result, Reporting>;

static_assert(kBothResult<bool, decltype(ops().exists(path())), decltype(ops().exists(path(), ec()))>);
static_assert(kBothResult<bool, decltype(ops().isFile(path())), decltype(ops().isFile(path(), ec()))>);
static_assert(kBothResult<bool, decltype(ops().isFolder(path())), decltype(ops().isFolder(path(), ec()))>);
static_assert(kBothResult<bool, decltype(ops().isSymlink(path())), decltype(ops().isSymlink(path(), ec()))>);
static_assert(kBothResult<PermsTag, decltype(ops().getPermissions(path())),
                          decltype(ops().getPermissions(path(), ec()))>);
static_assert(kBothResult<void, decltype(ops().setPermissions(path(), perms())),
                          decltype(ops().setPermissions(path(), perms(), ec()))>);
static_assert(kBothResult<ptime, decltype(ops().getLastModifiedTime(path())),
                          decltype(ops().getLastModifiedTime(path(), ec()))>);
static_assert(kBothResult<void, decltype(ops().setLastModifiedTime(path(), when())),
                          decltype(ops().setLastModifiedTime(path(), when(), ec()))>);
static_assert(
    kBothResult<ustring, decltype(ops().getLinkTarget(path())), decltype(ops().getLinkTarget(path(), ec()))>);
static_assert(kBothResult<void, decltype(ops().getFiles(path(), files(), true)),
                          decltype(ops().getFiles(path(), files(), true, ec()))>);
static_assert(kBothResult<InputPointer, decltype(ops().createInputStream(path(), 0)),
                          decltype(ops().createInputStream(path(), 0, ec()))>);
static_assert(kBothResult<OutputPointer, decltype(ops().createOutputStream(path(), 0)),
                          decltype(ops().createOutputStream(path(), 0, ec()))>);
static_assert(
    kBothResult<void, decltype(ops().createFolder(path())), decltype(ops().createFolder(path(), ec()))>);
static_assert(
    kBothResult<void, decltype(ops().createFolders(path())), decltype(ops().createFolders(path(), ec()))>);
static_assert(kBothResult<void, decltype(ops().createSymlink(path(), path())),
                          decltype(ops().createSymlink(path(), path(), ec()))>);
static_assert(kBothResult<void, decltype(ops().copy(path(), path(), mode())),
                          decltype(ops().copy(path(), path(), mode(), ec()))>);
static_assert(
    kBothResult<void, decltype(ops().rename(path(), path())), decltype(ops().rename(path(), path(), ec()))>);
static_assert(kBothResult<void, decltype(ops().remove(path())), decltype(ops().remove(path(), ec()))>);
static_assert(kBothResult<void, decltype(ops().removeAll(path())), decltype(ops().removeAll(path(), ec()))>);

// The interface holds nothing but its table of virtual functions, and may be copied and assigned as part of
// an object.
static_assert(std::is_abstract_v<FileSystemOps> && std::has_virtual_destructor_v<FileSystemOps>);
static_assert(sizeof(FileSystemOps) == sizeof(void*));
static_assert(kResult<FileSystemOps&, decltype(ops() = ops())>);

// The local back end adds nothing and overrides everything.
static_assert(std::is_base_of_v<FileSystemOps, LocalFileSystemOps>);
static_assert(std::is_convertible_v<LocalFileSystemOps*, FileSystemOps*>);
static_assert(sizeof(LocalFileSystemOps) == sizeof(void*) && !std::is_abstract_v<LocalFileSystemOps>);
static_assert(std::is_default_constructible_v<LocalFileSystemOps>);
static_assert(std::is_copy_constructible_v<LocalFileSystemOps> &&
              std::is_copy_assignable_v<LocalFileSystemOps>);
static_assert(std::is_move_constructible_v<LocalFileSystemOps> &&
              std::is_move_assignable_v<LocalFileSystemOps>);

// Values that cross the library's border as 32-bit integers.
static_assert(std::is_enum_v<opc::ExistsMode> && sizeof(opc::ExistsMode) == 4);
static_assert(opc::Ignore == 0 && opc::Fail == 1 && opc::Replace == 2);
static_assert(std::is_convertible_v<opc::ExistsMode, int>);
static_assert(std::is_enum_v<PermsTag> && sizeof(PermsTag) == 4);
static_assert(opc::Perms::NotKnown == 0xFFFF && opc::Perms::NotKnown == 65535);
static_assert(opc::Perms::ReadOnly == 0444 && opc::Perms::ReadWrite == 0666 && opc::Perms::AnyWrite == 0222);
static_assert(std::is_convertible_v<PermsTag, int>);

// The exception: made from both parts, copied without fail, never assigned.
static_assert(std::is_base_of_v<std::runtime_error, opc::Exception>);
static_assert(std::is_convertible_v<opc::Exception*, std::runtime_error*>);
static_assert(std::is_constructible_v<opc::Exception, const std::string&, Code>);
static_assert(!std::is_default_constructible_v<opc::Exception>);
static_assert(!std::is_constructible_v<opc::Exception, const std::string&>);
static_assert(std::is_nothrow_copy_constructible_v<opc::Exception>);
static_assert(std::is_nothrow_move_constructible_v<opc::Exception>);
static_assert(std::is_nothrow_destructible_v<opc::Exception> &&
              std::has_virtual_destructor_v<opc::Exception>);
static_assert(!std::is_copy_assignable_v<opc::Exception> && !std::is_move_assignable_v<opc::Exception>);

}  // namespace signatures
