#include "KVRSimTestBench.h"
#include "KVRSimTestRequests.h"
#include "KVRSimTestWire.h"

#include <gtest/gtest.h>

namespace {

using R = KVRSimTestRequests;

std::string replaced(std::string text, size_t at, const std::string& with) {
    return text.replace(at, with.size(), with);
}

struct Broken {
    const char* what;
    std::string text;
    const char* logged;  ///< what the NAK line on standard error must mention
};

TEST(KVRSimLayout, RefusesEveryMalformedRequestWithNakAndSaysWhy) {
    auto gcr = R::gcr();
    auto aid = R::aidRecord();
    auto capk = R::capkRecord();
    const Broken cases[] = {
        {"unknown command", "XYZ000", "unknown command"},
        {"OPN with data", "OPN0011", "unexpected characters"},
        {"OPN without block length", "OPN", "field block"},
        {"GIN acquirer not digits", "GIN002A0", "acqidx"},
        {"GIN block shorter than declared", "GIN0030", "needs 3 characters"},
        {"GIN block shorter than its field", "GIN001000", "acqidx"},
        {"DSP message of 31 characters", "DSP031" + std::string(31, 'A'), "message"},
        {"DSP message with a control byte", "DSP032" + std::string(31, 'A') + "\x01", "printable"},
        {"RMC without message", "RMC000", "message"},
        {"CLO message of 33 characters", "CLO033" + std::string(33, 'A'), "unexpected characters"},
        {"GCR amount not digits", replaced(gcr, 10, "00000000000X"), "amount"},
        {"GCR block length one short", replaced(gcr, 3, "037"), "tabver"},
        {"GCR month 13", replaced(gcr, 22, "1513"), "date"},
        {"GCR stamp with a letter", replaced(gcr, 34, "201405306X"), "tabver"},
        {"GCR stamp padded on the wrong side", replaced(gcr, 34, "201405306 "), "tabver"},
        {"GOC working key not hex", replaced(R::goc(1000), 36, "Z"), "wkenc"},
        {"GOC tag count larger than the tags", replaced(R::goc(1000), 92, "027"), "tags"},
        {"GOC without block 3", R::goc(1000).substr(0, R::goc(1000).size() - 3), "tags2"},
        {"GOC with a tag cut short", R::goc(1000, "9F"), "tag list"},
        {"GOC connect flag 2", replaced(R::goc(1000), 31, "2"), "connect"},
        {"FNC issuer data not hex", "FNC012" + std::string("0000001ZZ000") + "000", "issuerDataEmv"},
        {"FNC without tag block", "FNC010" + std::string("0000000000"), "tags"},
        {"GPN PAN padded on the right", replaced(R::gpn("4111111111111111", ""), 11, "4111111111111111   "), "pan"},
        {"GPN minimum over maximum", replaced(R::gpn("4111111111111111", ""), 31, "13"), "minimum"},
        {"TLI stamp of 9 characters", "TLI01100201405306", "tabver"},
        {"TLE with data", "TLE0010", "unexpected characters"},
        {"TLR record count not matching", replaced(R::tlr({aid}), 6, "02"), "record length"},
        {"TLR AID record one character short", R::tlr({aid.substr(0, 280)}), "record"},
        {"TLR record length field not the record's", replaced(R::tlr({aid}), 8, "282"), "declares 282"},
        {"TLR unknown table type", R::tlr({"3" + aid.substr(1)}), "unknown table type"},
        {"AID record with AID length 17", R::tlr({replaced(aid, 5, "17")}), "T1_AIDLEN"},
        {"AID record with data past its AID length", R::tlr({replaced(aid, 5, "06")}), "T1_AID"},
        {"AID record with a letter in the country code", R::tlr({replaced(aid, 71, "07X")}), "T1_TRMCNTRY"},
        {"AID record with a TAC that is not hex", R::tlr({replaced(aid, 123, "DC4000A80G")}), "T1_TACDEF"},
        {"CAPK record with modulus longer than declared", R::tlr({replaced(capk, 26, "175")}), "T2_MOD"},
        {"CAPK record with check flag 2", R::tlr({replaced(capk, 525, "2")}), "T2_CHKSTAT"},
        {"PRT unknown action", "PRT00191234", "action"},
    };
    KVRSimTestBench bench;
    auto& host = bench.client();
    for (const auto& broken : cases) {
        SCOPED_TRACE(broken.what);
        host.send(KVRSimTestWire::frame(broken.text));
        EXPECT_EQ(host.readByte(), KVRSimTestWire::kNak);
        // The line is written before the NAK, so it is there by now.
        auto errors = bench.errors();
        auto line = errors.substr(errors.rfind("NAK"));
        EXPECT_NE(line.find(broken.logged), std::string::npos) << line;
    }
    // The log names fields, never their values.
    EXPECT_EQ(bench.errors().find("4111111111111111"), std::string::npos);
}

struct WellFormed {
    const char* what;
    std::string text;
    std::string reply;  ///< the reply, or its start when `prefixOnly`
    bool prefixOnly = false;
};

TEST(KVRSimLayout, AnswersEveryWellFormedCommand) {
    const WellFormed cases[] = {
        {"OPN", "OPN000", "OPN000"},
        {"CLO leaves an idle text", R::display("CLO", "KOVRA           PRONTO"), "CLO000000"},
        {"DSP", R::display("DSP", "Aguarde..."), "DSP000"},
        {"DSP clearing the display", "DSP000", "DSP000"},
        {"RMC", R::display("RMC", "TRANSACAO       APROVADA"), "RMC000"},
        {"GIN of an acquirer", "GIN00208", "GIN000100", true},
        {"PRT of a text", "PRT0070001abc", "PRT0000040000"},
        {"PRT feeding paper", "PRT00520010", "PRT0000012"},
        {"GPN", R::gpn("4111111111111111", "VALOR:      1000SENHA:"), "GPN000036", true},
        {"GOC", R::goc(1000), "GOC000", true},
        {"FNC with issuer data", R::fnc("00", "910A1122334455667788990030"), "FNC000", true},
        {"TLE without a load", "TLE000", "TLE010"},
        {"TLI", R::tli(), "TLI000"},
        {"TLR with both records, lengths not counting themselves", R::tlr({R::aidRecord(), R::capkRecord()}, 0),
         "TLR000"},
        {"TLR with lengths counting themselves", R::tlr({R::aidRecord(4, "A0000000041010")}, 3), "TLR000"},
        {"TLE", "TLE000", "TLE000"},
    };
    KVRSimTestBench bench;
    for (const auto& request : cases) {
        SCOPED_TRACE(request.what);
        auto reply = bench.client().exchange(request.text);
        EXPECT_EQ(request.prefixOnly ? reply.substr(0, request.reply.size()) : reply, request.reply);
    }
}

}  // namespace
