#pragma once

#include "bench/sqlite/StoreFixture.hpp"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

/// Small files by the names that each way to them takes, prepared.
namespace bench {

/// Hands out what there is in equal portions, one for each sample, and begins again at the end.
template <typename Item>
class Portions {
public:
    Portions(std::vector<Item> items, std::size_t count)
        : items_(std::move(items)), size_(std::max<std::size_t>(items_.size() / count, 1)) {}

    template <typename Use>
    void next(Use use) {
        for (std::size_t i = 0; i < size_; ++i) {
            use(items_[at_]);
            at_ = at_ + 1 == items_.size() ? 0 : at_ + 1;
        }
    }

private:
    std::vector<Item> items_;
    std::size_t size_;
    std::size_t at_ = 0;
};

template <typename Form>
auto inForm(const Names& names, Form form) {
    std::vector<decltype(form(names.front()))> result;
    std::transform(names.begin(), names.end(), std::back_inserter(result), form);
    return result;
}

inline auto asStored(const Names& names) { return inForm(names, storedName); }
inline auto asIRIs(const Names& names) { return inForm(names, iriOfBlob); }
inline auto asFiles(const Names& names, const std::filesystem::path& folder) {
    return inForm(names, [&folder](const std::u16string& name) { return (folder / name).string(); });
}
inline auto asPaths(const Names& names) {
    return inForm(names, [](const std::u16string& name) {
        return foundation::storage::provider::Path(kBlobFolder + (u'/' + name));
    });
}

/// Calls `use` with each of the next ones.
template <typename Item, typename Use>
auto eachOf(std::vector<Item> items, std::size_t portions, Use use) {
    return [part = Portions<Item>(std::move(items), portions), use]() mutable { part.next(use); };
}

/// By create, write and close.
void writePlainBlob(const std::string& path);

}  // namespace bench
