#pragma once

#include "KovraSession.h"
#include "KovraSettings.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

class KovraInterrupts;
class KovraOutput;

/// The command line: `kovra [global options] COMMAND [args]`. Exit codes: 0
/// success, 1 declined, 2 bad usage or refused, 3 technical failure, 130
/// interrupted (see KovraCommandError).
class KovraCli {
public:
    explicit KovraCli(KovraInterrupts& interrupts);

    int run(int argc, char** argv);

private:
    using Action = std::function<void(KovraOutput&)>;

    // What the commands' arguments are parsed into.
    struct Arguments {
        std::string kovraCode;
        std::string text;
        std::string reference;
        std::string destination;
        std::string file;
        KovraSession::SaleRequest sale;
        bool credit = false;
        bool debit = false;
        bool cancellation = false;
        bool companyInformation = false;
        std::optional<std::string> lastDigits;
        bool presentedCard = false;
        std::string keepDirectory;
        double pause = 0.5;
        std::vector<std::string> helpTopic;
    };

    CLI::App* addCommand(CLI::App& parent, const std::string& name, const std::string& description, Action action);
    void defineCommands();
    void definePinpadCommands();
    void defineSaleCommands();
    void defineMailCommands();
    void defineDemo();
    /// `kovra help [COMMAND...]`: the help of kovra or of that command.
    void showHelp() const;
    std::string usageMessage(const CLI::ParseError& error) const;
    /// The deepest command the user named.
    CLI::App* chosenCommand() const;
    int execute(CLI::App* command);

    KovraInterrupts& interrupts_;
    CLI::App app_;
    KovraSettings settings_;
    Arguments arguments_;
    std::map<CLI::App*, Action> actions_;
    /// Reports an unusable or damaged store; a failure for the commands that
    /// show or act on the history.
    void checkStore(CLI::App* command, KovraOutput& output) const;
    /// Runs a payment command so that an interruption lets its journal settle.
    void runPayment(const std::function<void()>& payment);

    CLI::App* version_ = nullptr;
    CLI::App* help_ = nullptr;
    CLI::App* configInit_ = nullptr;
    CLI::App* demo_ = nullptr;
    std::set<CLI::App*> historyCommands_;
};
