// A store of one's own, mounted under a scheme of its own:
//
//     own_store NAME=TEXT ...
//
// keeps each text in a note, and then writes the IRIs of all notes with what they hold.

#include "examples/own_store/NoteStore.hpp"
#include "examples/support/HostPath.hpp"

#include <pkgcore/pkgcore.hpp>

#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using foundation::storage::vfs::StorageSystemBuilder;

void keep(opc::FileSystemOps& files, const std::string& argument) {
    const std::size_t end = argument.find('=');
    if (end == std::string::npos) {
        throw std::invalid_argument("usage: own_store NAME=TEXT ...");
    }
    const opc::ustring name = pathFromHost(argument.substr(0, end).c_str());
    const auto stream = files.createOutputStream(files.appendPath(u"note:///", name), std::ios_base::out);
    *stream << argument.substr(end + 1) << std::flush;
    if (!*stream) {
        throw std::runtime_error("a note could not be written");
    }
}

void show(opc::FileSystemOps& files) {
    std::vector<opc::ustring> paths;
    files.getFiles(u"note:///", paths, true);
    for (const opc::ustring& path : paths) {
        const auto stream = files.createInputStream(path, std::ios_base::in);
        std::cout << opc::detail::toUTF8String(path, true) << ' ' << stream->rdbuf() << '\n';
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const opc::FileSystemOpsSelector selector(
            StorageSystemBuilder().mount(u"note", std::make_shared<example::NoteStore>()).build());
        for (int i = 1; i < argc; ++i) {
            keep(selector.getVirtual(), argv[i]);
        }
        show(selector.getVirtual());
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "own_store: " << failure.what() << '\n';
        return 1;
    }
}
