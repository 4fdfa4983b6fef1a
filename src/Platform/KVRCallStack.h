#pragma once

#include <string>

/// The calling thread's stack, for the log of a failure nobody expected.
namespace KVRCallStack {

/// One frame a line, innermost first, between "(" and ")".
std::string describe();

}  // namespace KVRCallStack
