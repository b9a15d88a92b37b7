#pragma once

#include <sys/resource.h>

#include <functional>

namespace test {

/// Runs the body in a child process, so that it can change its limits, its user, its working directory or its
/// mask. Expectations in the body count: those that fail are shown, and fail the caller's test.
void runInChild(const std::function<void()>& body);

/// The same, without the rights of root if the tests have them. A TempTree made in the body belongs to that
/// user.
void runAsOrdinaryUser(const std::function<void()>& body);

/// Sets the soft limit of a resource, for use in a child.
void limitResource(__rlimit_resource resource, rlim_t limit);

/// Limits the size of files and has writes beyond it fail (EFBIG) instead of ending the process.
void limitFileSize(rlim_t bytes);

}  // namespace test
