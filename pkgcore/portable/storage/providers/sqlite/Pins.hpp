#pragma once

#include <pkgcore/portable/storage/providers/sqlite/OwnProcess.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Patience.hpp>

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace foundation::storage::sqlite {

class Pins;

/// Says that a content or a folder is in use, as long as it lives, to every process that has the store open.
class Pin {
public:
    Pin() = default;
    Pin(Pins& pins, std::int64_t number) : pins_(&pins), number_(number) {}
    ~Pin() { release(); }
    Pin(Pin&& other) noexcept : pins_(other.pins_), number_(other.number_) { other.pins_ = nullptr; }
    Pin& operator=(Pin&& other) noexcept;
    Pin(const Pin&) = delete;
    Pin& operator=(const Pin&) = delete;

    bool isHeld() const noexcept { return pins_ != nullptr; }
    void release() noexcept;

private:
    Pins* pins_ = nullptr;
    std::int64_t number_ = 0;
};

/// Who is in use: one byte for each of them in a file beside the store, `<store>-pins`, that holds nothing
/// and is locked by who uses it. The system gives the locks back when a process ends, however that happens.
/// The file is made when it is first needed and removed by the last one to leave,
/// also where a process that was killed could not.
///
/// Not in the file of the store itself: closing any descriptor of that would drop the locks of SQLite.
class Pins {
public:
    /// With `isRequired` false, a place where nothing can be written is a place without pins.
    Pins(std::string storePath, Patience patience, bool isRequired);
    ~Pins();
    Pins(const Pins&) = delete;
    Pins& operator=(const Pins&) = delete;

    Pin pin(std::int64_t number);

    /// Whether nobody uses it. What no entry leads to is pinned anew only by who has seen the entry just
    /// before; they look for it again, and let go without reading. So what this says of such a number stays
    /// true.
    bool isFree(std::int64_t number);

private:
    friend class Pin;

    void open();
    bool tryOpen();
    void takeOver() noexcept;
    void removeIfLast() noexcept;
    void release(std::int64_t number) noexcept;

    OwnProcess process_;
    std::string path_;
    std::string storePath_;
    Patience patience_;
    bool isRequired_;
    std::mutex mutex_;
    int file_ = -1;
    std::map<std::int64_t, int> counts_;  ///< of the pins of this process, which are one lock for each number
};

}  // namespace foundation::storage::sqlite
