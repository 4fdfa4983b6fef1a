#include "KovraEmulatorBench.h"

#include "Platform/KVRPropertyList.h"

#include <kovra/KVRApplicationInfo.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

KovraEmulatorBench::KovraEmulatorBench() : KovraEmulatorBench(Options{}) {}

// The emulators set this process's dictionary; the kovra process gets the
// same settings as a file.
KovraEmulatorBench::KovraEmulatorBench(const Options& options) : emulators_(emulatorOptions(options)) {
    if (!emulators_.ready()) throw std::runtime_error(emulators_.failure());
    KVRPropertyDictionary info = KVRApplicationInfo::dictionary();
    if (options.deadAcquirer) {
        std::string nowhere = "127.0.0.1:" + std::to_string(closedPort());
        for (const char* key : {"Kovra TMS Host", "Kovra Authorizer Host", "Kovra Mail Host"}) info[key] = nowhere;
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

KovraCliResult KovraEmulatorBench::run(const std::vector<std::string>& arguments) const {
    return runKovra(arguments, environment());
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
