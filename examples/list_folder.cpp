// Lists the files and links in a folder and in all folders below it, with permissions and time of last
// change:
//
//     list_folder FOLDER

#include "support/HostPath.hpp"

#include <pkgcore/pkgcore.hpp>

#include <boost/date_time/posix_time/posix_time.hpp>

#include <algorithm>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string details(opc::FileSystemOps& files, const opc::ustring& path) {
    try {
        std::ostringstream text;
        text << std::oct << files.getPermissions(path) << "  " << files.getLastModifiedTime(path);
        return text.str();
    } catch (const opc::Exception& failure) {
        return failure.what();  // gone since it was listed, for example
    }
}

/// False if a folder below could not be read; the others are listed all the same.
bool list(opc::FileSystemOps& files, const opc::ustring& folder) {
    std::vector<opc::ustring> paths;
    boost::system::error_code ec;
    files.getFiles(folder, paths, true, ec);
    std::sort(paths.begin(), paths.end());
    for (const opc::ustring& path : paths) {
        // true: U+FFFD for what has no form in UTF-8, instead of an exception
        std::cout << details(files, path) << "  " << opc::detail::toUTF8String(path, true) << "\n";
    }
    if (ec) {
        std::cerr << "list_folder: the listing is not complete: " << ec.message() << "\n";
    }
    return !ec.failed();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: list_folder FOLDER\n";
        return 2;
    }
    try {
        const opc::ustring folder = pathFromHost(argv[1]);
        const opc::FileSystemOpsSelector selector;
        return list(selector.getForPath(folder), folder) ? 0 : 1;
    } catch (const std::exception& failure) {
        std::cerr << "list_folder: " << failure.what() << "\n";
        return 1;
    }
}
