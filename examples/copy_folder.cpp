// Copies a file, a link or a folder with all that it holds:
//
//     copy_folder FROM TO [--replace]
//
// Without --replace a destination that exists is an error.

#include "support/HostPath.hpp"

#include <pkgcore/pkgcore.hpp>

#include <exception>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
    const bool replace = argc == 4 && std::string(argv[3]) == "--replace";
    if (argc != 3 && !replace) {
        std::cerr << "usage: copy_folder FROM TO [--replace]\n";
        return 2;
    }
    try {
        const opc::ustring from = pathFromHost(argv[1]);
        const opc::ustring to = pathFromHost(argv[2]);
        const opc::FileSystemOpsSelector selector;
        selector.getForPath(from).copy(from, to, replace ? opc::Replace : opc::Fail);
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "copy_folder: " << failure.what() << "\n";
        return 1;
    }
}
