#include "testing/KVREmulators.h"

#include <kovra/KVRApplicationInfo.h>

#include "Platform/KVRSettingsKeys.h"
#include "testing/KVRFiles.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace {

using namespace std::chrono_literals;

const std::string kPinpadReady = "kovra-pinpad-sim ready on ";
const std::string kAcquirerReady = "kovra-acquirer-sim ready at https://";

}  // namespace

KVREmulators::KVREmulators(Options options) : options_(std::move(options)) {
    savedInfo_ = KVRApplicationInfo::dictionary();
    ready_ = startPinpad() && startAcquirer();
    KVRApplicationInfo::setValue(KVRSettingsKeys::kReachabilityHost, std::string("127.0.0.1"));
    KVRApplicationInfo::setValue(KVRSettingsKeys::kPinpadWritePause, 0.0);
}

KVREmulators::~KVREmulators() {
    stop();
    KVRApplicationInfo::clear();
    for (const auto& [key, value] : savedInfo_) KVRApplicationInfo::setValue(key, value);
}

bool KVREmulators::startPinpad() {
    if (options_.pinpadBinary.empty()) return true;
    std::vector<std::string> arguments = {"--state",       directory_.file("pinpad"),
                                          "--display-log", directory_.file("display.log"),
                                          "--command-log", directory_.file("commands.log"),
                                          "--card",        options_.card};
    if (!options_.cards.empty()) {
        std::ofstream(directory_.file("scenario.json")) << nlohmann::json{{"cards", options_.cards}}.dump();
        arguments.insert(arguments.end(), {"--scenario", directory_.file("scenario.json")});
    }
    for (const auto& fault : options_.pinpadFaults) {
        arguments.push_back("--fault");
        arguments.push_back(fault);
    }
    arguments.insert(arguments.end(), options_.pinpadArguments.begin(), options_.pinpadArguments.end());
    std::filesystem::create_directories(directory_.file("pinpad"));
    pinpad_ = std::make_unique<KVRProcess>(options_.pinpadBinary, arguments);
    auto line = pinpad_->waitForLine(kPinpadReady, 20s);
    if (!line) {
        failure_ = "the PIN pad emulator did not start";
        return false;
    }
    pinpadDevice_ = line->substr(kPinpadReady.size());
    KVRApplicationInfo::setValue(KVRSettingsKeys::kPinpad, pinpadDevice_);
    return true;
}

bool KVREmulators::startAcquirer() {
    if (options_.acquirerBinary.empty()) return true;
    std::vector<std::string> arguments = {"--port", "0", "--state", directory_.file("acquirer")};
    arguments.insert(arguments.end(), options_.acquirerArguments.begin(), options_.acquirerArguments.end());
    acquirer_ = std::make_unique<KVRProcess>(options_.acquirerBinary, arguments);
    auto line = acquirer_->waitForLine(kAcquirerReady, 30s);
    auto ca = line ? acquirer_->waitForLine("ca: ", 10s) : std::nullopt;
    if (!line || !ca) {
        failure_ = "the acquirer emulator did not start";
        return false;
    }
    acquirerHost_ = line->substr(kAcquirerReady.size());
    for (const char* key : {KVRSettingsKeys::kTmsHost, KVRSettingsKeys::kAuthorizerHost, KVRSettingsKeys::kMailHost}) {
        KVRApplicationInfo::setValue(key, acquirerHost_);
    }
    KVRApplicationInfo::setValue(KVRSettingsKeys::kCaFile, ca->substr(4));
    return true;
}

bool KVREmulators::stop() {
    // The acquirer finishes the keep-alive connections the library's threads
    // hold open (2 seconds at most) before it exits.
    constexpr auto grace = std::chrono::seconds(5);
    bool clean = true;
    if (pinpad_ && pinpad_->stop(grace) != 0) {
        clean = false;
        failure_ = "the PIN pad emulator did not end cleanly";
    }
    if (acquirer_ && acquirer_->stop(grace) != 0) {
        clean = false;
        failure_ = "the acquirer emulator did not end cleanly";
    }
    pinpad_.reset();
    acquirer_.reset();
    return clean;
}

std::vector<std::string> KVREmulators::displayLog() const { return KVRFiles::lines(directory_.file("display.log")); }

std::vector<std::string> KVREmulators::commandLog() const { return KVRFiles::lines(directory_.file("commands.log")); }

std::vector<std::string> KVREmulators::commandNames() const {
    std::vector<std::string> names;
    for (const auto& line : commandLog()) names.push_back(line.substr(0, 3));
    return names;
}

std::vector<std::string> KVREmulators::acquirerLog() const {
    return KVRFiles::lines(directory_.file("acquirer") + "/requests.log");
}

nlohmann::json KVREmulators::ledger() const {
    std::ifstream state(directory_.file("acquirer") + "/state.json");
    auto parsed = nlohmann::json::parse(state, nullptr, false);
    return parsed.is_object() ? parsed.value("authorisations", nlohmann::json::object()) : nlohmann::json::object();
}

std::vector<nlohmann::json> KVREmulators::outbox() const {
    std::vector<std::pair<int, std::filesystem::path>> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(directory_.file("acquirer") + "/outbox", error)) {
        if (entry.path().extension() == ".json") files.emplace_back(std::stoi(entry.path().stem().string()), entry.path());
    }
    std::sort(files.begin(), files.end());
    std::vector<nlohmann::json> mails;
    for (const auto& [number, path] : files) {
        std::ifstream in(path);
        mails.push_back(nlohmann::json::parse(in, nullptr, false));
    }
    return mails;
}
