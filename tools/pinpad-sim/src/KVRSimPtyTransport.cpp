#include "KVRSimPtyTransport.h"

#include <cerrno>
#include <chrono>
#include <sys/ioctl.h>
#include <thread>
#include <fcntl.h>
#include <iostream>
#include <stdlib.h>
#include <system_error>
#include <termios.h>
#include <unistd.h>

namespace {

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

void makeRaw(int fd) {
    termios settings{};
    if (tcgetattr(fd, &settings) != 0) {
        fail("tcgetattr");
    }
    cfmakeraw(&settings);
    if (tcsetattr(fd, TCSANOW, &settings) != 0) {
        fail("tcsetattr");
    }
}

}  // namespace

KVRSimPtyTransport::KVRSimPtyTransport(std::optional<std::filesystem::path> link) : link_(std::move(link)) {}

KVRSimPtyTransport::~KVRSimPtyTransport() {
    close();
}

std::string KVRSimPtyTransport::open() {
    master_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master_ < 0) fail("posix_openpt");
    if (grantpt(master_) != 0) fail("grantpt");
    if (unlockpt(master_) != 0) fail("unlockpt");
    char name[128];
    if (ptsname_r(master_, name, sizeof name) != 0) fail("ptsname_r");
    slave_ = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (slave_ < 0) fail("open slave");
    makeRaw(master_);
    makeRaw(slave_);
    pointLinkAt(name);
    return name;
}

void KVRSimPtyTransport::pointLinkAt(const std::string& slavePath) {
    if (!link_) {
        return;
    }
    std::error_code error;
    if (std::filesystem::exists(std::filesystem::symlink_status(*link_)) && !std::filesystem::is_symlink(*link_)) {
        throw std::system_error(EEXIST, std::generic_category(), "--link " + link_->string() + " exists and is not a link");
    }
    auto temporary = *link_;
    temporary += ".new";
    std::filesystem::remove(temporary, error);
    std::filesystem::create_symlink(slavePath, temporary);
    std::filesystem::rename(temporary, *link_);
    std::cerr << "kovra-pinpad-sim: link " << link_->string() << " -> " << slavePath << std::endl;
}

KVRSimTransport::Received KVRSimPtyTransport::receive() {
    char buffer[4096];
    ssize_t count = ::read(master_, buffer, sizeof buffer);
    if (count > 0) {
        return {std::string(buffer, static_cast<size_t>(count)), false};
    }
    return {};
}

void KVRSimPtyTransport::send(std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t count = ::write(master_, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            std::cerr << "kovra-pinpad-sim: write to the terminal failed" << std::endl;
            return;
        }
        bytes.remove_prefix(static_cast<size_t>(count));
    }
}

std::optional<std::string> KVRSimPtyTransport::hangUp() {
    waitUntilRead();
    closeTerminal();
    return open();
}

void KVRSimPtyTransport::waitUntilRead() {
    // A hang-up flushes what the host has not read yet, and it is meant to
    // come after the bytes sent before it. Written bytes reach the slave's
    // queue a moment after write() returns, hence the first pause.
    std::this_thread::sleep_for(std::chrono::milliseconds(kDrainStepMs));
    for (int waited = 0; waited < kDrainPatienceMs; waited += kDrainStepMs) {
        int pending = 0;
        if (ioctl(slave_, FIONREAD, &pending) != 0 || pending == 0) {
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(kDrainStepMs));
    }
}

void KVRSimPtyTransport::closeTerminal() {
    if (slave_ >= 0) ::close(slave_);
    if (master_ >= 0) ::close(master_);
    slave_ = master_ = -1;
}

void KVRSimPtyTransport::close() {
    closeTerminal();
    if (link_) {
        std::error_code error;
        if (std::filesystem::is_symlink(std::filesystem::symlink_status(*link_, error))) {
            std::filesystem::remove(*link_, error);
        }
        link_.reset();
    }
}
