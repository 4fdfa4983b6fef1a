#include "KovraEmulatorBench.h"

#include "Platform/KVRPropertyList.h"

#include <kovra/KVRApplicationInfo.h>

#include <stdexcept>

namespace {

KVRProcess::Options cliOptions(const std::vector<std::string>& environment) {
    KVRProcess::Options options{.environment = {"KOVRA_*"}, .captureErrors = true};
    options.environment.insert(options.environment.end(), environment.begin(), environment.end());
    return options;
}

}  // namespace

KVRProcess::Result runKovra(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                            std::chrono::milliseconds timeout, const std::string& program) {
    return KVRProcess::run(program, arguments, cliOptions(environment), timeout);
}

std::unique_ptr<KVRProcess> startKovra(const std::vector<std::string>& arguments,
                                       const std::vector<std::string>& environment) {
    return std::make_unique<KVRProcess>(KOVRA_CLI_BINARY, arguments, cliOptions(environment));
}

KovraEmulatorBench::KovraEmulatorBench() : KovraEmulatorBench(Options{}) {}

// The emulators set this process's dictionary; the kovra process gets the
// same settings as a file.
KovraEmulatorBench::KovraEmulatorBench(const Options& options) : emulators_(emulatorOptions(options)) {
    if (!emulators_.ready()) throw std::runtime_error(emulators_.failure());
    KVRPropertyDictionary info = KVRApplicationInfo::dictionary();
    if (options.deadAcquirer) {
        deadPort_ = std::make_unique<KVRLoopbackPort>();
        for (const char* key : {"Kovra TMS Host", "Kovra Authorizer Host", "Kovra Mail Host"})
            info[key] = deadPort_->hostAndPort();
    }
    info["Kovra Support Mailbox"] = std::string("suporte@kovra.example");
    info["CFBundleVersion"] = std::string("1.0");
    if (!KVRPropertyList::writeDictionary(directory_.file("Info.plist"), info))
        throw std::runtime_error("cannot write " + directory_.file("Info.plist"));
}

KVREmulators::Options KovraEmulatorBench::emulatorOptions(const Options& options) {
    KVREmulators::Options emulators;
    emulators.pinpadBinary = KOVRA_PINPAD_SIM_BINARY;
    emulators.acquirerBinary = KOVRA_ACQUIRER_SIM_BINARY;
    emulators.cards = options.cards;
    for (const auto& fault : options.pinpadFaults) emulators.pinpadFaults.push_back(fault.dump());
    return emulators;
}

std::vector<std::string> KovraEmulatorBench::environment() const {
    return {"KOVRA_INFO_PLIST=" + directory_.file("Info.plist"), "KOVRA_DATA_DIR=" + dataDirectory()};
}
