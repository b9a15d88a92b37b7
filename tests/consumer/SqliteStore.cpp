// A program that keeps its files in a store of the library pkgcore::sqlite, and finds them there again.

#include <pkgcore/pkgcore.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/sqlite/SqliteProvider.hpp>

#include <iterator>

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

int main() {
    const std::string text = "Earl Grey\n";
    for (const bool isThere : {false, true}) {
        vfs::StorageSystemReference storage =
            vfs::StorageSystemBuilder()
                .mount(u"sqlite", u"notes", provider::openSqliteProvider(u"notes.db"))
                .build();
        const opc::FileSystemOpsSelector selector(storage);
        const opc::ustring tea = u"sqlite://notes/tea.txt";
        opc::FileSystemOps& files = selector.getForPath(tea);
        if (files.isFile(tea) != isThere) {
            return 1;
        }
        *files.createOutputStream(tea, std::ios::binary) << text << std::flush;
        const auto stream = files.createInputStream(tea, std::ios::binary);
        if (std::string(std::istreambuf_iterator<char>(*stream), {}) != text) {
            return 2;
        }
    }
    try {
        provider::openSqliteProvider(u"..");  // the exception of one library comes from the other one
        return 3;
    } catch (const vfs::Exception&) {
        return 0;
    }
}
