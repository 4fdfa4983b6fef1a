#include "SimOptions.h"

#include "AmountRule.h"

#include <cstdlib>

#include <CLI/CLI.hpp>

namespace acqsim {
namespace {

std::string footer() {
    return "\nRoutes (HTTPS POST on 127.0.0.1): /Report (status report: enrolment by KovraCode,\n"
           "EMV table download by sale affiliation key), /Authorize, /CancellationAdvice, /send\n"
           "(mail). Anything else answers 404.\n\n" +
           AmountRule::description() +
           "\nCancellation advices are approved when they name an approved (or partly approved)\n"
           "authorisation by its RcptTxId, or by its InitrTxId when they carry no RcptTxId, with the\n"
           "merchant, TxRef and amount matching; an advice repeated for a cancelled authorisation is\n"
           "approved again. Anything else is declined.\n\n"
           "The state directory keeps ca.pem (give it to clients as their CA file), the server\n"
           "certificate and keys, state.json (merchants seen, and the ledger: \"authorisations\" keyed\n"
           "by RcptTxId, each with initiatorId, reference, amount, response and cancelled),\n"
           "requests.log (one line per request; card data masked unless --log-card-data) and\n"
           "outbox/<n>.json (each accepted mail).\n"
           "When ready the emulator prints:\n"
           "  kovra-acquirer-sim ready at https://127.0.0.1:PORT\n"
           "  ca: /path/to/ca.pem\n";
}

} // namespace

std::filesystem::path SimOptions::defaultStateDirectory() {
    if (const char* state = std::getenv("XDG_STATE_HOME"); state != nullptr && *state != '\0') {
        return std::filesystem::path(state) / "kovra-acquirer-sim";
    }
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        return std::filesystem::path(home) / ".local" / "state" / "kovra-acquirer-sim";
    }
    return "acquirer-state";
}

std::optional<SimOptions> SimOptions::parse(int argc, char** argv, int& exitCode) {
    SimOptions options;
    std::string state = defaultStateDirectory().string();
    std::string merchants;
    CLI::App app("kovra-acquirer-sim: an HTTPS acquirer emulator on loopback for Kovra (terminal management,\n"
                 "authorisation, cancellation and mail).",
                 "kovra-acquirer-sim");
    app.footer(footer());
    app.set_version_flag("--version", std::string("kovra-acquirer-sim ") + ACQSIM_VERSION, "print the version and exit");
    CLI::Option* port = app.add_option("--port", options.port, "TCP port on 127.0.0.1; 0 picks a free one")
                            ->check(CLI::Range(0, 65535));
    app.add_option("--state", state, "state directory (certificates, state, log, outbox)")->capture_default_str();
    app.add_option("--merchants", merchants, "merchant file (JSON keyed by KovraCode); default: the built-in merchants")
        ->check(CLI::ExistingFile);
    app.add_flag("--print-ca", options.printCa, "print the CA file path (creating it if needed) and exit");
    app.add_option("--auth-delay", options.lateAnswerSeconds, "seconds before answering amounts ending in 54")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    app.add_option("--reply-delay", options.replyDelaySeconds, "seconds before answering every other authorisation")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    app.add_option("--advice-delay", options.adviceDelaySeconds, "seconds before answering every cancellation advice")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    app.add_flag("--log-card-data", options.logCardData,
                 "write PAN, tracks, PIN blocks and key serial numbers in clear in the request log");
    try {
        app.parse(argc, argv);
        if (!options.printCa && port->count() == 0) {
            throw CLI::RequiredError("--port");
        }
    } catch (const CLI::ParseError& error) {
        exitCode = app.exit(error);
        return std::nullopt;
    }
    options.stateDirectory = state;
    if (!merchants.empty()) {
        options.merchantsFile = merchants;
    }
    exitCode = 0;
    return options;
}

} // namespace acqsim
