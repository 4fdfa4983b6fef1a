#include "KVRSimTableRecord.h"

#include "KVRSimFieldReader.h"
#include "KVRSimLayoutError.h"

namespace {

/// A hex field written left-aligned and padded with "0": everything past the
/// declared byte count must be padding.
void expectZeroPadding(const std::string& field, size_t usedCharacters, const char* name) {
    if (usedCharacters > field.size()) {
        throw KVRSimLayoutError(std::string("table record: field ") + name + " declares more bytes than its width");
    }
    if (field.find_first_not_of('0', usedCharacters) != std::string::npos) {
        throw KVRSimLayoutError(std::string("table record: field ") + name + " has data past its declared length");
    }
}

}  // namespace

size_t KVRSimTableRecord::lengthForType(char typeDigit) {
    switch (typeDigit) {
    case '1':
        return kAidLength;
    case '2':
        return kCapkLength;
    default:
        return 0;
    }
}

KVRSimTableRecord KVRSimTableRecord::parse(std::string_view text) {
    if (text.empty() || lengthForType(text[0]) == 0) {
        throw KVRSimLayoutError("table record: unknown table type");
    }
    if (text.size() != lengthForType(text[0])) {
        throw KVRSimLayoutError("table record of type " + std::string(1, text[0]) + ": " + std::to_string(text.size()) +
                                " characters instead of " + std::to_string(lengthForType(text[0])));
    }
    return text[0] == '1' ? parseAid(text) : parseCapk(text);
}

KVRSimTableRecord KVRSimTableRecord::parseAid(std::string_view text) {
    KVRSimFieldReader r(text, "AID record");
    KVRSimTableRecord record;
    record.type_ = Type::Aid;
    r.number("table type", 1);
    record.acquirer_ = static_cast<int>(r.number("TAB_ACQ", 2));
    record.recordIndex_ = std::to_string(r.number("TAB_RECIDX", 2));
    auto aidBytes = static_cast<size_t>(r.number("T1_AIDLEN", 2));
    if (aidBytes < 5 || aidBytes > 16) {
        throw KVRSimLayoutError("AID record: field T1_AIDLEN must be 5 to 16 bytes");
    }
    expectZeroPadding(r.hex("T1_AID", 32), aidBytes * 2, "T1_AID");
    r.number("T1_APPTYPE", 2);
    r.text("T1_DEFLABEL", 16);
    r.number("T1_ICCSTD", 2);
    r.hex("T1_APPVER1", 4);
    r.hex("T1_APPVER2", 4);
    r.hex("T1_APPVER3", 4);
    r.number("T1_TRMCNTRY", 3);
    r.number("T1_TRMCURR", 3);
    r.number("T1_TRMCRREXP", 1);
    r.text("T1_MERCHID", 15);
    r.number("T1_MCC", 4);
    r.text("T1_TRMID", 8);
    r.hex("T1_TRMCAPAB", 6);
    r.hex("T1_ADDTRMCP", 10);
    r.number("T1_TRMTYP", 2);
    r.hex("T1_TACDEF", 10);
    r.hex("T1_TACDEN", 10);
    r.hex("T1_TACONL", 10);
    r.hex("T1_FLRLIMIT", 8);
    r.text("T1_TCC", 1);
    r.number("T1_CTLSZEROAM", 1);
    r.number("T1_CTLSMODE", 1);
    r.hex("T1_CTLSTRNLIM", 8);
    r.hex("T1_CTLSFLRLIM", 8);
    r.hex("T1_CTLSCVMLIM", 8);
    r.hex("T1_CTLSAPPVER", 4);
    r.number("T1_RUF1", 1);
    r.hex("T1_TDOLDEF", 40);
    r.hex("T1_DDOLDEF", 40);
    r.text("T1_ARCOFFLN", 8);
    r.expectEnd();
    record.text_ = std::string(text);
    return record;
}

KVRSimTableRecord KVRSimTableRecord::parseCapk(std::string_view text) {
    KVRSimFieldReader r(text, "CAPK record");
    KVRSimTableRecord record;
    record.type_ = Type::Capk;
    r.number("table type", 1);
    record.acquirer_ = static_cast<int>(r.number("TAB_ACQ", 2));
    record.recordIndex_ = r.text("TAB_RECIDX", 2);
    r.hex("T2_RID", 10);
    r.hex("T2_CAPKIDX", 2);
    r.hex("T2_RUF1", 2);
    auto exponentBytes = static_cast<size_t>(r.number("T2_EXPLEN", 1));
    expectZeroPadding(r.hex("T2_EXP", 6), exponentBytes * 2, "T2_EXP");
    auto modulusBytes = static_cast<size_t>(r.number("T2_MODLEN", 3));
    expectZeroPadding(r.hex("T2_MOD", 496), modulusBytes * 2, "T2_MOD");
    r.flag("T2_CHKSTAT");
    r.hex("T2_CHECKSUM", 40);
    r.hex("T2_RUF2", 42);
    r.expectEnd();
    record.text_ = std::string(text);
    return record;
}
