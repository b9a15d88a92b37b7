#pragma once

#include "tests/support/com/Store.hpp"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <atomic>
#include <memory>

inline void intrusive_ptr_add_ref(IUnknown* object) { object->AddRef(); }
inline void intrusive_ptr_release(IUnknown* object) { object->Release(); }

namespace test {

using StreamReference = boost::intrusive_ptr<IStream>;

/// An IStream as the documentation of the interface describes it, over a store that its clones share. Locks
/// are not supported, and Stat gives no name: there is no task allocator to give it with.
class StoreStream final : public IStream {
public:
    /// The only way to make one; it ends with its last reference.
    static StreamReference make(std::shared_ptr<Store> store, std::uint64_t position = 0);

    HRESULT QueryInterface(REFIID interfaceId, void** object) override;
    ULONG AddRef() override;
    ULONG Release() override;
    HRESULT Read(void* buffer, ULONG count, ULONG* bytesRead) override;
    HRESULT Write(const void* buffer, ULONG count, ULONG* bytesWritten) override;
    HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) override;
    HRESULT SetSize(ULARGE_INTEGER newSize) override;
    HRESULT CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* bytesRead,
                   ULARGE_INTEGER* bytesWritten) override;
    HRESULT Commit(DWORD flags) override;
    HRESULT Revert() override;
    HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD lockType) override;
    HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD lockType) override;
    HRESULT Stat(STATSTG* status, DWORD flags) override;
    HRESULT Clone(IStream** copy) override;

private:
    StoreStream(std::shared_ptr<Store> store, std::uint64_t position);
    ~StoreStream() = default;

    std::atomic<ULONG> references_{1};
    std::shared_ptr<Store> store_;
    std::uint64_t position_;
};

}  // namespace test
