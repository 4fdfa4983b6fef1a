#pragma once

#include <optional>
#include <string>

/// Small helpers around the XML messages.
class KVRXmlUtil {
public:
    KVRXmlUtil() = delete;

    /// The text from the first occurrence of `rangeStart` through the first
    /// following occurrence of `rangeEnd`, both included; to the end of the
    /// text when `rangeEnd` does not follow; nothing when `rangeStart` is absent.
    static std::optional<std::string> getBlockFromXml(const std::string& text, const std::string& rangeStart,
                                                      const std::string& rangeEnd);
    /// `<documents directory>/<fileName>.xml`.
    static std::string getXmlPathWithFileName(const std::string& fileName);
    /// Writes the text to getXmlPathWithFileName(fileName), replacing the file
    /// atomically. A debugging aid: failures are only logged.
    static void saveXmlString(const std::string& text, const std::string& fileName);
};
