#pragma once

#include <algorithm>
#include <cstdint>

/// The stream interfaces of COM for hosts without COM: method order, parameters and widths are those of the
/// Windows headers (objidl.h), so that the table of virtual functions of an implementation fits. The results,
/// flags and interface ids are those that a stream needs.

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

inline bool operator==(const GUID& one, const GUID& other) {
    return one.Data1 == other.Data1 && one.Data2 == other.Data2 && one.Data3 == other.Data3 &&
           std::equal(one.Data4, one.Data4 + 8, other.Data4);
}
inline bool operator!=(const GUID& one, const GUID& other) { return !(one == other); }

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
enum STGC : DWORD {
    STGC_DEFAULT = 0,
    STGC_OVERWRITE = 1,
    STGC_ONLYIFCURRENT = 2,
    STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE = 4,
    STGC_CONSOLIDATE = 8
};
enum STGTY : DWORD { STGTY_STORAGE = 1, STGTY_STREAM = 2, STGTY_LOCKBYTES = 3, STGTY_PROPERTY = 4 };
enum STATFLAG : DWORD { STATFLAG_DEFAULT = 0, STATFLAG_NONAME = 1, STATFLAG_NOOPEN = 2 };
enum LOCKTYPE : DWORD { LOCK_WRITE = 1, LOCK_EXCLUSIVE = 2, LOCK_ONLYONCE = 4 };

inline constexpr DWORD STGM_READ = 0;
inline constexpr DWORD STGM_WRITE = 1;
inline constexpr DWORD STGM_READWRITE = 2;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_PENDING = static_cast<HRESULT>(0x8000000A);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
inline constexpr HRESULT STG_E_INVALIDFUNCTION = static_cast<HRESULT>(0x80030001);
inline constexpr HRESULT STG_E_ACCESSDENIED = static_cast<HRESULT>(0x80030005);
inline constexpr HRESULT STG_E_INVALIDPOINTER = static_cast<HRESULT>(0x80030009);
inline constexpr HRESULT STG_E_WRITEFAULT = static_cast<HRESULT>(0x8003001D);
inline constexpr HRESULT STG_E_READFAULT = static_cast<HRESULT>(0x8003001E);
inline constexpr HRESULT STG_E_MEDIUMFULL = static_cast<HRESULT>(0x80030070);
inline constexpr HRESULT STG_E_INVALIDFLAG = static_cast<HRESULT>(0x800300FF);

inline constexpr IID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_ISequentialStream = {
    0x0C733A30, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
inline constexpr IID IID_IStream = {0x0000000C, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

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
