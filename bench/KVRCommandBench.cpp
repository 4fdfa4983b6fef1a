// Command encoding and decoding: the request texts of a chip sale (GCR, GOC,
// FNC) and of a table load (TLR with one AID and one CAPK record), and the
// decoding of the two largest replies of a sale (GCR, GOC).

#include <benchmark/benchmark.h>

#include "Pinpad/Commands/KVRFncCommandRequest.h"
#include "Pinpad/Commands/KVRGcrCommandRequest.h"
#include "Pinpad/Commands/KVRGcrCommandResponse.h"
#include "Pinpad/Commands/KVRGocCommandRequest.h"
#include "Pinpad/Commands/KVRGocCommandResponse.h"
#include "Pinpad/Commands/KVRTlrCommandRequest.h"
#include "Tms/KVRAidTable.h"
#include "Tms/KVRCapkTable.h"
#include "support/KVRBenchSamples.h"
#include "testing/KVRPinpadReplies.h"

#include <cstring>
#include <string>

namespace {

// The values a sale sends: acquirer 8, this library's table stamp and tag list.
constexpr const char* kTableVersion = "2014053065";
constexpr const char* kEmvTags = "5F2A82959A9C9F029F109F1A9F1E9F269F339F369F379F279F34";

void encodeEach(benchmark::State& state, KVRBaseCommandRequest& request) {
    char text[KVRCommandBufferSize];
    for (auto _ : state) {
        request.getCommand(text);
        benchmark::DoNotOptimize(text);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    state.counters["text_bytes"] = static_cast<double>(std::strlen(text));
}

void BM_Encode_GCR(benchmark::State& state) {
    KVRGcrCommandRequest gcr;
    gcr.acqidxreq = 8;
    gcr.apptypreq = 1;
    gcr.amount = 1500;
    gcr.tabver = kTableVersion;
    encodeEach(state, gcr);
}
BENCHMARK(BM_Encode_GCR);

void BM_Encode_GOC(benchmark::State& state) {
    KVRGocCommandRequest goc;
    goc.amount = 1500;
    goc.method = 3;
    goc.keydix = 16;
    goc.wkenc = std::string(32, '0');
    goc.acqidx = 8;
    goc.tags1 = kEmvTags;
    encodeEach(state, goc);
}
BENCHMARK(BM_Encode_GOC);

void BM_Encode_FNC(benchmark::State& state) {
    KVRFncCommandRequest fnc;
    fnc.communicationStatus = 0;
    fnc.authorizationResponseCode = "00";
    fnc.issuerDataEmv = "910A1122334455667788990A8A023030";
    fnc.tags = kEmvTags;
    encodeEach(state, fnc);
}
BENCHMARK(BM_Encode_FNC);

void BM_Encode_TLR(benchmark::State& state) {
    KVRAidTable aids;
    KVRCapkTable capks;
    auto aidRecords = aids.readAidString(KVRBenchSamples::aidTable(1), nullptr);
    auto capkRecords = capks.readCapkString(KVRBenchSamples::capkTable(1), nullptr);
    if (!aidRecords || aidRecords->empty() || !capkRecords || capkRecords->empty()) {
        state.SkipWithError("the sample tables did not parse");
        return;
    }
    KVRTlrCommandRequest tlr;
    tlr.aidCommand = aidRecords->front();
    tlr.capkCommand = capkRecords->front();
    encodeEach(state, tlr);
}
BENCHMARK(BM_Encode_TLR);

template <typename Response>
void decodeEach(benchmark::State& state, const std::string& reply) {
    for (auto _ : state) {
        Response response(reply.c_str());
        benchmark::DoNotOptimize(response);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * reply.size()));
    state.counters["text_bytes"] = static_cast<double>(reply.size());
}

void BM_Decode_GCR(benchmark::State& state) {
    const std::string reply = KVRBenchSamples::gcrChipReply();
    KVRGcrCommandResponse check(reply.c_str());
    if (check.pan != KVRPinpadReplies::CardRead{}.pan || check.cardType != 3) {
        state.SkipWithError("the sample GCR reply does not decode as laid out");
        return;
    }
    decodeEach<KVRGcrCommandResponse>(state, reply);
}
BENCHMARK(BM_Decode_GCR);

void BM_Decode_GOC(benchmark::State& state) {
    const std::string reply = KVRBenchSamples::gocOnlineReply();
    KVRGocCommandResponse check(reply.c_str());
    if (check.emvData != KVRBenchSamples::gocEmvData() || !check.pinOnline) {
        state.SkipWithError("the sample GOC reply does not decode as laid out");
        return;
    }
    decodeEach<KVRGocCommandResponse>(state, reply);
}
BENCHMARK(BM_Decode_GOC);

}  // namespace
