#pragma once

#include <string>

/// The data directory the test main gives every suite; tests that move the
/// directories put them back here.
const std::string& kovraTestDataDirectory();
