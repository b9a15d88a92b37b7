#pragma once

#include <pkgcore/streams/InputStream.hpp>
#include <pkgcore/streams/OutputStream.hpp>

#include <cstddef>
#include <functional>
#include <vector>

namespace reference {

/// The copy loop, step by step, with jumps where the description has them; `yield` is called where a side is
/// not ready.
inline bool copyStreamToStream(opc::InputStream& in, opc::OutputStream& out,
                               const std::function<void()>& yield) {
    constexpr std::size_t kChunk = 16384;
    std::vector<std::uint8_t> buffer(kChunk);
    bool result = true;
    bool outDone = false;
    bool inDone = false;
    do {
        if (outDone) {
            break;
        }
        std::size_t n = in.read(buffer.data(), kChunk);
        inDone = in.isDone();
        while (n == 0) {
            if (inDone) {
                return result;
            }
            yield();
            n = in.read(buffer.data(), kChunk);
            inDone = in.isDone();
        }
        std::size_t written = out.write(buffer.data(), n);
        outDone = out.isDone();
        while (written < n) {
            if (outDone) {
                result = false;
                break;
            }
            yield();
            written += out.write(buffer.data() + written, n - written);
            outDone = out.isDone();
        }
    } while (!inDone);
    return result;
}

}  // namespace reference
