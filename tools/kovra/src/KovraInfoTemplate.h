#pragma once

#include <string>

class KovraOutput;

/// examples/Info.plist, built into the tool: every key of the information
/// dictionary with what it does.
extern const char* const kKovraInfoTemplate;

/// `kovra config init [FILE]`: the template to standard output, or to FILE,
/// which must not exist yet (a configured dictionary is never overwritten).
void writeInfoTemplate(const std::string& file, KovraOutput& output);
