// A typical request from end to end: virtual storage, by IRIs.

#include "Tour.hpp"

#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include <cstdint>
#include <vector>

namespace tour {

namespace {

namespace errc = boost::system::errc;
namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

/// The same request for every kind of storage.
void requestFile(const opc::FileSystemOpsSelector& selector, const opc::ustring& iri,
                 const std::string& expected, Step& step) {
    opc::FileSystemOps& files = selector.getForPath(iri);
    boost::system::error_code ec;
    const auto stream = files.createInputStream(iri, std::ios_base::binary, ec);
    step.checkEqual("createInputStream", ec, {});
    if (!stream) {
        return;
    }
    std::vector<std::uint8_t> bytes;
    opc::StdIStreamAdaptor source(*stream);
    opc::ByteArrayOutAdaptor memory(bytes);
    step.check(opc::StreamHelper::copyStreamToStream(source, memory), "not all bytes were taken");
    step.check(std::string(bytes.begin(), bytes.end()) == expected,
               "other bytes came from " + printable(iri));
    step.count(1, bytes.size());
    step.note(printable(iri) + ": " + std::to_string(bytes.size()) + " bytes");
}

void requestNothing(opc::FileSystemOps& files, Step& step) {
    const opc::ustring invalid = u"mem://notes/%zz";
    step.checkFails("an invalid IRI", errc::bad_address,
                    [&](auto& ec) { files.createInputStream(invalid, std::ios_base::binary, ec); });
    step.checkFails("a missing file", errc::io_error, [&](auto& ec) {
        files.createInputStream(u"mem://notes/missing", std::ios_base::binary, ec);
    });
    try {
        files.createInputStream(invalid, std::ios_base::binary);
        step.check(false, "an invalid IRI was taken");
    } catch (const opc::Exception& failure) {
        const std::string text = failure.what();
        step.check(text.rfind("createInputStream failed: ", 0) == 0, "thrown: " + text);
        step.note("thrown: " + text);
    }
}

}  // namespace

void requestByIRI(Tour& tour, Step& step) {
    constexpr std::size_t kLength = 50'000;  // some chunks of the copy loop
    const std::string text = numbers(kLength);
    const opc::FileSystemOpsSelector selector(
        vfs::StorageSystemBuilder().mount(u"mem", provider::makeMemoryProvider()).build());
    opc::FileSystemOps& files = selector.getVirtual();

    const opc::ustring inMemory = files.appendPath(u"mem://notes", u"100% done?.txt");
    writeText(files, inMemory, text);
    requestFile(selector, inMemory, text, step);

    const opc::ustring native = tour.files.appendPath(tour.scratch, u"100% done?.txt");
    writeText(tour.files, native, text);
    requestFile(selector, files.normalizePath(native), text, step);

    requestNothing(files, step);
}

}  // namespace tour
