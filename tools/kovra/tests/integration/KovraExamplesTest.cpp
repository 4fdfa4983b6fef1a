// The programs of examples/, run as a developer runs them against the two
// emulators, so that what the README shows keeps working.
#include "KovraEmulatorBench.h"

#include <gtest/gtest.h>

#ifdef KOVRA_EXAMPLES_DIR

namespace {

KVRProcess::Result runExample(const KovraEmulatorBench& bench, const std::string& name,
                              const std::vector<std::string>& arguments = {}) {
    return runKovra(arguments, bench.environment(), std::chrono::seconds(60), KOVRA_EXAMPLES_DIR "/kovra-example-" + name);
}

std::string referenceIn(const std::string& out) {
    const std::string label = "reference           ";
    auto at = out.find(label);
    return at == std::string::npos ? "" : out.substr(at + label.size(), out.find('\n', at) - at - label.size());
}

TEST(KovraExamplesTest, EnrolmentSaleDeclineAndCancellationWithItsReceipt) {
    KovraEmulatorBench bench;
    ASSERT_EQ(runExample(bench, "enrolment").exitCode, 0);

    auto approved = runExample(bench, "sale", {"12345"});
    ASSERT_EQ(approved.exitCode, 0) << approved.err;
    EXPECT_NE(approved.out.find("status              Transação Aprovada\n"), std::string::npos) << approved.out;
    std::string reference = referenceIn(approved.out);
    ASSERT_EQ(reference.size(), 32u) << approved.out;

    // The acquirer declines amounts ending in 51.
    auto declined = runExample(bench, "sale", {"5051"});
    EXPECT_EQ(declined.exitCode, 1);
    EXPECT_NE(declined.err.find("error 211: "), std::string::npos) << declined.err;

    auto cancelled = runExample(bench, "cancellation", {reference});
    ASSERT_EQ(cancelled.exitCode, 0) << cancelled.err;
    EXPECT_NE(cancelled.out.find("status              Transação Cancelada\n"), std::string::npos) << cancelled.out;
    EXPECT_EQ(bench.outbox().size(), 1u);
}

// The card read is held for ten seconds; the cashier cancels after two.
TEST(KovraExamplesTest, ASaleAbortedFromAnotherThreadEndsCancelledWithNothingSent) {
    KovraEmulatorBench::Options options;
    options.pinpadFaults = {{{"command", "GCR"}, {"nth", 1}, {"delay_ms", 10000}}};
    KovraEmulatorBench bench(options);
    ASSERT_EQ(runExample(bench, "enrolment").exitCode, 0);
    auto aborted = runExample(bench, "abort", {"2"});
    EXPECT_EQ(aborted.exitCode, 0) << aborted.out << aborted.err;
    EXPECT_EQ(aborted.out, "cashier pressed Cancel: the PIN pad stopped\nsale cancelled at the PIN pad\n");
    EXPECT_TRUE(nlohmann::json::parse(bench.run({"--json", "list"}).out).empty());
}

}  // namespace

#endif
