// The programs of examples/, run as a developer runs them against the two
// emulators: KOVRA_INFO_PLIST and KOVRA_DATA_DIR as the bench gives them to kovra.
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

// Standard error may also carry the library's PIN pad log lines, by default.
bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

TEST(KovraExamplesTest, SaleEnrolmentAndCancellationWithItsReceipt) {
    KovraEmulatorBench bench;
    // Before enrolment the sale is refused at once, with no record to show.
    auto refused = runExample(bench, "sale");
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_TRUE(endsWith(refused.err, "error 201: Kovracode activation is needed before running this operation.\n"))
        << refused.err;

    auto enrolled = runExample(bench, "enrolment");
    ASSERT_EQ(enrolled.exitCode, 0) << enrolled.err;
    EXPECT_EQ(enrolled.out,
              "merchant KOVRA-0001: Padaria Pão Quente Ltda\ntables downloaded\ntables loaded into the PIN pad\n");
    EXPECT_NE(enrolled.err.find("loading 1/"), std::string::npos) << enrolled.err;

    auto approved = runExample(bench, "sale", {"12345"});
    ASSERT_EQ(approved.exitCode, 0) << approved.err;
    EXPECT_NE(approved.out.find("amount              R$ 123,45\n"), std::string::npos) << approved.out;
    EXPECT_NE(approved.out.find("status              Transação Aprovada\n"), std::string::npos) << approved.out;
    std::string reference = referenceIn(approved.out);
    ASSERT_EQ(reference.size(), 32u) << approved.out;

    // The acquirer declines amounts ending in 51: the record shown is this
    // sale's, not the approved one before it.
    auto declined = runExample(bench, "sale", {"5051"});
    EXPECT_EQ(declined.exitCode, 1);
    EXPECT_NE(declined.out.find("status              Transação Negada\n"), std::string::npos) << declined.out;
    EXPECT_NE(referenceIn(declined.out), reference);
    EXPECT_TRUE(endsWith(declined.err, "error 211: Your transaction was rejected by Authorizer.\n")) << declined.err;

    auto cancelled = runExample(bench, "cancellation", {reference});
    ASSERT_EQ(cancelled.exitCode, 0) << cancelled.err;
    EXPECT_EQ(referenceIn(cancelled.out), reference);
    EXPECT_NE(cancelled.out.find("status              Transação Cancelada\n"), std::string::npos) << cancelled.out;
    EXPECT_NE(cancelled.out.find("cancellation receipt sent to cliente@example.com\n"), std::string::npos);
    EXPECT_EQ(bench.outbox().size(), 1u);
    EXPECT_EQ(runExample(bench, "cancellation", {"NO-SUCH-REFERENCE"}).exitCode, 1);
}

}  // namespace

#endif
