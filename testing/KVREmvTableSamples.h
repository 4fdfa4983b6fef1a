#pragma once

#include <string>
#include <vector>

/// Small, valid EMV tables as the terminal-management host sends them, for
/// tests that download or load tables.
namespace KVREmvTableSamples {

struct Aid {
    std::string recidx = "1";
    std::string aid = "A0000000031010";
    std::string appName = "VISA CREDITO";
    std::string applicationType = "1";
};

struct Capk {
    std::string recIdx = "01";
    std::string rid = "A000000003";
    std::string capkIdx = "92";
    std::string exponent = "03";
    std::string exponentLength = "1";
    /// 16 bytes of modulus unless changed.
    std::string modulus = "996AF56F569187D09293C14810450ED8";
    std::string modulusLength = "16";
};

/// An `AidTbl` block holding one `Aid` element per entry.
std::string aidTable(const std::vector<Aid>& aids);
/// A `CapkTable` block holding one `Capk` element per entry.
std::string capkTable(const std::vector<Capk>& capks);
/// Two AIDs and two keys.
std::string defaultAidTable();
std::string defaultCapkTable();
/// A configuration update whose terminal parameters hold the given blocks
/// (either may be empty, to leave it out).
std::string configurationUpdate(const std::string& aidBlock, const std::string& capkBlock);

}  // namespace KVREmvTableSamples
