#pragma once

#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/portable/storage/ProviderTypes.hpp>
#include <pkgcore/testing/FaultProvider.hpp>

#include <boost/system/error_code.hpp>

#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace test {

namespace errc = boost::system::errc;
using boost::system::error_code;

/// What of a store the storage system has to put together from the rest.
struct StoreKind {
    std::string name;
    std::function<void(foundation::storage::provider::Traits&)> hide;
    bool movesFolders;
};
std::vector<StoreKind> storeKinds();
inline void PrintTo(const StoreKind& kind, std::ostream* out) { *out << kind.name; }

/// By path, "mem/a/b" in the store that fails and "plain/a/b" in the one that does not: the content of files,
/// with a sign for whether they are writable, and "/" for folders.
using Contents = std::map<std::string, std::string>;

/// Two stores, both with the same files: see makeFiles.
class StoreGround {
public:
    explicit StoreGround(const StoreKind& kind);

    foundation::storage::conformance::FaultProvider& store() { return *faulty_; }
    /// With calls that may fail.
    opc::FileSystemOps& ops() { return tested_.getVirtual(); }
    /// What is there, not counted and without failures.
    Contents contents();

private:
    std::shared_ptr<foundation::storage::provider::Provider> memory_;
    std::shared_ptr<foundation::storage::provider::Provider> plain_;
    std::shared_ptr<foundation::storage::conformance::FaultProvider> faulty_;
    opc::FileSystemOpsSelector tested_;
    foundation::storage::vfs::StorageSystemReference judge_;
};

/// "mem/a" as the IRI of that place.
opc::ustring toIRI(const std::string& path);

/// A change, and what may have become of what it works on when it has failed.
struct StoreOperation {
    std::string name;
    std::string from;  ///< must stay whole
    std::string to;    ///< empty where there is no other place
    bool takesSource = false;
    bool replacesFolder = false;
    bool isStream = false;  ///< failures are known as io_error alone
    std::function<error_code(opc::FileSystemOps&)> run = {};
    /// The same, but what is at the destination by now may be replaced.
    std::function<error_code(opc::FileSystemOps&)> runAgain = {};
};
std::vector<StoreOperation> storeOperations();
inline void PrintTo(const StoreOperation& operation, std::ostream* out) { *out << operation.name; }

}  // namespace test
