#include "KVRSimTestRequests.h"

#include <cstdio>

std::string KVRSimTestRequests::number(long long value, int width) {
    char text[32];
    std::snprintf(text, sizeof text, "%0*lld", width, value);
    return text;
}

std::string KVRSimTestRequests::left(const std::string& text, size_t width, char pad) {
    return text + std::string(width > text.size() ? width - text.size() : 0, pad);
}

std::string KVRSimTestRequests::right(const std::string& text, size_t width, char pad) {
    return std::string(width > text.size() ? width - text.size() : 0, pad) + text;
}

std::string KVRSimTestRequests::block(const std::string& content) {
    return number(static_cast<long long>(content.size()), 3) + content;
}

std::string KVRSimTestRequests::gcr(const std::string& stamp, int applicationType, int acquirer) {
    return "GCR" + block(number(acquirer, 2) + number(applicationType, 2) + number(0, 12) + "150303" + "023005" +
                         right(stamp, 10));
}

std::string KVRSimTestRequests::goc(long long amount, const std::string& tags) {
    std::string first = number(amount, 12) + number(0, 12) + "0" + "1" + "0" + "3" + "16" + std::string(32, '0') +
                        "0" + number(0, 8) + "00" + number(0, 8) + "00" + "000";
    return "GOC" + block(first) + block(number(static_cast<long long>(tags.size() / 2), 3) + tags) + block("000");
}

std::string KVRSimTestRequests::fnc(const std::string& actionCode, const std::string& issuerData) {
    std::string first = "0" + std::string("0") + actionCode +
                        number(static_cast<long long>(issuerData.size() / 2), 3) + issuerData + "000";
    return "FNC" + block(first) + block(number(static_cast<long long>(std::string(kTags).size() / 2), 3) + kTags);
}

std::string KVRSimTestRequests::gpn(const std::string& pan, const std::string& message) {
    return "GPN" + block("3" + std::string("16") + "00" + right(pan, 19) + "0" + "04" + "12" + left(message, 32));
}

std::string KVRSimTestRequests::tli(const std::string& stamp) {
    return "TLI" + block("00" + right(stamp, 10));
}

std::string KVRSimTestRequests::tlr(const std::vector<std::string>& records, int lengthExtra) {
    std::string content = number(static_cast<long long>(records.size()), 2);
    for (const auto& record : records) {
        content += number(static_cast<long long>(record.size()) + lengthExtra, 3) + record;
    }
    return "TLR" + block(content);
}

std::string KVRSimTestRequests::display(const std::string& command, const std::string& message) {
    return command + block(left(message, 32));
}

std::string KVRSimTestRequests::aidRecord(int recidx, const std::string& aid) {
    return "1" + number(8, 2) + number(recidx, 2) + number(static_cast<long long>(aid.size() / 2), 2) +
           left(aid, 32, '0') + "01" + left("VISA CREDITO", 16) + "03" + "0002" + "0002" + "0000" + "076" + "986" +
           "2" + "020000080750001" + "0000" + "00000000" + "E0F0C8" + "F000F0A001" + "22" + "DC4000A800" +
           "0010000000" + "DC4004F800" + left("", 8, '0') + "R" + "0" + "0" + std::string(24, '0') + "0000" + "0" +
           left("9F02065F2A029A039C0195059F3704", 40, '0') + left("9F3704", 40, '0') + "Y1Z1Y3Z3";
}

std::string KVRSimTestRequests::capkRecord(int recidx) {
    std::string modulus;
    for (int i = 0; i < 176; ++i) {
        modulus += number((i * 7 + 3) % 100, 2);
    }
    return "2" + number(8, 2) + number(recidx, 2) + left("A000000003", 10, '0') + "92" + "00" + "1" +
           left("03", 6, '0') + "176" + left(modulus, 496, '0') + "1" +
           left("429C954A3859CEF91295F663C963E582ED6EB253", 40, '0') + std::string(42, '0');
}
