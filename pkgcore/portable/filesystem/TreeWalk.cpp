#include <pkgcore/portable/filesystem/TreeWalk.hpp>

#include <pkgcore/portable/filesystem/PathText.hpp>

#include <unistd.h>

#include <utility>

namespace fl::filesystem::posix {

TreeWalk::TreeWalk(FileDescriptor root) : chain_(std::move(root)) {
    readers_.emplace_back(chain_.innermost());
}

int TreeWalk::enter(FileDescriptor folder) {
    if (chain_.isFull()) {
        readers_[chain_.outermostOpen()].drain();  // its folder is closed next
    }
    if (const int error = chain_.push(std::move(folder)); error != 0) {
        return error;
    }
    readers_.emplace_back(chain_.innermost());
    return 0;
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
