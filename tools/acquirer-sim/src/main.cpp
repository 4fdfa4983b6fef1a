// kovra-acquirer-sim: see SimOptions.cpp (or --help) for what it does.
#include "AcquirerServer.h"
#include "CardDataMask.h"
#include "CertificateAuthority.h"
#include "MerchantDirectory.h"
#include "RequestLog.h"
#include "SimOptions.h"
#include "SimState.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <iostream>
#include <thread>

namespace {

// SIGINT and SIGTERM are taken by sigwait() in main; blocked before any
// thread exists, so no server thread is interrupted by them.
sigset_t blockStopSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    // A client that hangs up (as after a late answer) must not kill the server.
    signal(SIGPIPE, SIG_IGN);
    return set;
}

acqsim::MerchantDirectory loadMerchants(const acqsim::SimOptions& options) {
    return options.merchantsFile ? acqsim::MerchantDirectory::fromFile(*options.merchantsFile)
                                 : acqsim::MerchantDirectory::defaults();
}

int serve(const acqsim::SimOptions& options, const std::filesystem::path& caFile, const sigset_t& stopSignals,
          acqsim::CertificateAuthority& authority) {
    namespace fs = std::filesystem;
    const fs::path state = options.stateDirectory;
    acqsim::MerchantDirectory merchants = loadMerchants(options);
    acqsim::SimState simState(state / "state.json");
    fs::create_directories(state / "outbox");
    acqsim::RequestLog log(state / "requests.log");
    acqsim::ServerSetup setup{authority.serverCertificateFile(), authority.serverKeyFile(), state / "outbox",
                              options.lateAnswerSeconds, options.replyDelaySeconds, options.adviceDelaySeconds};
    acqsim::AcquirerServer server(setup, merchants, simState, log);
    const int port = server.bind(options.port);

    std::atomic<bool> stopping = false;
    std::atomic<bool> finished = false;
    std::thread serving([&] {
        server.run();
        finished = true;
        if (!stopping) {
            kill(getpid(), SIGTERM);
        }
    });
    // Only a running server can be stopped; until then a stop signal stays
    // pending, and the ready line promises a server that answers.
    while (!server.running() && !finished) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::cout << "kovra-acquirer-sim ready at https://127.0.0.1:" << port << "\n"
              << "ca: " << caFile.string() << std::endl;
    int received = 0;
    sigwait(&stopSignals, &received);
    stopping = true;
    server.stop();
    serving.join();
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const sigset_t stopSignals = blockStopSignals();
    int exitCode = 0;
    std::optional<acqsim::SimOptions> options = acqsim::SimOptions::parse(argc, argv, exitCode);
    if (!options) {
        return exitCode;
    }
    acqsim::CardDataMask::setClearText(options->logCardData);
    try {
        std::filesystem::create_directories(options->stateDirectory);
        options->stateDirectory = std::filesystem::canonical(options->stateDirectory);
        acqsim::CertificateAuthority authority(options->stateDirectory);
        authority.ensure();
        if (options->printCa) {
            std::cout << authority.caFile().string() << std::endl;
            return 0;
        }
        return serve(*options, authority.caFile(), stopSignals, authority);
    } catch (const std::exception& error) {
        std::cerr << "kovra-acquirer-sim: " << error.what() << std::endl;
        return 1;
    }
}
