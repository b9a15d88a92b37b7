#include "tests/conformance/model/Client.hpp"

#include <pkgcore/platform/storage/Folder.hpp>
#include <pkgcore/platform/storage/Listing.hpp>

#include "tests/conformance/model/Shown.hpp"

#include <sstream>
#include <utility>

namespace test::model {

namespace vfs = foundation::storage::vfs;
namespace errc = boost::system::errc;

Client::Client(vfs::StorageSystemReference storage, opc::ustring root, std::shared_ptr<void> keeper)
    : keeper_(std::move(keeper)),
      storage_(std::move(storage)),
      selector_(storage_),
      root_(vfs::CanonicalAbsoluteIRI(root).toString()) {}

opc::ustring Client::iri(const std::u16string& path) {
    const bool isNone = path.size() >= 3 && path.compare(path.size() - 3, 3, u"%2F") == 0;
    if (isNone) {
        return root_ + u'/' + path;
    }
    return path.empty() ? root_ : ops().appendPath(root_, path);
}

std::u16string Client::pathOf(const opc::ustring& iri) {
    const std::size_t prefix = vfs::CanonicalAbsoluteIRI(root_).getPath().size();
    const std::u16string path = vfs::CanonicalAbsoluteIRI(iri).getPath().substr(prefix);
    return path.substr(0, 1) == u"/" ? path.substr(1) : path;
}

Outcome Client::apply(const Step& step) {
    Outcome outcome{{}, std::string()};
    switch (step.call) {
        case Call::Read:
        case Call::List:
        case Call::ListTree:
        case Call::Exists:
        case Call::IsFile:
        case Call::IsFolder:
        case Call::GetPermissions:
        case Call::GetTime:
            outcome.text = query(step, outcome.code);
            break;
        case Call::LookAtEverything:
            outcome.text = everything();
            break;
        default:
            change(step, outcome.code);
            break;
    }
    if (outcome.code.failed()) {
        outcome.text = std::string();
    }
    return outcome;
}

std::string Client::query(const Step& step, Code& ec) {
    const opc::ustring path = iri(step.path);
    switch (step.call) {
        case Call::Exists:
            return shown(ops().exists(path, ec));
        case Call::IsFile:
            return shown(ops().isFile(path, ec));
        case Call::IsFolder:
            return shown(ops().isFolder(path, ec));
        case Call::GetPermissions:
            return shown((ops().getPermissions(path, ec) & opc::Perms::AnyWrite) != 0);
        case Call::GetTime:
            return shown(ops().getLastModifiedTime(path, ec));
        case Call::Read:
            return read(path, ec);
        default:
            return list(step, ec);
    }
}

void Client::change(const Step& step, Code& ec) {
    const opc::ustring path = iri(step.path);
    switch (step.call) {
        case Call::CreateFolder:
            return ops().createFolder(path, ec);
        case Call::CreateFolders:
            return ops().createFolders(path, ec);
        case Call::Copy:
            return ops().copy(path, iri(step.to), opc::Fail, ec);
        case Call::CopyReplacing:
            return ops().copy(path, iri(step.to), opc::Replace, ec);
        case Call::Rename:
            return ops().rename(path, iri(step.to), ec);
        case Call::Remove:
            return ops().remove(path, ec);
        case Call::RemoveAll:
            return ops().removeAll(path, ec);
        case Call::SetPermissions:
            return ops().setPermissions(
                path, step.number % 2 == 0 ? opc::Perms::ReadWrite : opc::Perms::ReadOnly, ec);
        case Call::SetTime:
            return ops().setLastModifiedTime(path, timeOf(step.number), ec);
        default:
            return write(step, ec);
    }
}

std::string Client::read(const opc::ustring& file, Code& ec) {
    const auto stream = ops().createInputStream(file, 0, ec);
    if (ec.failed()) {
        return {};
    }
    std::ostringstream content;
    if (stream->peek() != std::istream::traits_type::eof()) {
        content << stream->rdbuf();
    }
    if (stream->bad()) {
        ec = make_error_code(errc::state_not_recoverable);
    }
    return content.str();
}

void Client::write(const Step& step, Code& ec) {
    const std::ios_base::openmode mode = step.call == Call::Append      ? std::ios::app
                                         : step.call == Call::Overwrite ? std::ios::in
                                                                        : std::ios::trunc;
    const auto stream = ops().createOutputStream(iri(step.path), mode, ec);
    if (!ec.failed() && !(*stream << contentOf(step.number) << std::flush)) {
        ec = make_error_code(errc::state_not_recoverable);
    }
}

std::string Client::list(const Step& step, Code& ec) {
    std::vector<opc::ustring> files;
    ops().getFiles(iri(step.path), files, step.call == Call::ListTree, ec);
    std::string result;
    for (const opc::ustring& file : files) {
        result += shown(pathOf(file)) + '\n';
    }
    return result;
}

std::string Client::everything() {
    std::string result;
    const vfs::Folder top(vfs::CanonicalAbsoluteIRI(root_), storage_);
    for (const vfs::ListEntry& entry : top.listAllRecursive(u"")) {
        const opc::ustring path = entry.getLocation().toString();
        const bool isFolder = entry.getFileOrFolder().which() == 1;
        Code ec;
        const bool isWritable = (ops().getPermissions(path) & opc::Perms::AnyWrite) != 0;
        result += isFolder ? shownFolder(pathOf(path)) : shownFile(pathOf(path), isWritable, read(path, ec));
    }
    return result;
}

}  // namespace test::model
