#include "tests/fault/StoreOperations.hpp"

#include <pkgcore/platform/storage/Folder.hpp>
#include <pkgcore/platform/storage/Listing.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include "tests/support/storage/BareProvider.hpp"

#include <algorithm>
#include <array>
#include <functional>
#include <string_view>

namespace test {

namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

using Run = std::function<error_code(opc::FileSystemOps&)>;

vfs::StorageSystemReference storageOf(std::shared_ptr<provider::Provider> store,
                                      std::shared_ptr<provider::Provider> plain) {
    return vfs::StorageSystemBuilder()
        .mount(u"mem", std::move(store))
        .mount(u"plain", std::move(plain))
        .build();
}

error_code write(opc::FileSystemOps& ops, const std::string& path, const std::string& content, int mode) {
    error_code ec;
    const auto stream = ops.createOutputStream(toIRI(path), mode, ec);
    if (ec.failed()) {
        return ec;
    }
    *stream << content << std::flush;
    return stream->good() ? error_code() : make_error_code(errc::io_error);
}

void makeTree(opc::FileSystemOps& ops, const std::string& top) {
    ops.createFolders(toIRI(top + "/sub/deep"));
    ops.createFolder(toIRI(top + "/void"));
    write(ops, top + "/a", top + "A", 0);
    write(ops, top + "/sub/b", top + "B", 0);
    write(ops, top + "/sub/deep/c", "", 0);
    ops.setPermissions(toIRI(top + "/sub/deep/c"), opc::Perms::ReadOnly);
    write(ops, top + "/z", top + "Z", 0);
}

/// file, old and readonly: files; empty, from and full: folders, the last two with something in them.
void makeFiles(opc::FileSystemOps& ops, const std::string& store) {
    static const std::string large = "new" + std::string(300'000, 'n');
    write(ops, store + "/file", large, 0);
    write(ops, store + "/old", "old", 0);
    write(ops, store + "/readonly", "read", 0);
    ops.setPermissions(toIRI(store + "/readonly"), opc::Perms::ReadOnly);
    ops.createFolder(toIRI(store + "/empty"));
    makeTree(ops, store + "/from");
    ops.createFolder(toIRI(store + "/full"));
    write(ops, store + "/full/a", "old A", 0);
    write(ops, store + "/full/y", "old Y", 0);
}

/// Long ones as their size and a hash. Read piece by piece: the files are looked at again and again.
std::string contentOf(opc::FileSystemOps& ops, const opc::ustring& iri) {
    const auto stream = ops.createInputStream(iri, 0);
    const char mark = ops.getPermissions(iri) == opc::Perms::ReadWrite ? '+' : '-';
    std::array<char, 32'768> piece;
    std::size_t size = 0;
    std::size_t hash = 0;
    do {
        stream->read(piece.data(), piece.size());
        const auto count = static_cast<std::size_t>(stream->gcount());
        size += count;
        hash = hash * 31 + std::hash<std::string_view>()({piece.data(), count});
    } while (stream->good());
    return mark + (size <= 100 ? std::string(piece.data(), size)
                               : std::to_string(size) + ' ' + std::to_string(hash));
}

void addContents(const vfs::StorageSystemReference& storage, const std::string& store, Contents& contents) {
    opc::FileSystemOpsSelector selector(storage);
    const vfs::CanonicalAbsoluteIRI root(toIRI(store));
    for (const vfs::ListEntry& entry : vfs::Folder(root, storage).listAllRecursive(u"")) {
        const opc::ustring iri = entry.getLocation().toString();
        const std::string path(iri.begin() + static_cast<std::ptrdiff_t>(root.toString().size()), iri.end());
        const bool isFolder = entry.getFileOrFolder().which() == 1;
        contents[store + '/' + path] = isFolder ? "/" : contentOf(selector.getVirtual(), iri);
    }
}

Run copies(const std::string& from, const std::string& to, opc::ExistsMode mode) {
    return [=](opc::FileSystemOps& ops) {
        error_code ec;
        ops.copy(toIRI(from), toIRI(to), mode, ec);
        return ec;
    };
}

void addCopies(std::vector<StoreOperation>& all, const std::string& suffix, const std::string& from,
               const std::string& to) {
    const auto add = [&](const char* name, const std::string& source, const std::string& target,
                         opc::ExistsMode mode) {
        StoreOperation operation{name + suffix, from + source, to + target};
        operation.replacesFolder = target == "/full";
        operation.run = copies(operation.from, operation.to, mode);
        operation.runAgain = copies(operation.from, operation.to, opc::Replace);
        all.push_back(operation);
    };
    add("CopyFile", "/file", "/new", opc::Fail);
    add("CopyReadOnlyFile", "/readonly", "/new", opc::Fail);
    add("CopyFileOver", "/file", "/old", opc::Replace);
    add("CopyFolder", "/from", "/new", opc::Fail);
    add("CopyFolderOver", "/from", "/full", opc::Replace);
}

void addMoves(std::vector<StoreOperation>& all, const std::string& suffix, const std::string& from,
              const std::string& to) {
    const auto add = [&](const char* name, const std::string& source, const std::string& target) {
        StoreOperation operation{name + suffix, from + source, to + target, true};
        operation.replacesFolder = target == "/full";
        operation.run = operation.runAgain = [operation](opc::FileSystemOps& ops) {
            error_code ec;
            ops.rename(toIRI(operation.from), toIRI(operation.to), ec);
            return ec;
        };
        all.push_back(operation);
    };
    add("MoveFile", "/file", "/new");
    add("MoveFileOver", "/file", "/old");
    add("MoveReadOnlyFileOver", "/readonly", "/old");
    add("MoveFolder", "/from", "/new");
    add("MoveFolderOver", "/from", "/full");
}

void addRemovals(std::vector<StoreOperation>& all) {
    const auto add = [&](const char* name, const std::string& path, bool withContents) {
        StoreOperation operation{name, path, "", true};
        operation.run = operation.runAgain = [=](opc::FileSystemOps& ops) {
            error_code ec;
            withContents ? ops.removeAll(toIRI(path), ec) : ops.remove(toIRI(path), ec);
            return ec;
        };
        all.push_back(operation);
    };
    add("RemoveFile", "mem/file", false);
    add("RemoveEmptyFolder", "mem/empty", false);
    add("RemoveAllOfAFile", "mem/readonly", true);
    add("RemoveAllOfAFolder", "mem/from", true);
}

void addWrites(std::vector<StoreOperation>& all) {
    const auto add = [&](const char* name, const std::string& path, int mode) {
        StoreOperation operation{name, "mem/from", path, false, false, true};
        operation.run = operation.runAgain = [=](opc::FileSystemOps& ops) {
            return write(ops, path, std::string(200'000, 'w'), mode);
        };
        all.push_back(operation);
    };
    add("Write", "mem/new", 0);
    add("WriteOver", "mem/old", 0);
    add("WriteInto", "mem/file", std::ios::in);
}

}  // namespace

std::vector<StoreKind> storeKinds() {
    using provider::Traits;
    const auto hideTransfers = [](Traits& traits) {
        traits.copiesFiles = traits.copiesFolders = traits.movesFiles = traits.movesFolders = false;
    };
    return {
        {"DoesAll", [](Traits& /*traits*/) {}, true},
        {"CopiesNothing", [](Traits& traits) { traits.copiesFiles = traits.copiesFolders = false; }, true},
        {"MovesFilesAlone", [](Traits& traits) { traits.copiesFolders = traits.movesFolders = false; },
         false},
        {"CopiesAndMovesNothing", hideTransfers, false},
        {"DoesTheNecessary",
         [hideTransfers](Traits& traits) {
             hideTransfers(traits);
             traits.readsAt = traits.appends = traits.removesTrees = traits.setsLastModified = false;
         },
         false},
    };
}

StoreGround::StoreGround(const StoreKind& kind)
    : memory_(provider::makeMemoryProvider()),
      plain_(provider::makeMemoryProvider()),
      faulty_(std::make_shared<foundation::storage::conformance::FaultProvider>(
          std::make_shared<BareProvider>(memory_, kind.hide))),
      tested_(storageOf(faulty_, plain_)),
      judge_(storageOf(memory_, plain_)) {
    opc::FileSystemOpsSelector selector(judge_);
    makeFiles(selector.getVirtual(), "mem");
    makeFiles(selector.getVirtual(), "plain");
}

Contents StoreGround::contents() {
    Contents contents;
    addContents(judge_, "mem", contents);
    addContents(judge_, "plain", contents);
    return contents;
}

opc::ustring toIRI(const std::string& path) {
    const std::size_t end = std::min(path.find('/'), path.size());
    const std::string iri = path.substr(0, end) + "://store/" + path.substr(std::min(end + 1, path.size()));
    return opc::ustring(iri.begin(), iri.end());
}

std::vector<StoreOperation> storeOperations() {
    std::vector<StoreOperation> all;
    addCopies(all, "Within", "mem", "mem");
    addCopies(all, "Into", "plain", "mem");
    addCopies(all, "OutOf", "mem", "plain");
    addMoves(all, "Within", "mem", "mem");
    addMoves(all, "Into", "plain", "mem");
    addMoves(all, "OutOf", "mem", "plain");
    addRemovals(all);
    addWrites(all);
    return all;
}

}  // namespace test
