#include "tests/conformance/model/Model.hpp"

#include "tests/conformance/model/Shown.hpp"

namespace test::model {

namespace errc = boost::system::errc;

namespace {

using Path = std::u16string;

Path parentOf(const Path& path) {
    const std::size_t slash = path.rfind(u'/');
    return slash == Path::npos ? Path() : path.substr(0, slash);
}

bool isAtOrBelow(const Path& path, const Path& other) {
    return other.empty() || path == other || path.compare(0, other.size() + 1, other + u'/') == 0;
}

bool isNoIRI(const Path& path) { return path.size() >= 3 && path.compare(path.size() - 3, 3, u"%2F") == 0; }

bool hasTarget(Call call) {
    return call == Call::Copy || call == Call::CopyReplacing || call == Call::Rename;
}

bool isStream(Call call) {
    return call == Call::Read || call == Call::Write || call == Call::Append || call == Call::Overwrite;
}

Outcome failed(errc::errc_t error) { return {make_error_code(error), std::string()}; }

}  // namespace

bool Model::leavesOpen(const Step& step) const {
    return step.call == Call::SetPermissions && isFolder(step.path);
}

Outcome Model::apply(const Step& step) {
    if (isNoIRI(step.path) || (hasTarget(step.call) && isNoIRI(step.to))) {
        return failed(errc::bad_address);
    }
    switch (step.call) {
        case Call::Read:
        case Call::List:
        case Call::ListTree:
        case Call::Exists:
        case Call::IsFile:
        case Call::IsFolder:
        case Call::GetPermissions:
        case Call::GetTime:
        case Call::LookAtEverything:
            return query(step);
        default:
            break;
    }
    const Error error = change(step);
    return error ? failed(isStream(step.call) ? errc::io_error : *error) : Outcome{{}, std::string()};
}

Outcome Model::query(const Step& step) const {
    switch (step.call) {
        case Call::Exists:
            return {{}, shown(exists(step.path))};
        case Call::IsFile:
            return {{}, shown(isFile(step.path))};
        case Call::IsFolder:
            return {{}, shown(isFolder(step.path))};
        case Call::LookAtEverything:
            return {{}, everything()};
        case Call::Read:
            return isFile(step.path) ? Outcome{{}, items_.at(step.path).content} : failed(errc::io_error);
        case Call::List:
        case Call::ListTree:
            return isFolder(step.path) ? Outcome{{}, listing(step.path, step.call == Call::ListTree)}
                                       : failed(errc::no_such_file_or_directory);
        default:
            break;
    }
    if (!exists(step.path)) {
        return failed(errc::no_such_file_or_directory);
    }
    const Item& item = items_.at(step.path);
    if (step.call == Call::GetPermissions) {
        return {{}, shown(item.isWritable)};
    }
    return {{}, item.time ? std::optional<std::string>(shown(*item.time)) : std::nullopt};
}

Model::Error Model::change(const Step& step) {
    switch (step.call) {
        case Call::CreateFolder: {
            const Error error = exists(step.path) ? Error(errc::file_exists) : obstacle(step.path);
            if (!error) items_[step.path];
            return error;
        }
        case Call::CreateFolders:
            return createFolders(step.path);
        case Call::Copy:
        case Call::CopyReplacing:
            return copy(step.path, step.to, step.call == Call::CopyReplacing);
        case Call::Rename:
            return rename(step.path, step.to);
        case Call::Remove:
        case Call::RemoveAll:
            return remove(step.path, step.call == Call::RemoveAll);
        case Call::SetPermissions:
        case Call::SetTime:
            break;
        default:
            return write(step);
    }
    if (!exists(step.path)) {
        return errc::no_such_file_or_directory;
    }
    Item& item = items_.at(step.path);
    if (step.call == Call::SetPermissions) {
        item.isWritable = step.number % 2 == 0;
    } else if (!item.isFolder) {
        item.time = timeOf(step.number);
    }
    return {};
}

Model::Error Model::obstacle(const Path& path) const {
    const Path parent = parentOf(path);
    if (isFolder(parent)) {
        return {};
    }
    if (exists(parent)) {
        return errc::file_exists;
    }
    const Error above = obstacle(parent);
    return above ? above : errc::no_such_file_or_directory;
}

Model::Error Model::createFolders(const Path& path) {
    if (isFile(path)) {
        return errc::file_exists;
    }
    if (exists(path)) {
        return {};
    }
    const Error error = createFolders(parentOf(path));
    if (!error) {
        items_[path];
    }
    return error;
}

Model::Error Model::write(const Step& step) {
    const bool isThere = isFile(step.path);
    if (isFolder(step.path) || (isThere && !items_.at(step.path).isWritable)) {
        return errc::permission_denied;
    }
    if (!isThere && step.call == Call::Overwrite) {
        return errc::no_such_file_or_directory;
    }
    if (const Error error = isThere ? Error() : obstacle(step.path)) {
        return error;
    }
    Item& item = items_[step.path];
    const std::string added = contentOf(step.number);
    if (step.call == Call::Write) {
        item.content = added;
    } else if (step.call == Call::Append) {
        item.content += added;
    } else {
        item.content.replace(0, added.size(), added);
    }
    const bool isChanged = !isThere || step.call == Call::Write || !added.empty();
    item.isFolder = false;
    item.time = isChanged ? std::nullopt : item.time;
    return {};
}

Model::Error Model::transferObstacle(const Path& from, const Path& to, bool replaces) const {
    if (isAtOrBelow(from, to) || isAtOrBelow(to, from)) {
        return errc::operation_not_supported;
    }
    if (exists(to)) {
        const bool fits = replaces && isFolder(from) == isFolder(to);
        return fits ? Error() : errc::file_exists;
    }
    return obstacle(to);
}

Model::Error Model::copy(const Path& from, const Path& to, bool replaces) {
    if (!exists(from)) {
        return errc::no_such_file_or_directory;
    }
    if (const Error error = transferObstacle(from, to, replaces)) {
        return error;
    }
    auto copies = tree(from);
    for (auto& entry : copies) {
        entry.second.time.reset();
    }
    put(copies, from, to);
    return {};
}

Model::Error Model::rename(const Path& from, const Path& to) {
    if (!exists(from)) {
        return errc::no_such_file_or_directory;
    }
    if (from == to) {
        return {};
    }
    if (const Error error = transferObstacle(from, to, true)) {
        return error;
    }
    const auto moved = tree(from);
    erase(from);
    put(moved, from, to);
    return {};
}

Model::Error Model::remove(const Path& path, bool withContents) {
    if (!exists(path)) {
        return errc::no_such_file_or_directory;
    }
    if (path.empty()) {
        return errc::operation_not_supported;
    }
    if (hasEntries(path) && !withContents) {
        return errc::directory_not_empty;
    }
    erase(path);
    return {};
}

bool Model::hasEntries(const Path& path) const { return tree(path).size() > 1; }

void Model::erase(const Path& path) {
    for (const auto& entry : tree(path)) {
        items_.erase(entry.first);
    }
}

std::map<Path, Model::Item> Model::tree(const Path& path) const {
    std::map<Path, Item> result;
    for (const auto& entry : items_) {
        if (isAtOrBelow(entry.first, path)) result.insert(entry);
    }
    return result;
}

void Model::put(const std::map<Path, Item>& tree, const Path& from, const Path& to) {
    erase(to);
    for (const auto& [path, item] : tree) {
        items_[to + path.substr(from.size())] = item;
    }
}

std::string Model::listing(const Path& path, bool recursive) const {
    std::string result;
    for (const auto& [name, item] : tree(path)) {
        if (!item.isFolder && (recursive || parentOf(name) == path)) {
            result += shown(name) + '\n';
        }
    }
    return result;
}

std::string Model::everything() const {
    std::string result;
    for (const auto& [path, item] : items_) {
        if (!path.empty()) {
            result += item.isFolder ? shownFolder(path) : shownFile(path, item.isWritable, item.content);
        }
    }
    return result;
}

}  // namespace test::model
