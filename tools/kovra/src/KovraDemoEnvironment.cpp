#include "KovraDemoEnvironment.h"

#include "KovraCommandError.h"
#include "KovraExecutableLocator.h"
#include "KovraPlistWriter.h"
#include "KovraSettings.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

// Key generation for the acquirer's certificates takes a moment on a slow machine.
constexpr auto kStartTimeout = 30s;
constexpr auto kKeptStopGrace = 3000ms;
constexpr auto kTemporaryStopGrace = 300ms;
// What the PIN pad tells the cardholder while it waits for the card.
constexpr const char* kCardPrompt = "INSIRA OU PASSE O CARTAO";

std::string lastLines(const std::string& file) {
    std::ifstream in(file);
    std::string line;
    std::string last;
    while (std::getline(in, line))
        if (!line.empty()) last = line;
    return last.empty() ? std::string() : " (" + last + ")";
}

std::string temporaryDirectory() {
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/kovra-demo-XXXXXX";
    if (!::mkdtemp(pattern.data())) throw KovraCommandError::failure("cannot make a temporary directory " + pattern);
    return pattern;
}

}  // namespace

const std::vector<std::string>& KovraDemoEnvironment::cards() {
    static const std::vector<std::string> names{"chip-visa", "chip-master", "stripe-pin"};
    return names;
}

KovraDemoEnvironment::KovraDemoEnvironment(const std::string& keepDirectory, double writePause,
                                           KovraInterrupts& interrupts)
    : interrupts_(interrupts), writePause_(writePause) {
    prepareDirectory(keepDirectory);
    cleanup_ = interrupts_.add([this] { stopAll(); });
}

KovraDemoEnvironment::~KovraDemoEnvironment() { interrupts_.runNow(cleanup_); }

void KovraDemoEnvironment::prepareDirectory(const std::string& keepDirectory) {
    if (keepDirectory.empty()) {
        directory_ = temporaryDirectory();
        return;
    }
    std::error_code error;
    if (fs::exists(keepDirectory, error) && !fs::is_empty(keepDirectory, error))
        throw KovraCommandError::usage("--keep needs a new or empty directory; " + keepDirectory + " is not empty");
    fs::create_directories(keepDirectory, error);
    if (error) throw KovraCommandError::usage("cannot make " + keepDirectory + ": " + error.message());
    directory_ = fs::canonical(keepDirectory).string();
    kept_ = true;
}

std::string KovraDemoEnvironment::locate(const std::string& name, const std::string& buildFolder) {
    auto program = KovraExecutableLocator::find(name, buildFolder);
    if (!program)
        throw KovraCommandError::failure("cannot find " + name + " next to kovra, in ../" + buildFolder +
                                         " or on PATH; build it first (cmake --build build)");
    return *program;
}

void KovraDemoEnvironment::start() {
    std::string acquirer = locate("kovra-acquirer-sim", "acquirer-sim");
    std::string pinpad = locate("kovra-pinpad-sim", "pinpad-sim");
    startAcquirer(acquirer);
    startPinpad(pinpad);
    configureLibrary();
}

void KovraDemoEnvironment::startAcquirer(const std::string& program) {
    std::string log = path("acquirer-sim.log");
    acquirer_ = std::make_unique<KovraEmulatorProcess>(
        program, std::vector<std::string>{"--port", "0", "--state", path("acquirer")}, log);
    auto url = acquirer_->waitForLine("kovra-acquirer-sim ready at ", kStartTimeout);
    auto ca = url ? acquirer_->waitForLine("ca: ", kStartTimeout) : std::nullopt;
    if (!url || !ca) throw KovraCommandError::failure("the acquirer emulator did not start" + lastLines(log));
    acquirerUrl_ = *url;
    acquirerHost_ = url->substr(url->find("://") + 3);
    caFile_ = *ca;
}

void KovraDemoEnvironment::startPinpad(const std::string& program) {
    std::string scenario = path("pinpad-scenario.json");
    nlohmann::json rules = nlohmann::json::array({{{"command", "GCR"}, {"ntm", {kCardPrompt}}}});
    std::ofstream(scenario) << nlohmann::json{{"cards", cards()}, {"faults", rules}}.dump(2) << '\n';
    std::string log = path("pinpad-sim.log");
    pinpad_ = std::make_unique<KovraEmulatorProcess>(
        program,
        std::vector<std::string>{"--link", path("pinpad"), "--state", path("pinpad-state"), "--scenario", scenario,
                                 "--display-log", path("pinpad-display.log"), "--command-log",
                                 path("pinpad-commands.log")},
        log);
    auto device = pinpad_->waitForLine("kovra-pinpad-sim ready on ", kStartTimeout);
    if (!device) throw KovraCommandError::failure("the PIN pad emulator did not start" + lastLines(log));
    pinpadDevice_ = *device;
}

// The dictionary is written as a file and read back the way an application
// (or `kovra --info`) would load it, so the file left by --keep is the one used.
void KovraDemoEnvironment::configureLibrary() const {
    KVRPropertyDictionary info{
        {"Kovra Pinpad", path("pinpad")},
        // The link real PIN pads speak; the emulator checks it as they do.
        {"Kovra Pinpad Link", std::string("abecs")},
        {"Kovra Pinpad Write Pause", writePause_},
        {"Kovra TMS Host", acquirerHost_},
        {"Kovra Authorizer Host", acquirerHost_},
        {"Kovra Mail Host", acquirerHost_},
        {"Kovra CA File", caFile_},
        {"Kovra Reachability Host", std::string("127.0.0.1")},
        {"Kovra Support Mailbox", std::string("suporte@kovra.example")},
        {"CFBundleVersion", std::string("1.0")},
        {"Kovra Bundle Identifier", std::string("br.com.kovra.demo")},
    };
    if (!KovraPlistWriter::write(infoFile(), info))
        throw KovraCommandError::failure("cannot write " + infoFile());
    if (auto reason = KovraSettings::loadInformationDictionary(infoFile()))
        throw KovraCommandError::failure("cannot load " + infoFile() + ": " + *reason);
    KVRDirectories::setDataDirectory(dataDirectory());
}

int KovraDemoEnvironment::pinpadCommandCount() const {
    std::ifstream in(path("pinpad-commands.log"));
    std::string line;
    int count = 0;
    while (std::getline(in, line))
        if (!line.empty()) ++count;
    return count;
}

// The emulator logs each display state as "first line|second line", both
// padded to 16 characters.
std::optional<std::string> KovraDemoEnvironment::lastDisplay() const {
    std::ifstream in(path("pinpad-display.log"));
    std::string line;
    std::string last;
    while (std::getline(in, line))
        if (!line.empty()) last = line;
    if (last.empty()) return std::nullopt;
    auto trimmed = [](std::string text) {
        text.erase(text.find_last_not_of(' ') + 1);
        return text;
    };
    size_t bar = last.find('|');
    if (bar == std::string::npos) return trimmed(last);
    std::string first = trimmed(last.substr(0, bar));
    std::string second = trimmed(last.substr(bar + 1));
    return second.empty() ? first : first + " / " + second;
}

std::optional<std::string> KovraDemoEnvironment::newestOutboxFile() const {
    std::error_code error;
    std::optional<fs::path> newest;
    int highest = -1;
    for (const auto& entry : fs::directory_iterator(path("acquirer/outbox"), error)) {
        int number = std::atoi(entry.path().stem().c_str());
        if (entry.path().extension() == ".json" && number > highest) {
            highest = number;
            newest = entry.path();
        }
    }
    if (!newest) return std::nullopt;
    return newest->string();
}

// Runs on the interrupt watcher too: no exceptions, nothing that waits long.
// Both are asked first and then waited for, as each takes a moment to end.
// Emulators whose state is thrown away anyway get little time to save it.
void KovraDemoEnvironment::stopAll() {
    for (auto* emulator : {pinpad_.get(), acquirer_.get()})
        if (emulator) emulator->terminate();
    auto grace = kept_ ? kKeptStopGrace : kTemporaryStopGrace;
    for (auto* emulator : {pinpad_.get(), acquirer_.get()})
        if (emulator) emulator->stop(grace);
    if (!kept_ && !directory_.empty()) {
        std::error_code error;
        fs::remove_all(directory_, error);
    }
}
