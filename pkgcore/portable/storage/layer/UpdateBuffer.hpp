#pragma once

#include <pkgcore/platform/filesystem/FileStreams.hpp>
#include <pkgcore/portable/storage/layer/Publisher.hpp>
#include <pkgcore/portable/storage/layer/Spot.hpp>

#include <memory>

namespace foundation::storage::portable {

/// Reads and writes a file at any place, as std::filebuf does, on a store that only makes whole contents: the
/// new content is worked out in a temporary file of the host, which has no name, and all of it is published
/// when the stream is flushed. After the first failure nothing more is taken or published.
class UpdateBuffer : public fl::filesystem::file_buffer, public Publisher {
public:
    /// What the work begins with.
    enum class Base : unsigned char { Empty, OldContent };

    /// Throws where the file cannot be read or written, and where the host has no place for the new content.
    UpdateBuffer(const Spot& file, Base base);

    bool publish() override;

protected:
    std::streamsize xsputn(const char* in, std::streamsize count) override;
    int_type overflow(int_type unit) override;
    int sync() override;

private:
    void openDraft();
    void take(provider::Reader& reader);
    bool goTo(pos_type position);
    void publishDraft();

    Spot file_;
    std::unique_ptr<provider::Writer> writer_;  ///< of the next publication, once there is one
    bool isNews_;
    bool failed_ = false;
};

}  // namespace foundation::storage::portable
