#pragma once

#include <filesystem>
#include <optional>

namespace acqsim {

// The command line:
//   kovra-acquirer-sim --port N [--state DIR] [--merchants FILE] [--print-ca]
//                      [--auth-delay SECONDS] [--reply-delay SECONDS]
//                      [--advice-delay SECONDS] [--log-card-data] [--help] [--version]
struct SimOptions {
    int port = -1;
    std::filesystem::path stateDirectory;
    std::optional<std::filesystem::path> merchantsFile;
    bool printCa = false;
    double lateAnswerSeconds = 55;
    double replyDelaySeconds = 0;
    double adviceDelaySeconds = 0;
    bool logCardData = false;

    // Parses the arguments. Returns the options to run with, or nothing
    // after printing help or an error; `exitCode` then says how to exit.
    static std::optional<SimOptions> parse(int argc, char** argv, int& exitCode);

    // $XDG_STATE_HOME/kovra-acquirer-sim, else ~/.local/state/kovra-acquirer-sim,
    // else ./acquirer-state.
    static std::filesystem::path defaultStateDirectory();
};

} // namespace acqsim
