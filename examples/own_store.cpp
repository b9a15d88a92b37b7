// A store of one's own: the environment of the process as a folder of read-only files.
//
//     own_store              lists the IRIs of the variables
//     own_store env:///HOME  writes the value of one

#include <pkgcore/pkgcore.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/Provider.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>

#include <algorithm>
#include <exception>
#include <iostream>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

using Values = std::map<opc::ustring, std::string>;

/// Reads from a value of its own, so that it stays with that.
class ValueReader : public provider::Reader {
public:
    explicit ValueReader(std::string value) : value_(std::move(value)) {}

    std::size_t read(char* out, std::size_t count) override {
        const std::size_t taken = value_.copy(out, count, at_);
        at_ += taken;
        return taken;
    }
    std::optional<std::uint64_t> size() const override { return value_.size(); }

private:
    std::string value_;
    std::size_t at_ = 0;
};

/// All entries are one page; the map has them in order already.
class ValueLister : public provider::Lister {
public:
    explicit ValueLister(const Values& values) {
        for (const auto& value : values) {
            page_.push_back(provider::ListItem{value.first, provider::Kind::File, false});
        }
    }
    std::vector<provider::ListItem> next() override { return std::exchange(page_, {}); }

private:
    std::vector<provider::ListItem> page_;
};

class ValueStore : public provider::Provider {
public:
    explicit ValueStore(Values values) : values_(std::move(values)) {}

    provider::Traits traits() const override { return {}; }  // nothing but reading in order

    std::optional<provider::Item> find(const provider::Path& path) override {
        provider::Item item;
        item.isWritable = false;
        item.kind = path.isRoot() ? provider::Kind::Folder : provider::Kind::File;
        const bool isThere = path.isRoot() || values_.count(path.text()) == 1;
        return isThere ? std::optional<provider::Item>(item) : std::nullopt;
    }

    std::unique_ptr<provider::Lister> list(const provider::Path& folder) override {
        if (!folder.isRoot()) {
            throw vfs::Exception(vfs::ErrorCode::NotFound, vfs::AbsoluteIRI());
        }
        return std::make_unique<ValueLister>(values_);
    }

    std::unique_ptr<provider::Reader> openReader(const provider::Path& file) override {
        const auto value = values_.find(file.text());
        if (value == values_.end()) {
            throw vfs::Exception(vfs::ErrorCode::NotFound, vfs::AbsoluteIRI());
        }
        return std::make_unique<ValueReader>(value->second);
    }

private:
    Values values_;
};

/// Variables with a slash in their names are left out: no name in a storage system can hold one.
Values valuesOf(char** environment) {
    Values values;
    for (char** variable = environment; *variable != nullptr; ++variable) {
        const std::string text = *variable;
        const std::string name = text.substr(0, text.find('='));
        if (!name.empty() && name.size() < text.size() && name.find('/') == std::string::npos) {
            values.emplace(opc::detail::toStringFromUTF8String(name, true), text.substr(name.size() + 1));
        }
    }
    return values;
}

void list(opc::FileSystemOps& files) {
    std::vector<opc::ustring> paths;
    files.getFiles(u"env:///", paths, true);
    for (const opc::ustring& path : paths) {
        std::cout << opc::detail::toUTF8String(path, true) << "\n";
    }
}

}  // namespace

int main(int argc, char** argv, char** environment) {
    try {
        const opc::FileSystemOpsSelector selector(
            vfs::StorageSystemBuilder()
                .mount(u"env", std::make_shared<ValueStore>(valuesOf(environment)))
                .build());
        if (argc == 1) {
            list(selector.getVirtual());
            return 0;
        }
        const opc::ustring path = opc::detail::toStringFromUTF8String(argv[1], false);
        const auto stream = selector.getForPath(path).createInputStream(path, std::ios_base::in);
        std::copy(std::istreambuf_iterator<char>(*stream), {}, std::ostreambuf_iterator<char>(std::cout));
        std::cout << "\n";
        return std::cout ? 0 : 1;
    } catch (const std::exception& failure) {
        std::cerr << "own_store: " << failure.what() << "\n";
        return 1;
    }
}
