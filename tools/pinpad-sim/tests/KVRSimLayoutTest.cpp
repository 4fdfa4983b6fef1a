#include "KVRSimTestBench.h"
#include "KVRSimTestRequests.h"
#include "testing/KVRAbecsWire.h"

#include <gtest/gtest.h>

namespace {

using R = KVRSimTestRequests;

std::string replaced(std::string text, size_t at, const std::string& with) {
    return text.replace(at, with.size(), with);
}

struct Row {
    const char* what;
    std::string text;
    std::string reply;   ///< the start of the reply; empty when the request must get NAK
    const char* logged;  ///< with NAK: what the line on standard error must mention
    bool kept = false;   ///< a layout the library keeps on purpose, refused when strict
};

// The card number here must never reach standard error.
const std::string kPan = "5555555555554444";

std::vector<Row> rows() {
    auto gcr = R::gcr();
    auto goc = R::goc(1000);
    auto aid = R::aidRecord();
    auto capk = R::capkRecord();
    auto abecsGpn = [](const std::string& pan) {
        return "GPN" + R::block("3" + std::string("16") + std::string(32, '0') + "16" + pan + "1" + "04" + "12" +
                                R::left("SENHA:", 32));
    };
    // "    OPERAÇÃO       FINALIZADA   " as the display receives it, in Latin-1.
    auto finished = "    OPERA\xC7\xC3O       FINALIZADA   ";
    return {
        {"OPN as ABECS writes it", "OPN", "OPN000", ""},
        {"OPN with an empty block", "OPN000", "OPN000", "", true},
        {"OPN with data", "OPN0011", "", "unexpected characters"},
        {"CLO", R::display("CLO", "KOVRA"), "CLO000", ""},
        {"CLO block one short", "CLO031" + std::string(31, 'A'), "", "message"},
        {"GIN", "GIN00200", "GIN000100", ""},
        {"GIN block longer than the text", "GIN0030", "", "needs 3 characters"},
        {"GIN block longer than its field", "GIN003000", "", "unexpected characters"},
        {"DSP in Latin-1", std::string("DSP032") + finished, "DSP000", ""},
        {"DSP clearing the display", "DSP000", "DSP000", "", true},
        {"DSP with a control byte", "DSP032" + std::string(31, 'A') + "\x01", "", "display text"},
        {"RMC", R::display("RMC", "TRANSACAO       APROVADA"), "RMC000", ""},
        {"RMC without message", "RMC000", "", "message"},
        {"PRT of a text", "PRT0070001abc", "PRT0000040000", ""},
        {"PRT block one long", "PRT0080001abc", "", "needs 8 characters"},
        {"GPN as ABECS writes it", abecsGpn(R::left(kPan, 19)), "GPN000036", ""},
        {"GPN of the library", R::gpn(kPan, "SENHA:"), "GPN000036", "", true},
        {"GPN of ABECS with the PAN right-aligned", abecsGpn(R::right(kPan, 19)), "", "pan"},
        {"GPN block one long", replaced(R::gpn(kPan, "SENHA:") + " ", 3, "062"), "", "wkenc"},
        {"GCR", gcr, "GCR020", ""},
        {"GCR of type 00 with its list", "GCR" + R::block(gcr.substr(6, 2) + "00" + gcr.substr(10, 34) + "01" + "0803"),
         "GCR020", ""},
        {"GCR of type 00 without list", R::gcr(R::kStamp, 0), "GCR020", "", true},
        {"GCR block one short", replaced(gcr, 3, "037"), "", "tabver"},
        {"GCR month 13", replaced(gcr, 22, "1513"), "", "date"},
        {"GOC in three blocks", goc, "GOC000", ""},
        {"GOC without the lengths of blocks 2 and 3", goc.substr(0, 92) + goc.substr(95, 55) + "000", "", "block 2"},
        {"GOC tag count larger than its block", replaced(goc, 95, "027"), "", "tags1"},
        {"GOC with a tag cut short", R::goc(1000, "9F"), "", "tag list"},
        {"FNC in two blocks", R::fnc("00", "910A1122334455667788990030"), "FNC000", ""},
        {"FNC without the length of block 2", "FNC010" + std::string("0000000000") + "026" + R::kTags, "", "tags"},
        {"FNC with issuer data of odd length", R::fnc("00", "910"), "", "unexpected characters"},
        {"TLI", R::tli(), "TLI000", ""},
        {"TLI stamp of 9 characters", "TLI01100201405306", "", "tabver"},
        {"TLR with lengths counting themselves", R::tlr({aid, capk}), "TLR000", ""},
        {"TLR with a length not counting itself", R::tlr({aid}, 0), "", "declares 281"},
        {"TLR record count not matching", replaced(R::tlr({aid}), 6, "02"), "", "record length"},
        {"TLR unknown table type", R::tlr({"3" + aid.substr(1)}), "", "unknown table type"},
        {"AID record with a TAC that is not hex", R::tlr({replaced(aid, 123, "DC4000A80G")}), "", "T1_TACDEF"},
        {"CAPK record with modulus longer than declared", R::tlr({replaced(capk, 26, "175")}), "", "T2_MOD"},
        {"TLE as ABECS writes it", "TLE", "TLE000", ""},
        {"TLE with an empty block", "TLE000", "TLE010", "", true},
        {"TLE with data", "TLE0010", "", "unexpected characters"},
        {"unknown command", "XYZ000", "ERR010", ""},
        {"packet shorter than a command name", "OP", "", "shorter"},
    };
}

// One table for the thirteen commands, run against a lenient and a strict PIN
// pad: the strict one refuses exactly the kept layouts and answers the rest alike.
TEST(KVRSimLayout, EveryCommandIsCheckedAgainstItsAbecsLayout) {
    for (bool strict : {false, true}) {
        SCOPED_TRACE(strict ? "--strict-abecs" : "lenient");
        KVRSimTestBench bench(strict ? std::vector<std::string>{"--strict-abecs"} : std::vector<std::string>{});
        auto& host = bench.client();
        for (const auto& row : rows()) {
            SCOPED_TRACE(row.what);
            bool refused = row.reply.empty() || (strict && row.kept);
            host.send(KVRAbecsWire::frame(row.text));
            auto first = host.readByte();
            if (refused) {
                EXPECT_EQ(first, KVRAbecsWire::kNak);
                // The line is written before the NAK, so it is there by now.
                auto errors = bench.errors();
                auto line = errors.substr(errors.rfind("NAK"));
                EXPECT_NE(line.find(row.reply.empty() ? row.logged : "--strict-abecs"), std::string::npos) << line;
                continue;
            }
            ASSERT_EQ(first, KVRAbecsWire::kAck);
            auto reply = host.readFrame().text;
            // GOC and FNC answer with chip data; every other six-character reply is the whole reply.
            bool whole = row.reply.size() == 6 && row.reply != "GOC000" && row.reply != "FNC000";
            EXPECT_EQ(whole ? reply : reply.substr(0, row.reply.size()), row.reply);
        }
        EXPECT_EQ(bench.errors().find(kPan), std::string::npos) << "reasons name fields, never their values";
    }
}

}  // namespace
