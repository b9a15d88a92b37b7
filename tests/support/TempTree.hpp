#pragma once

#include <string>
#include <string_view>

namespace test {

/// A path or name in UTF-8 as the UTF-16 text that the library takes; throws for anything that is not valid
/// UTF-8.
std::u16string text(std::string_view utf8);

/// A folder of the host in which thousands of items are made in no time: in memory where there is such a
/// place.
std::string fastFolder();

/// A new folder that goes away with the scope, with everything in it: of any depth, however unreadable. It is
/// made and removed by calls of the system alone, so that it can judge the library.
class TempTree {
public:
    explicit TempTree(const std::string& parent = "/tmp");
    ~TempTree();
    TempTree(const TempTree&) = delete;
    TempTree& operator=(const TempTree&) = delete;

    const std::string& path() const noexcept { return path_; }
    std::string operator/(std::string_view name) const { return path_ + '/' + std::string(name); }
    std::u16string text(std::string_view name) const { return test::text(*this / name); }
    /// For names that are not UTF-8.
    std::u16string text(std::u16string_view name) const {
        return test::text(path_) + u'/' + std::u16string(name);
    }

private:
    std::string path_;
};

}  // namespace test
