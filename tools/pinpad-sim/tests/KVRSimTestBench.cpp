#include "KVRSimTestBench.h"

#include "KVRSimTestRequests.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

const std::string kReady = "kovra-pinpad-sim ready on ";

}  // namespace

KVRSimTestBench::KVRSimTestBench(std::vector<std::string> arguments, Endpoint endpoint, const std::string& scenario) {
    if (endpoint == Endpoint::Tcp) arguments.insert(arguments.begin(), {"--tcp", "0"});
    if (!scenario.empty()) {
        directory_.write("scenario.json", scenario);
        arguments.insert(arguments.end(), {"--scenario", directory_.file("scenario.json")});
    }
    process_ = std::make_unique<KVRProcess>(KOVRA_PINPAD_SIM_BINARY, arguments, KVRProcess::Options{.environment = {}, .captureErrors = true});
    reopen();
}

KVRSimTestBench::~KVRSimTestBench() {
    client_.reset();
    int status = process_->stop();
    auto errors = this->errors();
    if (status != 0 || errors.find("Sanitizer") != std::string::npos || errors.find("runtime error") != std::string::npos) {
        ADD_FAILURE() << "the emulator ended with status " << status << ":\n" << errors;
    }
}

KVRSimTestClient& KVRSimTestBench::client() {
    if (!client_) client_ = connect();
    return *client_;
}

void KVRSimTestBench::loadTables() {
    auto& host = client();
    for (const auto& request : {KVRSimTestRequests::tli(), KVRSimTestRequests::tlr({KVRSimTestRequests::aidRecord()}),
                                KVRSimTestRequests::tlr({KVRSimTestRequests::capkRecord()}), std::string("TLE000")}) {
        auto reply = host.exchange(request);
        if (reply != request.substr(0, 3) + "000") throw std::runtime_error("table load step answered " + reply);
    }
}

void KVRSimTestBench::reopen() {
    client_.reset();
    auto line = process_->waitForLine(kReady, std::chrono::seconds(10));
    if (!line) throw std::runtime_error("the emulator printed no ready line: " + errors());
    endpoint_ = line->substr(kReady.size());
}

KVRProcess::Result runSim(const std::vector<std::string>& arguments) {
    return KVRProcess::run(KOVRA_PINPAD_SIM_BINARY, arguments);
}
