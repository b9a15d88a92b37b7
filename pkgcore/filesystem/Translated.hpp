#pragma once

#include <boost/system/error_code.hpp>

#include <string>

namespace opc::detail {

/// Runs an operation of a back end. Whatever it throws, `Translate`, called while the exception is being
/// handled, turns into a description and a code, and the result is the neutral one.
///
/// `Translate` sets the code before it describes. If describing fails, for want of memory, the code stands
/// and the description is empty: better a failure without words than a dead process.
template <void (*Translate)(std::string& msg, boost::system::error_code& ec)>
class Translated {
public:
    template <typename Result, typename Operation>
    Result operator()(Result neutral, std::string& msg, boost::system::error_code& ec,
                      Operation operation) const {
        try {
            return operation();
        } catch (...) {
            report(msg, ec);
            return neutral;
        }
    }

    /// For operations without a result.
    template <typename Operation>
    void operator()(std::string& msg, boost::system::error_code& ec, Operation operation) const {
        try {
            operation();
        } catch (...) {
            report(msg, ec);
        }
    }

private:
    static void report(std::string& msg, boost::system::error_code& ec) noexcept {
        try {
            Translate(msg, ec);
        } catch (...) {
            msg.clear();
        }
    }
};

/// Refuses an operation without a throw. As above, better without words than not at all.
inline void reportRefusal(boost::system::errc::errc_t code, const char* text, std::string& msg,
                          boost::system::error_code& ec) noexcept {
    ec = make_error_code(code);
    try {
        msg = text;
    } catch (...) {
        msg.clear();
    }
}

/// What a failure is called of which nothing is known.
inline void reportUnknownFailure(std::string& msg, boost::system::error_code& ec) {
    ec = make_error_code(boost::system::errc::io_error);
    msg = "Unknown error";
}

}  // namespace opc::detail
