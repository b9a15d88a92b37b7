#include <pkgcore/portable/filesystem/TreeWalk.hpp>

#include <pkgcore/portable/filesystem/PathText.hpp>

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace fl::filesystem::posix {

TreeWalk::TreeWalk(FileDescriptor root) : chain_(std::move(root)) {
    readers_.emplace_back(chain_.innermost());
}

int TreeWalk::enter(FileDescriptor folder) {
    if (chain_.isFull()) {
        readers_[chain_.outermostOpen()].park();  // its folder is closed next
    }
    if (const int error = chain_.push(std::move(folder)); error != 0) {
        return error;
    }
    readers_.emplace_back(chain_.innermost());
    return 0;
}

bool TreeWalk::closeOne() {
    if (chain_.outermostOpen() + 1 < chain_.depth()) {
        readers_[chain_.outermostOpen()].park();
    }
    return chain_.closeOne();
}

int TreeWalk::openParent() {
    const int error = chain_.openParent();
    FolderReader& reader = readers_[readers_.size() - 2];
    if (error == 0 && reader.isParked()) {
        reader.resume(chain_.parent());
    }
    return error;
}

int TreeWalk::cutOff() const noexcept {
    const FolderReader& reader = readers_[readers_.size() - 2];
    if (!reader.isAstray()) {
        return 0;
    }
    return reader.error() != 0 ? reader.error() : ESTALE;
}

void TreeWalk::leave() noexcept {
    readers_.pop_back();
    chain_.pop();
}

void TreeWalk::restart() {
    // Should that fail, nothing more is found, which ends the walk of this folder as well.
    retryInterrupted([&] { return systemCalls().lseek(folder(), 0, SEEK_SET); });
    readers_.back() = FolderReader(folder());
}

std::u16string TreeWalk::path(const std::u16string& root, std::size_t names) const {
    std::u16string result = root;
    for (std::size_t i = 0; i < names; ++i) {
        if (!result.empty() && result.back() != u'/') {
            result.push_back(u'/');
        }
        appendDecoded(readers_[i].name(), result);
    }
    return result;
}

}  // namespace fl::filesystem::posix
