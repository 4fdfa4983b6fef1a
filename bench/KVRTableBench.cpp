// EMV tables: the stored AID and CAPK texts (100 applications, 100 keys)
// parsed into PIN pad records, and the 200 records encoded, one table-load
// request (TLR) each, as a load sends them.

#include <benchmark/benchmark.h>

#include "Pinpad/Commands/KVRTlrCommandRequest.h"
#include "Tms/KVRAidTable.h"
#include "Tms/KVRCapkTable.h"
#include "support/KVRBenchSamples.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr int kApplications = 100;
constexpr int kKeys = 100;

struct Records {
    std::vector<std::shared_ptr<KVRAidTableCommand>> aids;
    std::vector<std::shared_ptr<KVRCapkTableCommand>> capks;
    bool complete() const { return aids.size() == kApplications && capks.size() == kKeys; }
};

const std::string& aidText() {
    static const std::string text = KVRBenchSamples::aidTable(kApplications);
    return text;
}

const std::string& capkText() {
    static const std::string text = KVRBenchSamples::capkTable(kKeys);
    return text;
}

Records parse() {
    KVRAidTable aidTable;
    KVRCapkTable capkTable;
    std::optional<KVRError> error;
    Records records;
    if (auto aids = aidTable.readAidString(aidText(), &error)) records.aids = std::move(*aids);
    if (auto capks = capkTable.readCapkString(capkText(), &error)) records.capks = std::move(*capks);
    return records;
}

/// Bytes of request text written for the records.
size_t encode(const Records& records) {
    char text[KVRCommandBufferSize];
    size_t written = 0;
    for (const auto& aid : records.aids) {
        KVRTlrCommandRequest tlr;
        tlr.aidCommand = aid;
        tlr.getCommand(text);
        written += std::char_traits<char>::length(text);
    }
    for (const auto& capk : records.capks) {
        KVRTlrCommandRequest tlr;
        tlr.capkCommand = capk;
        tlr.getCommand(text);
        written += std::char_traits<char>::length(text);
    }
    return written;
}

void BM_Tables_Parse(benchmark::State& state) {
    if (!parse().complete()) {
        state.SkipWithError("the sample tables did not give 100 + 100 records");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(parse());
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * (kApplications + kKeys));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * (aidText().size() + capkText().size())));
}
BENCHMARK(BM_Tables_Parse)->Unit(benchmark::kMicrosecond);

void BM_Tables_Encode(benchmark::State& state) {
    Records records = parse();
    if (!records.complete()) {
        state.SkipWithError("the sample tables did not give 100 + 100 records");
        return;
    }
    size_t written = 0;
    for (auto _ : state) benchmark::DoNotOptimize(written = encode(records));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * (kApplications + kKeys));
    state.counters["request_bytes"] = static_cast<double>(written);
}
BENCHMARK(BM_Tables_Encode)->Unit(benchmark::kMicrosecond);

void BM_Tables_ParseAndEncode(benchmark::State& state) {
    if (!parse().complete()) {
        state.SkipWithError("the sample tables did not give 100 + 100 records");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(encode(parse()));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * (kApplications + kKeys));
}
BENCHMARK(BM_Tables_ParseAndEncode)->Unit(benchmark::kMicrosecond);

}  // namespace
