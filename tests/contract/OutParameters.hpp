#pragma once

#include <boost/system/error_code.hpp>

#include <gtest/gtest.h>

#include <string>

namespace contract {

/// The out-parameters of a back end's operation. They already hold something: a success must leave it.
struct OutParameters {
    using Code = boost::system::error_code;

    static inline const std::string kOldMessage = "what stood here before";
    static inline const Code kOldCode{4711, boost::system::system_category()};

    std::string msg = kOldMessage;
    Code ec = kOldCode;

    void expectNothingReported() const {
        EXPECT_EQ(msg, kOldMessage);
        EXPECT_EQ(ec, kOldCode);
    }

    void expectReported(boost::system::errc::errc_t code, const std::string& message) const {
        EXPECT_EQ(msg, message);
        EXPECT_EQ(ec, boost::system::errc::make_error_code(code));
        EXPECT_EQ(ec.category(), boost::system::generic_category());
        EXPECT_TRUE(ec.failed());
    }
};

}  // namespace contract
