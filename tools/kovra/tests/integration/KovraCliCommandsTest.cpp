// Each command against the two emulators: output, --json parsed back, exit codes.
#include "KovraEmulatorBench.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

json parsed(const KVRProcess::Result& result) {
    json document = json::parse(result.out, nullptr, false);
    EXPECT_FALSE(document.is_discarded()) << result.out;
    return document;
}

// The PIN pad commands connect first and print the PIN pad's notifications
// as they arrive.
TEST(KovraCliCommandsTest, PinpadEnrolmentMerchantsAndTables) {
    KovraEmulatorBench::Options options;
    options.pinpadFaults = {{{"command", "DSP"}, {"ntm", {"AGUARDE"}}, {"times", 2}}};
    KovraEmulatorBench bench(options);
    auto connected = bench.run({"connect"});
    EXPECT_EQ(connected.exitCode, 0) << connected.err;
    EXPECT_EQ(connected.out, "connected to the PIN pad " + bench.pinpadDevice() + "\n");

    auto shown = bench.run({"display", "OLA MUNDO"});
    EXPECT_EQ(shown.exitCode, 0) << shown.err;
    EXPECT_EQ(shown.out, "pinpad: AGUARDE\nshown on the PIN pad: OLA MUNDO\n");
    EXPECT_EQ(bench.pinpadCommands().back().substr(0, 15), "DSP032OLA MUNDO");
    // With --json the data stays alone on standard output.
    auto machine = bench.run({"--json", "display", "OI"});
    EXPECT_EQ(parsed(machine)["displayed"], "OI");
    EXPECT_EQ(machine.err, "pinpad: AGUARDE\n");

    auto tooLong = bench.run({"display", std::string(33, 'X')});
    EXPECT_EQ(tooLong.exitCode, 2);
    EXPECT_EQ(tooLong.err, "error 105: The string exceeded the number of allowed characters.\n");

    auto withoutTables = bench.run({"card-pan"});
    EXPECT_EQ(withoutTables.exitCode, 3);
    EXPECT_EQ(withoutTables.err, "error 304: Tables AID or CAPK not found. Download tables from server.\n");

    auto enrolled = bench.run({"--json", "enroll", "KOVRA-0001"});
    ASSERT_EQ(enrolled.exitCode, 0) << enrolled.err;
    json merchant = parsed(enrolled);
    EXPECT_EQ(merchant["kovracode"], "KOVRA-0001");
    EXPECT_EQ(merchant["saleAffiliationKey"], "1234-5678");

    auto again = bench.run({"enroll", "KOVRA-0001"});
    EXPECT_EQ(again.exitCode, 2);
    EXPECT_EQ(again.err, "error 202: The current kovracode is already activated.\n");

    auto listed = bench.run({"merchants"});
    EXPECT_EQ(listed.exitCode, 0);
    EXPECT_EQ(listed.out.rfind("KOVRA-0001  Padaria Pão Quente Ltda\n", 0), 0u) << listed.out;

    auto downloaded = bench.run({"tables", "download", "--json"});
    ASSERT_EQ(downloaded.exitCode, 0) << downloaded.err;
    json counts = parsed(downloaded);
    int records = counts["aids"].get<int>() + counts["capks"].get<int>();

    // Standard error is no terminal here: one plain line per record.
    auto loaded = bench.run({"tables", "load"});
    ASSERT_EQ(loaded.exitCode, 0) << loaded.err;
    EXPECT_EQ(loaded.out, "EMV tables loaded into the PIN pad (" + std::to_string(records) + " records)\n");
    auto progress = loaded.errorLines();
    ASSERT_EQ(static_cast<int>(progress.size()), records) << loaded.err;
    EXPECT_EQ(progress.back(), "tables: record " + std::to_string(records) + " of " + std::to_string(records) + " loaded");
    auto card = bench.run({"card-pan", "--json"});
    ASSERT_EQ(card.exitCode, 0) << card.err;
    EXPECT_EQ(parsed(card)["lastDigits"], "0010");
    EXPECT_EQ(bench.run({"card-pan"}).out, "card **** 0010\n");

    EXPECT_EQ(bench.run({"deactivate", "KOVRA-0001"}).exitCode, 0);
    EXPECT_EQ(parsed(bench.run({"merchants", "--json"})), json::array());
    auto unknown = bench.run({"deactivate", "KOVRA-0001"});
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_EQ(unknown.err, "kovra: no merchant is enrolled with the KovraCode KOVRA-0001\n");
}

TEST(KovraCliCommandsTest, SaleListCancelReceiptsAndFeedback) {
    KovraEmulatorBench::Options options;
    options.cards = {"chip-visa", "chip-master", "stripe-pin"};
    KovraEmulatorBench bench(options);
    ASSERT_EQ(bench.run({"enroll", "KOVRA-0001"}).exitCode, 0);
    ASSERT_EQ(bench.run({"tables", "download"}).exitCode, 0);
    // The PIN pad has no tables yet: the sale loads them and reads the card again.
    auto first = bench.run({"--json", "sale", "--amount", "12345"});
    ASSERT_EQ(first.exitCode, 0) << first.err;
    json approved = parsed(first);
    EXPECT_EQ(approved["status"], 2);
    EXPECT_EQ(approved["amount"], 12345);
    EXPECT_EQ(approved["type"], "credit");
    EXPECT_EQ(approved["lastDigits"], "0010");
    EXPECT_NE(first.err.find("tables: record 1 of"), std::string::npos) << first.err;

    auto declined = bench.run({"sale", "--amount", "5051"});
    EXPECT_EQ(declined.exitCode, 1);
    EXPECT_EQ(declined.errorLines().back(), "error 211: Your transaction was rejected by Authorizer.");
    EXPECT_EQ(declined.out.rfind("sale not approved:\n", 0), 0u) << declined.out;
    json last = parsed(bench.run({"--json", "last"}));
    EXPECT_EQ(last["state"], "settled");
    EXPECT_EQ(last["hostAnswer"], "declined");
    EXPECT_EQ(bench.run({"pending"}).out, "nothing is owed to the acquirer\n");

    auto stripe = bench.run({"--json", "sale", "--amount", "2590", "--debit"});
    ASSERT_EQ(stripe.exitCode, 0) << stripe.err;
    json debit = parsed(stripe);
    EXPECT_EQ(debit["type"], "debit");
    EXPECT_EQ(debit["lastDigits"], "4444");

    json all = parsed(bench.run({"list", "--json"}));
    ASSERT_EQ(all.size(), 3u);
    json byCard = parsed(bench.run({"list", "--pan", "4444", "--json"}));
    ASSERT_EQ(byCard.size(), 1u);
    EXPECT_EQ(byCard[0]["reference"], debit["reference"]);

    std::string reference = approved["reference"];
    auto cancelled = bench.run({"--json", "cancel", reference});
    ASSERT_EQ(cancelled.exitCode, 0) << cancelled.err;
    EXPECT_EQ(parsed(cancelled)["status"], 5);
    auto twice = bench.run({"cancel", reference});
    EXPECT_EQ(twice.exitCode, 2);
    EXPECT_EQ(twice.err, "error 210: This transaction is already cancelled or can not be cancelled.\n");

    // No receipt for a declined sale, no cancellation receipt for a standing one.
    for (const auto& [sale, flag] : std::vector<std::pair<std::string, std::string>>{
             {last["transaction"]["reference"].get<std::string>(), ""},
             {debit["reference"].get<std::string>(), "--cancellation"}}) {
        std::vector<std::string> arguments{"receipt", sale, "--to", "cliente@example.com"};
        if (!flag.empty()) arguments.push_back(flag);
        auto refused = bench.run(arguments);
        EXPECT_EQ(refused.exitCode, 2) << flag;
        EXPECT_NE(refused.err.find("it has no"), std::string::npos) << refused.err;
    }

    auto voidReceipt =
        bench.run({"receipt", reference, "--to", "cliente@example.com", "--cancellation", "--company-info"});
    EXPECT_EQ(voidReceipt.exitCode, 0) << voidReceipt.err;
    EXPECT_EQ(voidReceipt.out, "cancellation receipt of " + reference + " sent to cliente@example.com\n");
    auto saleReceipt = bench.run({"--json", "receipt", debit["reference"], "--to", "outro@example.com"});
    EXPECT_EQ(parsed(saleReceipt)["kind"], "sale");
    auto sent = bench.run({"feedback", "Muito bom"});
    EXPECT_EQ(sent.exitCode, 0) << sent.err;
    EXPECT_EQ(sent.out, "feedback sent\n");
    auto mails = bench.outbox();
    ASSERT_EQ(mails.size(), 3u);
    EXPECT_EQ(mails[0]["template"], "void_transaction");
    EXPECT_EQ(mails[0]["body_parameters"]["display_company_information"], "true");
    EXPECT_EQ(mails[1]["template"], "transaction");
    EXPECT_EQ(mails[1]["body_parameters"]["client_masked_card_number"], "**** **** **** 4444");
    EXPECT_EQ(mails[2]["template"], "default");
    EXPECT_EQ(mails[2]["mail_header"]["to"], "suporte@kovra.example");
    EXPECT_EQ(mails[2]["body_parameters"]["body_message"], "Muito bom");
}

}  // namespace
