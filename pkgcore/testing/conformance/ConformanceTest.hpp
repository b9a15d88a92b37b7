#pragma once

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/platform/storage/Existence.hpp>
#include <pkgcore/platform/storage/File.hpp>
#include <pkgcore/platform/storage/FileOrFolder.hpp>
#include <pkgcore/platform/storage/Folder.hpp>
#include <pkgcore/platform/storage/Listing.hpp>
#include <pkgcore/platform/storage/Streams.hpp>
#include <pkgcore/testing/conformance/Backend.hpp>

#include <gtest/gtest.h>

#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace foundation::storage::conformance {

using provider::ReplacementPolicy;
using vfs::ErrorCode;
using vfs::ExistenceType;
using vfs::File;
using vfs::Folder;
using vfs::FolderRemovalPolicy;

inline constexpr ReplacementPolicy kFail = ReplacementPolicy::FailIfExists;
inline constexpr ReplacementPolicy kReplace = ReplacementPolicy::ReplaceExisting;

/// The code of the failure with which a call ends, or none.
template <typename Call>
std::optional<ErrorCode> failureOf(Call call) {
    try {
        call();
    } catch (const vfs::Exception& failure) {
        return failure.getErrorCode();
    }
    return std::nullopt;
}

#define PKGCORE_EXPECT_FAILURE(code, ...)                                    \
    EXPECT_EQ(                                                               \
        ::foundation::storage::conformance::failureOf([&] { __VA_ARGS__; }), \
        std::optional<::foundation::storage::vfs::ErrorCode>(::foundation::storage::vfs::ErrorCode::code))

/// `count` bytes that do not repeat within any block size.
inline std::string someBytes(std::size_t count, unsigned seed = 1) {
    std::string bytes(count, '\0');
    unsigned long long state = seed;
    for (char& byte : bytes) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        byte = static_cast<char>(state >> 56);
    }
    return bytes;
}

/// Works in the ground of a test by plain paths below it.
class Workplace {
public:
    explicit Workplace(Ground ground) : ground_(std::move(ground)) {}

    vfs::CanonicalAbsoluteIRI iri(const std::u16string& path) const {
        return vfs::CanonicalAbsoluteIRI(vfs::AbsoluteIRI(vfs::AbsoluteIRI(ground_.root), path));
    }
    File file(const std::u16string& path) const { return File(iri(path), ground_.storage); }
    Folder folder(const std::u16string& path) const { return Folder(iri(path), ground_.storage); }
    provider::Path at(const std::u16string& name) const { return ground_.path.child(name); }
    provider::Provider& store() const { return *ground_.store; }
    provider::Traits traits() const { return ground_.store->traits(); }
    const Ground& ground() const { return ground_; }

    ExistenceType existence(const std::u16string& path) const {
        return vfs::exists(iri(path), ground_.storage);
    }
    bool isFile(const std::u16string& path) const { return existence(path) == ExistenceType::File; }
    bool isFolder(const std::u16string& path) const { return existence(path) == ExistenceType::Folder; }
    bool isMissing(const std::u16string& path) const { return existence(path) == ExistenceType::Nothing; }

    /// Whether all of it was taken and published.
    bool write(const std::u16string& path, const std::string& content,
               std::ios_base::openmode mode = std::ios_base::out) const {
        vfs::ofstream stream(file(path), mode);
        stream << content << std::flush;
        return stream.good();
    }

    /// The content, or "(none)" where the file cannot be opened and "(broken)" where reading fails.
    std::string read(const std::u16string& path) const {
        vfs::ifstream stream(file(path), std::ios_base::in);
        return stream ? readAll(stream) : "(none)";
    }
    static std::string readAll(std::istream& stream) {
        std::string content{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        return stream.bad() ? "(broken)" : content;
    }

    /// All files below the ground with what they hold, and the folders.
    Contents everything() const {
        Contents found;
        for (const std::u16string& path : listTree(u"")) {
            found[path] = path.back() == u'/' ? "(folder)" : read(path);
        }
        return found;
    }

    /// Paths below the folder in the order of the listing, folders with a slash behind them.
    std::vector<std::u16string> list(const std::u16string& path, const std::u16string& pattern = u"") const {
        return shown(folder(path).listAll(pattern), path);
    }
    std::vector<std::u16string> listTree(const std::u16string& path,
                                         const std::u16string& pattern = u"") const {
        return shown(folder(path).listAllRecursive(pattern), path);
    }

private:
    std::vector<std::u16string> shown(vfs::Listing listing, const std::u16string& path) const {
        const std::size_t prefix = plain(iri(path)).size() + 1;
        std::vector<std::u16string> paths;
        for (const vfs::ListEntry& entry : listing) {
            const bool isFolder = entry.getFileOrFolder().which() == 1;
            paths.push_back(plain(entry.getLocation()).substr(prefix) + (isFolder ? u"/" : u""));
        }
        return paths;
    }

    /// Without the slash behind a root.
    static std::u16string plain(const vfs::CanonicalAbsoluteIRI& iri) {
        std::u16string path = iri.getPath();
        if (!iri.hasParent()) {
            path.pop_back();
        }
        return path;
    }

    Ground ground_;
};

using Names = std::vector<std::u16string>;

}  // namespace foundation::storage::conformance
