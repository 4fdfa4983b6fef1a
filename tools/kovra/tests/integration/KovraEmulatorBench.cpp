#include "KovraEmulatorBench.h"

#include <arpa/inet.h>
#include <filesystem>
#include <fstream>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

std::string required(std::optional<std::string> line, const std::string& what) {
    if (!line) throw std::runtime_error(what + " did not start");
    return *line;
}

std::vector<std::string> fileLines(const std::string& file) {
    std::ifstream in(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        if (!line.empty()) lines.push_back(line);
    return lines;
}

}  // namespace

KovraEmulatorBench::KovraEmulatorBench() : KovraEmulatorBench(Options{}) {}

KovraEmulatorBench::KovraEmulatorBench(const Options& options) {
    startAcquirer();
    startPinpad(options.scenario);
    std::string host = options.deadAcquirer ? "127.0.0.1:" + std::to_string(closedPort()) : acquirerHost_;
    writeDictionary(path("Info.plist"),
                    {{"Kovra Pinpad", pinpadDevice_},
                     {"Kovra TMS Host", host},
                     {"Kovra Authorizer Host", host},
                     {"Kovra Mail Host", host},
                     {"Kovra CA File", caFile_},
                     {"Kovra Reachability Host", "127.0.0.1"},
                     {"Kovra Support Mailbox", "suporte@kovra.example"},
                     {"CFBundleVersion", "1.0"}},
                    {{"Kovra Pinpad Write Pause", 0.0}});
}

void KovraEmulatorBench::startAcquirer() {
    acquirer_ = std::make_unique<KVRProcess>(KOVRA_ACQUIRER_SIM_BINARY,
                                             std::vector<std::string>{"--port", "0", "--state", path("acquirer")});
    std::string url = required(acquirer_->waitForLine("kovra-acquirer-sim ready at ", 30s), "the acquirer emulator");
    acquirerHost_ = url.substr(url.find("://127.0.0.1:") + 3);
    caFile_ = required(acquirer_->waitForLine("ca: ", 10s), "the acquirer emulator").substr(4);
}

void KovraEmulatorBench::startPinpad(const nlohmann::json& scenario) {
    std::vector<std::string> arguments{"--link",        path("pinpad"),       "--state",
                                       path("pinpad-state"), "--command-log", path("pinpad-commands.log")};
    if (!scenario.is_null()) {
        std::ofstream(path("scenario.json")) << scenario.dump();
        arguments.insert(arguments.end(), {"--scenario", path("scenario.json")});
    }
    pinpad_ = std::make_unique<KVRProcess>(KOVRA_PINPAD_SIM_BINARY, arguments);
    required(pinpad_->waitForLine("kovra-pinpad-sim ready on ", 10s), "the PIN pad emulator");
    pinpadDevice_ = path("pinpad");
}

std::vector<std::string> KovraEmulatorBench::environment() const {
    return {"KOVRA_INFO_PLIST=" + path("Info.plist"), "KOVRA_DATA_DIR=" + path("data")};
}

KovraCliResult KovraEmulatorBench::run(const std::vector<std::string>& arguments) const {
    return runKovra(arguments, environment());
}

std::vector<nlohmann::json> KovraEmulatorBench::outbox() const {
    std::vector<nlohmann::json> mails;
    for (int number = 1;; ++number) {
        std::ifstream in(path("acquirer/outbox/" + std::to_string(number) + ".json"));
        if (!in) return mails;
        mails.push_back(nlohmann::json::parse(in));
    }
}

std::vector<std::string> KovraEmulatorBench::pinpadCommands() const { return fileLines(path("pinpad-commands.log")); }

void KovraEmulatorBench::writeDictionary(const std::string& file, const std::map<std::string, std::string>& strings,
                                         const std::map<std::string, double>& reals) {
    std::ofstream out(file);
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n";
    for (const auto& [key, value] : strings) out << "<key>" << key << "</key><string>" << value << "</string>\n";
    for (const auto& [key, value] : reals) out << "<key>" << key << "</key><real>" << value << "</real>\n";
    out << "</dict>\n</plist>\n";
}

int KovraEmulatorBench::closedPort() {
    int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
    ::close(fd);
    return ntohs(address.sin_port);
}
