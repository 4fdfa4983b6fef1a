#include "KVRSimCommandProcessor.h"
#include "KVRSimDisplay.h"
#include "KVRSimOptions.h"
#include "KVRSimPacedTransport.h"
#include "KVRSimPtyTransport.h"
#include "KVRSimScenario.h"
#include "KVRSimServer.h"
#include "KVRSimTableStore.h"
#include "KVRSimTcpTransport.h"

#include <csignal>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

namespace {

KVRSimScenario loadScenario(const KVRSimOptions& options) {
    auto scenario = options.scenario ? KVRSimScenario::fromFile(*options.scenario) : KVRSimScenario();
    for (const auto& fault : options.faults) {
        scenario.addRule(KVRSimFaultRule::fromJsonText(fault));
    }
    return scenario;
}

std::unique_ptr<KVRSimTransport> makeTransport(const KVRSimOptions& options) {
    if (options.tcpPort) {
        return std::make_unique<KVRSimTcpTransport>(*options.tcpPort);
    }
    return std::make_unique<KVRSimPtyTransport>(options.link);
}

int serve(const KVRSimOptions& options) {
    auto scenario = loadScenario(options);
    KVRSimTableStore tables(options.stateDirectory);
    tables.restore();
    KVRSimDisplay display(options.displayLog);
    auto card = options.card.value_or(scenario.card().value_or("chip-visa"));
    KVRSimCommandProcessor processor(options.identity, card, scenario, tables, display,
                                     {options.strictAbecs, options.logCardData});
    auto transport = makeTransport(options);
    std::optional<KVRSimPacedTransport> paced;
    if (options.bitRate) paced.emplace(*transport, *options.bitRate);
    KVRSimServer server(paced ? static_cast<KVRSimTransport&>(*paced) : *transport, processor, options.commandLog,
                        options.verbose);
    return server.run(std::cout);
}

}  // namespace

int main(int argc, char** argv) {
    // A reader that stops listening after the ready line must not kill the
    // emulator when it announces a reopened terminal.
    std::signal(SIGPIPE, SIG_IGN);
    KVRSimOptions options;
    try {
        options = KVRSimOptions::parse(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const KVRSimOptions::Invalid& error) {
        std::cerr << "kovra-pinpad-sim: " << error.what() << "\n(try --help)" << std::endl;
        return 2;
    }
    if (options.help) {
        std::cout << KVRSimOptions::helpText();
        return 0;
    }
    if (options.version) {
        std::cout << "kovra-pinpad-sim " << KOVRA_PINPAD_SIM_VERSION << std::endl;
        return 0;
    }
    try {
        return serve(options);
    } catch (const std::invalid_argument& error) {
        std::cerr << "kovra-pinpad-sim: " << error.what() << std::endl;
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "kovra-pinpad-sim: " << error.what() << std::endl;
        return 1;
    }
}
