#include <pkgcore/core/FailureText.hpp>

#include <pkgcore/core/MessageText.hpp>

namespace opc::detail {

std::string describeFailure(const fl::filesystem::FsysExceptionBase& failure) {
    std::string text = failure.what();
    if (!failure.get_path_name().empty()) {
        text += ": ";
        text += toMessageText(failure.get_path_name());
    }
    return text;
}

}  // namespace opc::detail
