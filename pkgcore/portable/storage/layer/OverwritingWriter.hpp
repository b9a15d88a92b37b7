#pragma once

#include <pkgcore/portable/storage/layer/Spot.hpp>

namespace foundation::storage::portable {

/// Writes over the beginning of a file and keeps what lies behind, on a store that only makes whole contents:
/// the rest of the old content is added when the new one is committed.
class OverwritingWriter : public provider::Writer {
public:
    /// NotFound where no file is.
    explicit OverwritingWriter(const Spot& file);

    void write(const char* bytes, std::size_t count) override;
    void commit() override;
    void discard() noexcept override;

private:
    void begin();

    Spot file_;
    std::unique_ptr<provider::Reader> old_;
    std::unique_ptr<provider::Writer> writer_;
    std::uint64_t position_ = 0;
    bool hasRest_ = true;  ///< whether there may be old content behind the position
};

}  // namespace foundation::storage::portable
