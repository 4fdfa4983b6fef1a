#pragma once

#include <string>

#include <pugixml.hpp>

namespace acqsim {

// The EMV tables this acquirer hands out with a table download, built from
// public EMV test data: the AID table (`AidTbl` / `Aid`) with the fields the
// PIN pad's AID records need, in widths that fit them, and the CAPK table
// (`CapkTable` / `Capk`) with the brands' public test keys.
//
// Record indexes follow the brand rule of the sale: Visa applications use
// indexes up to 3 (credit 3, Electron 2), Mastercard ones above (credit 4,
// Maestro 5).
class EmvTables {
public:
    static void writeAidTable(pugi::xml_node parent);
    static void writeCapkTable(pugi::xml_node parent);
    static void writeCardBrands(pugi::xml_node parent);
    static void writeBinRanges(pugi::xml_node parent);

    // SHA-1 over RID || key index || modulus || exponent, as 40 upper-case
    // hexadecimal characters: the check value a terminal compares a key with.
    static std::string capkChecksum(const std::string& rid, const std::string& index,
                                    const std::string& modulus, const std::string& exponent);
};

} // namespace acqsim
