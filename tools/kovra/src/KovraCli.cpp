#include "KovraCli.h"

#include "KovraCommandError.h"
#include "KovraCommands.h"
#include "KovraDemo.h"
#include "KovraInfoTemplate.h"
#include "KovraInterrupts.h"
#include "KovraOutput.h"

#include <kovra/KVRException.h>
#include <kovra/KVRJournalProvider.h>
#include <kovra/KVRPinPadConnectionProvider.h>
#include <kovra/KVRStoreProvider.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iostream>
#include <regex>

namespace {

const char* const kFooter =
    "\nExit codes: 0 success; 1 declined by the acquirer or the card (or cancelled by the cardholder);\n"
    "2 bad usage, or an operation refused before anything was tried (a sale before enrolment, an\n"
    "amount below 10 cents, a record that does not exist); 3 a technical failure (network, acquirer,\n"
    "PIN pad, store); 130 interrupted. Failures print \"error CODE: DESCRIPTION\" (the library's) or\n"
    "\"kovra: MESSAGE\" on standard error; with --json, {\"error\":{\"code\":…,\"domain\":…,\"message\":…}}\n"
    "on standard output.\n"
    "Commands that use the PIN pad connect to it first. Run `kovra demo` to try everything\n"
    "against the PIN pad and acquirer emulators.";

CLI::Validator lastFourDigits() {
    return CLI::Validator(
        [](std::string& value) -> std::string {
            bool digits = value.size() == 4 && std::all_of(value.begin(), value.end(), ::isdigit);
            return digits ? std::string() : "expected the last four digits of a card, got " + value;
        },
        "LAST4");
}

// Looks like an address: something, one "@", and a domain with a dot.
CLI::Validator mailAddress() {
    return CLI::Validator(
        [](std::string& value) -> std::string {
            static const std::regex address(R"([^@\s]+@[^@\s.]+(\.[^@\s.]+)+)");
            return std::regex_match(value, address) ? std::string()
                                                    : "expected an e-mail address such as name@example.com, got " + value;
        },
        "ADDRESS");
}

}  // namespace

KovraCli::KovraCli(KovraInterrupts& interrupts)
    : interrupts_(interrupts), app_("kovra: card payments with the Kovra library from the command line", "kovra") {
    app_.footer(kFooter);
    app_.set_version_flag("--version", KovraCommands::versionLine(), "print the version and exit");
    app_.require_subcommand(1);
    app_.fallthrough();
    settings_.addOptions(app_);
    defineCommands();
}

CLI::App* KovraCli::addCommand(CLI::App& parent, const std::string& name, const std::string& description,
                               Action action) {
    CLI::App* command = parent.add_subcommand(name, description);
    command->fallthrough();
    command->footer("");
    if (action) actions_[command] = std::move(action);
    return command;
}

void KovraCli::defineCommands() {
    definePinpadCommands();
    defineSaleCommands();
    defineMailCommands();

    addCommand(app_, "merchants", "list the enrolled merchants", [](KovraOutput& out) { KovraCommands(out).merchants(); });
    auto* enroll = addCommand(app_, "enroll", "enrol the merchant with its KovraCode at the acquirer",
                              [this](KovraOutput& out) { KovraCommands(out).enroll(arguments_.kovraCode); });
    enroll->add_option("KOVRACODE", arguments_.kovraCode, "the KovraCode the acquirer issued")->required();
    auto* deactivate = addCommand(app_, "deactivate", "remove the merchant enrolled with a KovraCode",
                                  [this](KovraOutput& out) { KovraCommands(out).deactivate(arguments_.kovraCode); });
    deactivate->add_option("KOVRACODE", arguments_.kovraCode, "the merchant's KovraCode")->required();

    auto* tables = addCommand(app_, "tables", "EMV tables: download them, load them into the PIN pad", {});
    tables->require_subcommand(1);
    addCommand(*tables, "download", "download the merchant's EMV tables and store them",
               [](KovraOutput& out) { KovraCommands(out).downloadTables(); });
    addCommand(*tables, "load", "load the stored EMV tables into the PIN pad",
               [](KovraOutput& out) { KovraCommands(out).loadTables(); });

    version_ = addCommand(app_, "version", "print the library's version",
                          [](KovraOutput& out) { KovraCommands(out).version(); });
    help_ = addCommand(app_, "help", "show the help of kovra or of a command", [this](KovraOutput&) { showHelp(); });
    help_->add_option("COMMAND", arguments_.helpTopic, "a command, such as sale or tables load");
    auto* config = addCommand(app_, "config", "the information dictionary", {});
    config->require_subcommand(1);
    configInit_ = addCommand(*config, "init",
                             "write a template of the information dictionary, every key with comments, to FILE "
                             "(which must not exist) or to standard output",
                             [this](KovraOutput& out) { writeInfoTemplate(arguments_.file, out); });
    configInit_->add_option("FILE", arguments_.file, "where to write it")->type_name("FILE");
    defineDemo();
}

void KovraCli::definePinpadCommands() {
    addCommand(app_, "connect", "connect to the PIN pad", [](KovraOutput& out) { KovraCommands(out).connect(); });
    auto* display = addCommand(app_, "display", "show a text on the PIN pad (32 characters, two lines of 16)",
                               [this](KovraOutput& out) { KovraCommands(out).display(arguments_.text); });
    display->add_option("TEXT", arguments_.text, "the text; the 17th character starts the second line")->required();
    addCommand(app_, "card-pan", "read a card on the PIN pad and print the last four digits of its number",
               [](KovraOutput& out) { KovraCommands(out).cardPan(); });
}

void KovraCli::defineSaleCommands() {
    auto* sale = addCommand(app_, "sale", "run a sale on the PIN pad and print the stored record", [this](KovraOutput& out) {
        arguments_.sale.type = arguments_.debit ? 1 : 0;
        runPayment([&] { KovraCommands(out).sale(arguments_.sale); });
    });
    sale->add_option("--amount", arguments_.sale.amount, "the amount in cents (1000 is R$ 10,00)")
        ->required()
        ->type_name("CENTS");
    auto* credit = sale->add_flag("--credit", arguments_.credit, "a credit sale (the default)");
    auto* debit = sale->add_flag("--debit", arguments_.debit, "a debit sale");
    credit->excludes(debit);
    debit->excludes(credit);
    sale->add_option("--instalments", arguments_.sale.instalments,
                     "instalment code: 0 single payment (default), 1-11 for 2-12 instalments financed by the "
                     "merchant, 12 and above for code-10 instalments financed by the issuer; credit only")
        ->type_name("CODE");
    // Debit cards take no instalments in Brazil.
    sale->callback([this] {
        if (arguments_.debit && arguments_.sale.instalments != 0)
            throw CLI::ValidationError("--instalments", "a debit sale is a single payment; instalments need --credit");
    });

    auto* cancel = addCommand(app_, "cancel", "cancel an approved sale at the acquirer", [this](KovraOutput& out) {
        runPayment([&] { KovraCommands(out).cancel(arguments_.reference); });
    });
    cancel->add_option("REFERENCE", arguments_.reference, "the sale's reference (see `kovra list`)")->required();
    auto* last = addCommand(app_, "last", "show the latest sale attempt, whatever its outcome, and what became of it",
                            [](KovraOutput& out) { KovraCommands(out).last(); });
    auto* pending = addCommand(app_, "pending", "list the reversals and cancellations the acquirer has not answered",
                               [](KovraOutput& out) { KovraCommands(out).pending(); });
    auto* recover = addCommand(app_, "recover", "send the pending reversals and cancellations now and print the outcome",
                               [this](KovraOutput& out) { runPayment([&] { KovraCommands(out).recover(); }); });

    auto* list = addCommand(app_, "list", "list the stored transactions, newest first", [this](KovraOutput& out) {
        KovraCommands(out).list(arguments_.lastDigits, arguments_.presentedCard);
    });
    auto* pan = list->add_option("--pan", arguments_.lastDigits, "only those of the card ending in these digits")
                    ->check(lastFourDigits());
    auto* card = list->add_flag("--card", arguments_.presentedCard,
                                "only those of the card presented to the PIN pad (reads it)");
    pan->excludes(card);
    card->excludes(pan);
    historyCommands_ = {cancel, list, last, pending, recover};
}

void KovraCli::runPayment(const std::function<void()>& payment) {
    // Ctrl-C first stops the wait for the cardholder: the PIN pad command in
    // flight ends as cancelled, and the journal settles what reached the acquirer.
    KovraInterrupts::DrainGuard guard(interrupts_, {[] { KVRPinPadConnectionProvider::abortCurrentCommand(); },
                                                    [] { return KVRJournalProvider::isExchangeInFlight(); }});
    payment();
}

void KovraCli::checkStore(CLI::App* command, KovraOutput& output) const {
    auto health = KVRStoreProvider::health();
    bool history = historyCommands_.count(command) > 0;
    if (!health.available) {
        throw KovraCommandError::failure("the store " + health.path + " cannot be used: " +
                                         health.problem.value_or("it could not be opened"));
    }
    if (health.problem && history) {
        throw KovraCommandError::failure(*health.problem + "; the history it held is not shown");
    }
    if (health.problem) output.note("kovra: warning: " + *health.problem);
    if (history) {
        for (const auto& file : health.setAsideFiles)
            output.note("kovra: warning: an unreadable store was set aside as " + file + "; its history is not shown");
    }
}

void KovraCli::defineMailCommands() {
    auto* receipt = addCommand(app_, "receipt", "e-mail the receipt of a stored transaction", [this](KovraOutput& out) {
        KovraCommands(out).receipt(arguments_.reference, arguments_.destination, arguments_.cancellation,
                                   arguments_.companyInformation);
    });
    receipt->add_option("REFERENCE", arguments_.reference, "the transaction's reference")->required();
    receipt->add_option("--to", arguments_.destination, "the cardholder's e-mail address")
        ->required()
        ->check(mailAddress())
        ->type_name("ADDRESS");
    receipt->add_flag("--cancellation", arguments_.cancellation, "the cancellation receipt instead of the sale's");
    receipt->add_flag("--company-info", arguments_.companyInformation, "show the merchant's details on the receipt");
    historyCommands_.insert(receipt);

    auto* feedback = addCommand(app_, "feedback", "send a message to Kovra's support mailbox",
                                [this](KovraOutput& out) { KovraCommands(out).feedback(arguments_.text); });
    feedback->add_option("TEXT", arguments_.text, "the message")->required();
}

void KovraCli::defineDemo() {
    demo_ = addCommand(app_, "demo",
                       "start the PIN pad and acquirer emulators and run a merchant's whole day against them "
                       "(needs nothing configured; --info, --data-dir, --pinpad and --json do not apply)",
                       [this](KovraOutput&) {
                           // The demo tells a story: text even with --json.
                           KovraOutput text(false);
                           KovraDemo::Options options{arguments_.keepDirectory, arguments_.pause, settings_.verbose};
                           KovraDemo demo(options, text, interrupts_);
                           demo.run();
                       });
    demo_->add_option("--keep", arguments_.keepDirectory,
                      "work in DIR (new or empty) and keep it: emulator state, logs, information dictionary, store")
        ->type_name("DIR");
    demo_->add_option("--pause", arguments_.pause,
                      "PIN pad write pause in seconds (\"Kovra Pinpad Write Pause\"; default 0.5, as the library's)")
        ->check(CLI::Range(0.0, 60.0))
        ->type_name("SECONDS");
}

// A word that names no command is left over when the parser asks for one.
std::string KovraCli::usageMessage(const CLI::ParseError& error) const {
    if (dynamic_cast<const CLI::RequiredError*>(&error)) {
        auto leftover = app_.remaining(true);
        if (!leftover.empty() && leftover.front().rfind("-", 0) != 0)
            return "unknown command " + leftover.front();
    }
    return error.what();
}

CLI::App* KovraCli::chosenCommand() const {
    const CLI::App* current = &app_;
    CLI::App* chosen = nullptr;
    for (;;) {
        auto selected = current->get_subcommands();
        if (selected.empty()) return chosen;
        chosen = selected.front();
        current = chosen;
    }
}

void KovraCli::showHelp() const {
    const CLI::App* topic = &app_;
    std::string named = "kovra";
    for (const auto& word : arguments_.helpTopic) {
        named += " " + word;
        const CLI::App* next = nullptr;
        for (const CLI::App* command : topic->get_subcommands([](const CLI::App*) { return true; }))
            if (command->get_name() == word) next = command;
        if (!next) throw KovraCommandError::usage("unknown command " + named.substr(6) + " (see kovra --help)");
        topic = next;
    }
    // As `COMMAND --help` prints it; App::help would show the help command's own.
    std::cout << topic->get_formatter()->make_help(topic, named, CLI::AppFormatMode::Normal);
}

int KovraCli::run(int argc, char** argv) {
    try {
        app_.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app_.exit(error);
        // The parse may have stopped before it reached --json.
        bool json = std::any_of(argv + 1, argv + argc, [](const char* word) { return std::strcmp(word, "--json") == 0; });
        auto usage = KovraCommandError::usage(usageMessage(error) + " (see kovra --help)");
        KovraOutput(json).error(usage.what(), usage.toJson());
        return usage.exitCode();
    }
    return execute(chosenCommand());
}

int KovraCli::execute(CLI::App* command) {
    KovraOutput output(settings_.json);
    auto fail = [&output](const KovraCommandError& error) {
        output.error(error.what(), error.toJson());
        return error.exitCode();
    };
    auto action = actions_.find(command);
    if (action == actions_.end()) return fail(KovraCommandError::usage("choose a command (see kovra --help)"));
    try {
        if (command == demo_) {
            settings_.routeLogs();
        } else if (command != version_ && command != help_ && command != configInit_) {
            settings_.apply();
            checkStore(command, output);
        }
        action->second(output);
        return 0;
    } catch (const KovraCommandError& error) {
        return fail(error);
    } catch (const KVRException& exception) {
        return fail(KovraCommandError::failure("the library raised " + exception.name() + ": " + exception.reason()));
    } catch (const std::exception& exception) {
        return fail(KovraCommandError::failure(exception.what()));
    }
}
