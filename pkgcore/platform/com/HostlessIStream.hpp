#pragma once

#include <cstdint>

/// The stream interfaces of COM for hosts without COM: method order, parameters and widths are those of the
/// Windows headers (objidl.h), so that the table of virtual functions of an implementation fits.

using HRESULT = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using WORD = std::uint16_t;
using OLECHAR = char16_t;
using LPOLESTR = OLECHAR*;

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
using IID = GUID;
using CLSID = GUID;
using REFIID = const IID&;

union LARGE_INTEGER {
    struct {
        DWORD LowPart;
        std::int32_t HighPart;
    } u;
    std::int64_t QuadPart;
};

union ULARGE_INTEGER {
    struct {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    std::uint64_t QuadPart;
};

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct STATSTG {
    LPOLESTR pwcsName;
    DWORD type;
    ULARGE_INTEGER cbSize;
    FILETIME mtime;
    FILETIME ctime;
    FILETIME atime;
    DWORD grfMode;
    DWORD grfLocksSupported;
    CLSID clsid;
    DWORD grfStateBits;
    DWORD reserved;
};

enum STREAM_SEEK : DWORD { STREAM_SEEK_SET = 0, STREAM_SEEK_CUR = 1, STREAM_SEEK_END = 2 };
enum STGC : DWORD { STGC_DEFAULT = 0 };

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_PENDING = static_cast<HRESULT>(0x8000000A);

/// The root of all COM interfaces. A virtual destructor would take a slot that COM does not have: objects end
/// by Release, and nobody deletes them through an interface.
class IUnknown {
public:
    virtual HRESULT QueryInterface(REFIID interfaceId, void** object) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;

protected:
    ~IUnknown() = default;
};

/// Sequential bytes. A count that comes back may be short; S_FALSE marks the end of the data.
class ISequentialStream : public IUnknown {
public:
    virtual HRESULT Read(void* buffer, ULONG count, ULONG* bytesRead) = 0;
    virtual HRESULT Write(const void* buffer, ULONG count, ULONG* bytesWritten) = 0;

protected:
    ~ISequentialStream() = default;
};

/// Bytes with a position that can be moved.
class IStream : public ISequentialStream {
public:
    virtual HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) = 0;
    virtual HRESULT SetSize(ULARGE_INTEGER newSize) = 0;
    virtual HRESULT CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* bytesRead,
                           ULARGE_INTEGER* bytesWritten) = 0;
    virtual HRESULT Commit(DWORD flags) = 0;
    virtual HRESULT Revert() = 0;
    virtual HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD lockType) = 0;
    virtual HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD lockType) = 0;
    virtual HRESULT Stat(STATSTG* status, DWORD flags) = 0;
    virtual HRESULT Clone(IStream** copy) = 0;

protected:
    ~IStream() = default;
};
