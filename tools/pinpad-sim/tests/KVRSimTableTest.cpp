#include "KVRSimTestBench.h"
#include "KVRSimTestRequests.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using R = KVRSimTestRequests;

std::vector<std::string> withState(const KVRTempDirectory& state) {
    return {"--state", state.path()};
}

// Records outside a load are refused with "invalid call" (a TLE without a
// load is in the layout table).
TEST(KVRSimTables, CardReadNeedsACompleteLoadWithTheRequestedStamp) {
    KVRSimTestBench bench;
    auto& host = bench.client();
    EXPECT_EQ(host.exchange(R::gcr()), "GCR020");
    EXPECT_EQ(host.exchange(R::tlr({R::aidRecord()})), "TLR010");
    EXPECT_EQ(host.exchange(R::tli()), "TLI000");
    EXPECT_EQ(host.exchange(R::tlr({R::aidRecord(), R::capkRecord()})), "TLR000");
    EXPECT_EQ(host.exchange(R::gcr()), "GCR020") << "a load without TLE is not complete";
    EXPECT_EQ(host.exchange("TLE000"), "TLE000");
    EXPECT_EQ(host.exchange(R::gcr()).substr(0, 9), "GCR000342");
    EXPECT_EQ(host.exchange(R::gcr("2015010100")), "GCR020") << "another stamp";
    EXPECT_EQ(host.exchange(R::tli("2015010100")), "TLI000");
    EXPECT_EQ(host.exchange(R::gcr()), "GCR020") << "TLI voids the tables it replaces";
}

TEST(KVRSimTables, LoadedTablesSurviveARestartWithTheSameState) {
    KVRTempDirectory state;
    {
        KVRSimTestBench first(withState(state));
        first.loadTables();
    }
    auto saved = nlohmann::json::parse(state.read("pinpad-tables.json"));
    EXPECT_EQ(saved["stamp"], R::kStamp);
    EXPECT_EQ(saved["aid"], nlohmann::json::array({R::aidRecord()}));
    EXPECT_EQ(saved["capk"], nlohmann::json::array({R::capkRecord()}));

    KVRSimTestBench second(withState(state));
    EXPECT_EQ(second.client().exchange(R::gcr()).substr(0, 6), "GCR000");
    EXPECT_EQ(second.client().exchange(R::tli()), "TLI000");
    second.process().stop();

    KVRSimTestBench third(withState(state));
    EXPECT_EQ(third.client().exchange(R::gcr()), "GCR020") << "the interrupted load was persisted as well";
}

}  // namespace
