#pragma once

#include "bench/sqlite/BareStore.hpp"
#include "bench/storage/Fixture.hpp"

#include <pkgcore/portable/storage/providers/sqlite/SqliteProvider.hpp>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// What the measurements of the store in an SQLite database have in common.
namespace bench {

using Names = std::vector<std::u16string>;

/// Of a small file.
inline constexpr std::size_t kBlobSize = 4096;

/// The folder in which the files of a store are.
inline constexpr char16_t kBlobFolder[] = u"folder";

/// Content of a small file.
const std::string& blob();

/// With normal durability; made if there is none.
std::shared_ptr<foundation::storage::provider::Provider> openStore(const std::filesystem::path& file);

/// A storage system with that store as "sqlite://store".
opc::VirtualFileSystemOps storageOf(const std::filesystem::path& file);

/// The journal mode that such a store has while it is open.
const std::string& journalOfStores();

/// A new store with the folder.
opc::VirtualFileSystemOps newStore(const std::filesystem::path& file);

/// The names of so many files, in no order, which is another one each time.
Names blobNames(std::size_t count);

std::u16string iriOfBlob(const std::u16string& name);

/// Makes a store with these files of `size` bytes in its folder. They are written one by one through streams,
/// where waiting for a disk costs nothing.
void makeFilledStore(const std::filesystem::path& file, const Names& names, std::size_t size);

/// The folder of a store, by bare statements.
class BareFolder {
public:
    explicit BareFolder(const std::filesystem::path& file, const std::string& journal = journalOfStores())
        : store_(file, journal), number_(store_.folder(storedName(kBlobFolder))) {}

    BareStore& store() noexcept { return store_; }
    std::int64_t number() const noexcept { return number_; }

private:
    BareStore store_;
    std::int64_t number_;
};

}  // namespace bench
