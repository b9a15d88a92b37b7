#pragma once

#include <pkgcore/filesystem/LocalFileSystemOps.hpp>

#include "tests/contract/OpenOps.hpp"
#include "tests/contract/OutParameters.hpp"
#include "tests/support/scripted_platform/Platform.hpp"

#include <gtest/gtest.h>

namespace contract {

using OpenLocalOps = OpenOps<opc::LocalFileSystemOps>;

/// The local back end on a scripted platform.
struct LocalFixture : OutParameters {
    using Calls = scripted::Calls;

    scripted::Platform platform;
    OpenLocalOps ops;
};

class LocalContract : public testing::Test, protected LocalFixture {};

}  // namespace contract
