#include <pkgcore/platform/i18n/Initialize.hpp>

#include <unicode/uclean.h>

#include <atomic>
#include <stdexcept>
#include <string>

namespace fl::i18n {
namespace {

/// ICU guards its own data. This only keeps us from asking again, so nobody has to see more than the flag
/// itself.
std::atomic<bool> initialized{false};

void loadData() {
    UErrorCode error = U_ZERO_ERROR;
    u_init(&error);
    if (U_FAILURE(error))
        throw std::runtime_error(std::string("ICU cannot load its data: ") + u_errorName(error));
    initialized.store(true, std::memory_order_relaxed);
}

}  // namespace

void initialize() {
    if (!initialized.load(std::memory_order_relaxed)) loadData();
}

}  // namespace fl::i18n
