#include "Platform/KVRSerialAccessory.h"

#include <kovra/KVRLoggingUtil.h>

#include "Platform/KVRFdInputStream.h"
#include "Platform/KVRFdOutputStream.h"
#include "Utils/KVRStringUtil.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

namespace {

std::optional<speed_t> speedConstant(int baudRate) {
    switch (baudRate) {
    case 1200: return B1200;
    case 2400: return B2400;
    case 4800: return B4800;
    case 9600: return B9600;
    case 19200: return B19200;
    case 38400: return B38400;
    case 57600: return B57600;
    case 115200: return B115200;
    case 230400: return B230400;
    case 460800: return B460800;
    case 921600: return B921600;
    default: return std::nullopt;
    }
}

bool configureLine(int fd, speed_t speed) {
    struct termios tio {};
    if (tcgetattr(fd, &tio) != 0) return false;
    cfmakeraw(&tio);
    tio.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | CSTOPB | CRTSCTS);
    tio.c_cflag |= CS8 | CLOCAL | CREAD;
    tio.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | IXANY);
    tio.c_cc[VMIN] = 0;
    tio.c_cc[VTIME] = 0;
    if (cfsetispeed(&tio, speed) != 0 || cfsetospeed(&tio, speed) != 0) return false;
    if (tcsetattr(fd, TCSANOW, &tio) != 0) return false;
    // Bytes left from an earlier exchange would be taken for the next reply.
    tcflush(fd, TCIOFLUSH);
    return true;
}

// The process holding a lock on the device, from the kernel's own table of
// locks (no lock file of ours that a crash could leave behind).
std::optional<long> lockHolder(const std::string& path) {
    struct stat st {};
    if (stat(path.c_str(), &st) != 0) return std::nullopt;
    std::ifstream locks("/proc/locks");
    std::string line;
    while (std::getline(locks, line)) {
        std::istringstream fields(line);
        std::string number, kind, mode, access, device;
        long pid = 0;
        fields >> number >> kind;
        if (kind == "->") continue;  // a waiter, not the holder
        fields >> mode >> access >> pid >> device;
        unsigned deviceMajor = 0, deviceMinor = 0;
        unsigned long inode = 0;
        if (std::sscanf(device.c_str(), "%x:%x:%lu", &deviceMajor, &deviceMinor, &inode) != 3) continue;
        if (inode == st.st_ino && deviceMajor == major(st.st_dev) && deviceMinor == minor(st.st_dev)) return pid;
    }
    return std::nullopt;
}

void logDeviceInUse(const std::string& path) {
    auto holder = lockHolder(path);
    KVRLoggingUtil::console(holder ? KVRStringUtil::format("the PIN pad %s is in use by process %ld", path.c_str(), *holder)
                                   : KVRStringUtil::format("the PIN pad %s is in use by another process", path.c_str()));
}

}  // namespace

KVRSerialAccessory::KVRSerialAccessory(std::string path, std::string name, std::vector<std::string> protocolStrings)
    : KVRAccessory(name.empty() ? path : std::move(name), std::move(protocolStrings)), path_(std::move(path)) {}

std::optional<int> KVRSerialAccessory::baudRateForProtocol(const std::string& protocol) {
    size_t dash = protocol.rfind('-');
    if (dash == std::string::npos || dash + 1 == protocol.size()) return kDefaultBaudRate;
    std::string suffix = protocol.substr(dash + 1);
    if (suffix.find_first_not_of("0123456789") != std::string::npos) return kDefaultBaudRate;
    long long rate = KVRStringUtil::leadingInteger(suffix);
    if (rate > 0 && rate <= 4000000 && speedConstant(static_cast<int>(rate))) return static_cast<int>(rate);
    return std::nullopt;
}

KVRAccessory::Streams KVRSerialAccessory::connectStreams(const std::string& protocol) {
    auto rate = baudRateForProtocol(protocol);
    if (!rate) {
        KVRLoggingUtil::printLog("serial speed of " + protocol + " not supported");
        return {};
    }
    int fd = ::open(path_.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        if (errno == EBUSY) logDeviceInUse(path_);
        else KVRLoggingUtil::printLog("cannot open " + path_ + ": " + std::strerror(errno));
        return {};
    }
    auto descriptor = std::make_shared<KVRFileDescriptor>(fd);
    // One process per PIN pad: two would each take the other's replies.
    if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
        logDeviceInUse(path_);
        return {};
    }
    descriptor->setExclusiveTerminal();
    if (!descriptor->isTerminal() || !configureLine(fd, *speedConstant(*rate))) {
        KVRLoggingUtil::printLog("cannot set up the serial line of " + path_);
        return {};
    }
    return {std::make_shared<KVRFdInputStream>(descriptor), std::make_shared<KVRFdOutputStream>(descriptor)};
}
