#pragma once

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/Provider.hpp>

#include <memory>
#include <optional>
#include <string>

/// A store without the storage system around it.
namespace test {

inline std::unique_ptr<foundation::storage::provider::Writer> beginFile(
    foundation::storage::provider::Provider& store, const std::u16string& path, const std::string& content,
    foundation::storage::provider::WriteMode mode = foundation::storage::provider::WriteMode::Create) {
    auto writer = store.openWriter(foundation::storage::provider::Path(path), mode);
    writer->write(content.data(), content.size());
    return writer;
}

inline void writeFile(
    foundation::storage::provider::Provider& store, const std::u16string& path, const std::string& content,
    foundation::storage::provider::WriteMode mode = foundation::storage::provider::WriteMode::Create) {
    beginFile(store, path, content, mode)->commit();
}

inline std::string readRest(foundation::storage::provider::Reader& reader) {
    std::string content;
    std::string piece(100'000, '\0');
    while (const std::size_t count = reader.read(piece.data(), piece.size())) {
        content.append(piece, 0, count);
    }
    return content;
}

inline std::string readFile(foundation::storage::provider::Provider& store, const std::u16string& path) {
    return readRest(*store.openReader(foundation::storage::provider::Path(path)));
}

}  // namespace test
