#pragma once

#include <string>

#include <nlohmann/json.hpp>

// Hand-written request documents with every element the emulator demands, in
// its order (whitespace is free, so they are kept compact), and the values a
// test varies. Tests break them further with replace().

struct AuthorisationFields {
    std::string merchantId = "12345678";
    std::string pan = "4761739001010010";
    std::string amount = "1000";
    std::string entryMode = "CICC";
    std::string reference = "0123456789ABCDEF0123456789ABCDEF";
    std::string initiatorId = "PP12345678-25300001A1B2100";
    // Card data of a chip sale; empty for a stripe sale (no ICCRltdData).
    std::string cardData = "9F2608A1B2C3D4E5F607189F2701809F37041A2B3C4D9F02060000000010005F2A020986";
    bool onlinePin = true;
    bool headerFirst = false;
};

struct CancellationFields {
    std::string merchantId = "12345678";
    std::string receiptId;
    std::string initiatorId = "PP12345678-25300001A1B2100";
    std::string amount = "1000";
    std::string reference = "0123456789ABCDEF0123456789ABCDEF";
};

class HttpsClient;

std::string authorisationRequest(const AuthorisationFields& fields);
std::string cancellationAdvice(const CancellationFields& fields);
std::string statusReportForKovraCode(const std::string& kovraCode);
std::string statusReportForSaleKey(const std::string& saleAffiliationKey);
nlohmann::json saleReceiptMail();
// Authorises a sale of `amount` and returns the advice that would cancel it.
CancellationFields authorised(HttpsClient& client, const std::string& amount = "1000");

// `text` with the first occurrence of `from` replaced; throws when absent,
// so a test never checks an unbroken document by mistake.
std::string replace(std::string text, const std::string& from, const std::string& to);
