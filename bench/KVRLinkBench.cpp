// The frame codec: the link's CRC against the table-driven reference, and
// whole exchanges (request framed and written, reply read back and cut out
// of its frame) through the in-memory accessory.

#include <benchmark/benchmark.h>

#include "Pinpad/Commands/KVRBaseCommandRequest.h"
#include "Pinpad/Commands/KVRGcrCommandRequest.h"
#include "Pinpad/KVRBluetoothConnection.h"
#include "support/KVRBenchPinpad.h"
#include "support/KVRBenchSamples.h"
#include "support/KVRReferenceCrc.h"

#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int kRepliesPerRun = 10000;

std::vector<uint8_t> crcInput(size_t length) {
    std::vector<uint8_t> bytes(length);
    for (size_t i = 0; i < length; ++i) bytes[i] = static_cast<uint8_t>(0x20 + (i * 7) % 0x5F);
    return bytes;
}

void BM_Crc_Ours(benchmark::State& state) {
    auto bytes = crcInput(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(bytes.data());
        uint16_t crc = KVRBluetoothConnection::calculateCrc(bytes.data(), static_cast<uint32_t>(bytes.size()));
        benchmark::DoNotOptimize(crc);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}
BENCHMARK(BM_Crc_Ours)->Arg(16)->Arg(1024);

void BM_Crc_Reference(benchmark::State& state) {
    auto bytes = crcInput(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(bytes.data());
        uint16_t crc = KVRReferenceCrc::xmodem(bytes.data(), bytes.size());
        benchmark::DoNotOptimize(crc);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}
BENCHMARK(BM_Crc_Reference)->Arg(16)->Arg(1024);

/// A request whose text is fixed, so that an exchange costs framing and
/// reading only, not the encoding of a command.
class FixedRequest : public KVRBaseCommandRequest {
public:
    explicit FixedRequest(std::string text) : text_(std::move(text)) {}
    void getCommand(char* buffer) override { std::memcpy(buffer, text_.c_str(), text_.size() + 1); }

private:
    std::string text_;
};

std::string cardReadRequestText() {
    KVRGcrCommandRequest gcr;
    gcr.acqidxreq = 8;
    gcr.apptypreq = 1;
    gcr.amount = 1500;
    gcr.tabver = "2014053065";
    char text[KVRCommandBufferSize];
    gcr.getCommand(text);
    return text;
}

// 10 000 card reads: each request framed and written, each reply (sent by
// the PIN pad's thread as the request arrives) read back byte by byte and cut
// from its frame.
void BM_FrameExchange(benchmark::State& state) {
    KVRBenchPinpad pinpad;
    if (!pinpad.connectSharedLink()) {
        state.SkipWithError("no session with the memory PIN pad");
        return;
    }
    auto link = KVRBluetoothConnection::sharedController();
    FixedRequest request(cardReadRequestText());
    const std::string reply = KVRBenchSamples::gcrChipReply();
    pinpad.startAnswering([&reply](const std::string&) { return std::vector<std::string>{reply}; });

    size_t wrong = 0;
    for (auto _ : state) {
        for (int i = 0; i < kRepliesPerRun; ++i) {
            link->sendRequest(request);
            const char* text = link->readMessage();
            benchmark::DoNotOptimize(text);
        }
        state.PauseTiming();
        wrong += reply != link->messageBuffer();
        state.ResumeTiming();
    }
    pinpad.stopAnswering();
    if (wrong) state.SkipWithError("a reply came back altered");
    uint64_t bytes = pinpad.bytesFromLibrary() + pinpad.bytesToLibrary();
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kRepliesPerRun);
    state.SetBytesProcessed(static_cast<int64_t>(bytes));
    state.counters["replies"] = kRepliesPerRun;
    state.counters["wire_bytes_per_exchange"] = static_cast<double>(bytes) / static_cast<double>(state.iterations() * kRepliesPerRun);
}
BENCHMARK(BM_FrameExchange)->Unit(benchmark::kMillisecond);

}  // namespace
