#include "Tms/KVRCapkTable.h"

#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>

#include "Host/TBXML.h"
#include "Utils/KVRStringUtil.h"

namespace {
// The first `length` bytes (twice as many hexadecimal digits) of the text, the
// whole text for a length of 0; nothing when the text is shorter than that.
std::optional<std::string> leadingBytes(const std::optional<std::string>& text, const std::optional<int32_t>& length,
                                        const char* absent) {
    int64_t bytes = length.value_or(0);
    if (bytes == 0) return text ? *text : std::string(absent);
    int64_t digits = bytes * 2;
    if (bytes < 0 || !text || digits > static_cast<int64_t>(text->size())) return std::nullopt;
    return text->substr(0, static_cast<size_t>(digits));
}
}  // namespace

std::optional<std::vector<std::shared_ptr<KVRCapkTableCommand>>> KVRCapkTable::readCapkString(
    const std::string& text, std::optional<KVRError>* error) {
    std::optional<KVRError> parseError;
    TBXML xml(text, &parseError);
    if (parseError) {
        if (error) *error = parseError;
        return std::nullopt;
    }
    std::vector<std::shared_ptr<KVRCapkTableCommand>> commands;
    const TBXMLElement* root = xml.rootXMLElement();
    for (const TBXMLElement* e = TBXML::childElementNamed("Capk", root); e; e = TBXML::nextSiblingNamed("Capk", e)) {
        auto command = capkCommandFromXml(e);
        if (!command) {
            KVRLoggingUtil::printLog(KVRStringUtil::format(
                "CAPK %s index %s refused: its ModulusLen or ExponentLen exceeds its text",
                capks->rid.value_or("").c_str(), capks->capkIdx.value_or("").c_str()));
            if (error) *error = KVRErrors::loadingTablesError();
            return std::nullopt;
        }
        commands.push_back(command);
    }
    return commands;
}

std::shared_ptr<KVRCapkTableCommand> KVRCapkTable::capkCommandFromXml(const TBXMLElement* element) {
    capks = std::make_shared<KVRCapks>();
    capks->read(element);

    auto exponent = leadingBytes(capks->exponent, capks->exponentLength, "0");
    auto modulus = leadingBytes(capks->modulus, capks->modulusLength, "0");
    if (!exponent || !modulus) return nullptr;

    auto command = std::make_shared<KVRCapkTableCommand>();
    command->TAB_ACQ = capks->acquirerNumber.value_or(0);
    command->TAB_RECIDX = capks->recIdx.value_or("");
    command->T2_RID = capks->rid.value_or("");
    command->T2_CAPKIDX = capks->capkIdx.value_or("");
    command->T2_RUF1 = "00";
    command->T2_EXP = *exponent;
    command->T2_MOD = *modulus;
    command->T2_CHKSTAT = capks->checkSum.has_value();
    command->T2_CHECKSUM = capks->checkSum.value_or(std::string(40, '0'));
    command->T2_RUF2 = std::string(42, '0');
    return command;
}
