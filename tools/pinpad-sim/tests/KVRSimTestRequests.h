#pragma once

#include <string>
#include <vector>

/// Request texts as the library lays them out, written field by field here
/// so the tests state each layout on their own.
class KVRSimTestRequests {
public:
    static constexpr const char* kStamp = "2014053065";
    /// The tag list a sale asks the chip for.
    static constexpr const char* kTags = "5F2A82959A9C9F029F109F1A9F1E9F269F339F369F379F279F34";

    /// Zero-filled on the left.
    static std::string number(long long value, int width);
    /// Filled on the right.
    static std::string left(const std::string& text, size_t width, char pad = ' ');
    /// Filled on the left.
    static std::string right(const std::string& text, size_t width, char pad = ' ');
    /// Three-digit length and the text.
    static std::string block(const std::string& content);

    static std::string gcr(const std::string& stamp = kStamp, int applicationType = 1, int acquirer = 8);
    static std::string goc(long long amount, const std::string& tags = kTags);
    static std::string fnc(const std::string& actionCode, const std::string& issuerData = "");
    /// The library's GPN: no working key, PAN right-aligned, its length and the entry count 0.
    static std::string gpn(const std::string& pan, const std::string& message);
    static std::string tli(const std::string& stamp = kStamp);
    /// TLR carrying the records; each prefixed with its length plus `lengthExtra`.
    static std::string tlr(const std::vector<std::string>& records, int lengthExtra = 3);
    static std::string display(const std::string& command, const std::string& message);

    /// A well-formed AID record (281 characters).
    static std::string aidRecord(int recidx = 3, const std::string& aid = "A0000000031010");
    /// A well-formed CAPK record (608 characters).
    static std::string capkRecord(int recidx = 1);
};
