#include <pkgcore/portable/storage/layer/StreamOpening.hpp>

#include <pkgcore/portable/storage/layer/Content.hpp>
#include <pkgcore/portable/storage/layer/Reading.hpp>
#include <pkgcore/portable/storage/layer/UpdateBuffer.hpp>
#include <pkgcore/portable/storage/layer/WriteBuffer.hpp>

#include <algorithm>
#include <iterator>

namespace foundation::storage::portable {

using provider::Item;
using provider::Kind;
using provider::WriteMode;
using provider::Writer;
using vfs::ErrorCode;

namespace {

using OpenMode = std::ios_base::openmode;
using Position = std::streambuf::off_type;

constexpr OpenMode kIn = std::ios_base::in;
constexpr OpenMode kOut = std::ios_base::out;
constexpr OpenMode kTrunc = std::ios_base::trunc;
constexpr OpenMode kApp = std::ios_base::app;

/// What writing begins with, and whether it goes to any place or in order.
enum class Start : unsigned char { Empty, AtEnd, EmptyUpdate, Update };

struct ModeStart {
    OpenMode mode;
    Start start;
};

// Combinations that are not here, such as trunc with app, are refused.
constexpr ModeStart kModeTable[] = {
    {kOut, Start::Empty},
    {kOut | kTrunc, Start::Empty},
    {kOut | kApp, Start::AtEnd},
    {kIn | kOut | kApp, Start::AtEnd},
    {kIn | kOut | kTrunc, Start::EmptyUpdate},
    {kIn | kOut, Start::Update},
};

Start startOf(const Spot& file, OpenMode mode) {
    const OpenMode known = mode & (kIn | kOut | kTrunc | kApp);
    const auto* const row =
        std::find_if(std::begin(kModeTable), std::end(kModeTable),
                     [known](const ModeStart& candidate) { return candidate.mode == known; });
    if (row == std::end(kModeTable)) {
        file.fail(ErrorCode::NotSupported);
    }
    return row->start;
}

/// The file, if there is one, which may be written then.
std::optional<Item> checkTarget(const Spot& file) {
    const std::optional<Item> found = file.find();
    if (found && found->kind == Kind::Folder) {
        file.fail(ErrorCode::AlreadyExists);
    }
    if (found && !found->isWritable) {
        file.fail(ErrorCode::AccessDenied);
    }
    return found;
}

/// The size of a file, by reading it where its store does not know.
Position sizeOf(const Spot& file, provider::Reader& reader) {
    if (const std::optional<std::uint64_t> size = reader.size()) {
        return static_cast<Position>(*size);
    }
    char bytes[4096];
    Position size = 0;
    while (const std::size_t count = file.located([&] { return readNext(reader, bytes, sizeof bytes); })) {
        size += static_cast<Position>(count);
    }
    return size;
}

/// A device has no old content, and looking for one might wait for ever.
std::unique_ptr<std::streambuf> openAtEnd(const Spot& file, const std::optional<Item>& found) {
    const bool hasContent = found && !found->isDevice;
    const std::unique_ptr<provider::Reader> old = hasContent ? file.openReader() : nullptr;
    const bool appends = file.traits().appends;
    std::unique_ptr<Writer> writer = file.openWriter(appends ? WriteMode::Append : WriteMode::Create);
    const Position size = old ? sizeOf(file, *old) : 0;
    if (old && !appends) {
        pour(file, *file.openReader(), file, *writer);
    }
    return std::make_unique<WriteBuffer>(std::move(writer), size, !found);
}

std::unique_ptr<std::streambuf> openForUpdate(const Spot& file, const std::optional<Item>& found,
                                              UpdateBuffer::Base base, OpenMode mode) {
    if (!found && base == UpdateBuffer::Base::OldContent) {
        file.fail(ErrorCode::NotFound);
    }
    if (found && found->isDevice) {
        file.fail(ErrorCode::NotSupported);
    }
    auto buffer = std::make_unique<UpdateBuffer>(file, base);
    if ((mode & std::ios_base::ate) != 0) {
        buffer->pubseekoff(0, std::ios_base::end);
    }
    return buffer;
}

}  // namespace

std::unique_ptr<ReadBuffer> openForReading(const Spot& file) {
    return std::make_unique<ReadBuffer>(file.openReader(), file.traits().readsAt);
}

std::unique_ptr<std::streambuf> openForWriting(const Spot& file, OpenMode mode) {
    const Start start = startOf(file, mode);
    const std::optional<Item> found = checkTarget(file);
    switch (start) {
        case Start::AtEnd:
            return openAtEnd(file, found);
        case Start::Update:
            return openForUpdate(file, found, UpdateBuffer::Base::OldContent, mode);
        case Start::EmptyUpdate:
            return openForUpdate(file, found, UpdateBuffer::Base::Empty, mode);
        case Start::Empty:
            break;
    }
    return std::make_unique<WriteBuffer>(file.openWriter(WriteMode::Create), 0, true);
}

}  // namespace foundation::storage::portable
