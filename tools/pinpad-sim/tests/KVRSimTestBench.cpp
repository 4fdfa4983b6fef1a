#include "KVRSimTestBench.h"

#include "KVRSimTestRequests.h"

#include <gtest/gtest.h>

#include <stdexcept>

KVRSimTestBench::KVRSimTestBench(std::vector<std::string> arguments, Endpoint endpoint)
    : KVRSimTestBench(std::make_shared<KVRSimTestDirectory>(), std::move(arguments), endpoint) {}

KVRSimTestBench::KVRSimTestBench(std::shared_ptr<KVRSimTestDirectory> directory, std::vector<std::string> arguments,
                                 Endpoint endpoint)
    : directory_(std::move(directory)) {
    if (endpoint == Endpoint::Tcp) {
        arguments.insert(arguments.begin(), {"--tcp", "0"});
    }
    process_ = std::make_unique<KVRSimTestProcess>(arguments, directory_->file("stderr.txt"));
    endpoint_ = process_->waitReady();
}

KVRSimTestBench::~KVRSimTestBench() {
    client_.reset();
    int status = process_->terminate();
    auto errors = this->errors();
    if (status != 0 || errors.find("Sanitizer") != std::string::npos || errors.find("runtime error") != std::string::npos) {
        ADD_FAILURE() << "the emulator ended with status " << status << ":\n" << errors;
    }
}

std::unique_ptr<KVRSimTestBench> KVRSimTestBench::withScenario(const std::string& scenario,
                                                               std::vector<std::string> arguments) {
    auto directory = std::make_shared<KVRSimTestDirectory>();
    directory->write("scenario.json", scenario);
    arguments.insert(arguments.end(), {"--scenario", directory->file("scenario.json")});
    return std::unique_ptr<KVRSimTestBench>(new KVRSimTestBench(directory, arguments, Endpoint::Tcp));
}

KVRSimTestClient& KVRSimTestBench::client() {
    if (!client_) {
        client_ = connect();
    }
    return *client_;
}

void KVRSimTestBench::loadTables() {
    auto& host = client();
    for (const auto& request : {KVRSimTestRequests::tli(), KVRSimTestRequests::tlr({KVRSimTestRequests::aidRecord()}),
                                KVRSimTestRequests::tlr({KVRSimTestRequests::capkRecord()}), std::string("TLE000")}) {
        auto reply = host.exchange(request);
        if (reply != request.substr(0, 3) + "000") {
            throw std::runtime_error("table load step answered " + reply);
        }
    }
}

void KVRSimTestBench::reopen() {
    client_.reset();
    endpoint_ = process_->waitReady();
}
