#include "KVRSimServer.h"

#include "KVRSimFrame.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <poll.h>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>

namespace {

/// SIGINT and SIGTERM become readable events instead of interrupting writes.
int openSignalDescriptor() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    if (sigprocmask(SIG_BLOCK, &signals, nullptr) != 0) {
        throw std::system_error(errno, std::generic_category(), "sigprocmask");
    }
    int fd = signalfd(-1, &signals, SFD_CLOEXEC);
    if (fd < 0) {
        throw std::system_error(errno, std::generic_category(), "signalfd");
    }
    return fd;
}

std::string commandName(const std::string& text) {
    return text.substr(0, std::min<size_t>(text.size(), 3));
}

}  // namespace

KVRSimServer::KVRSimServer(KVRSimTransport& transport, KVRSimCommandProcessor& processor,
                           std::optional<std::filesystem::path> commandLog, bool verbose)
    : transport_(transport),
      processor_(processor),
      responder_(transport),
      reader_([this](const KVRSimFrameReader::Frame& frame) { onFrame(frame); },
              [this](unsigned char byte) { onControl(byte); }),
      verbose_(verbose) {
    if (commandLog) {
        commandLog_.emplace(*commandLog, std::ios::app);
        if (!*commandLog_) {
            throw std::system_error(errno, std::generic_category(), "cannot open " + commandLog->string());
        }
    }
}

int KVRSimServer::run(std::ostream& announcements) {
    int signals = openSignalDescriptor();
    auto endpoint = transport_.open();
    announcements << kReadyPrefix << endpoint << std::endl;
    while (serve(signals)) {
        if (responder_.sendDue()) {
            hangUp(announcements);
        }
    }
    transport_.close();
    ::close(signals);
    return 0;
}

void KVRSimServer::hangUp(std::ostream& announcements) {
    reader_.reset();
    if (auto reopened = transport_.hangUp()) {
        announcements << kReadyPrefix << *reopened << std::endl;
    }
}

bool KVRSimServer::serve(int signals) {
    pollfd descriptors[2] = {{signals, POLLIN, 0}, {transport_.waitDescriptor(), POLLIN, 0}};
    if (::poll(descriptors, 2, responder_.msUntilNextStep()) < 0) {
        return errno == EINTR;
    }
    if (descriptors[0].revents & POLLIN) {
        signalfd_siginfo info{};
        [[maybe_unused]] auto ignored = ::read(signals, &info, sizeof info);
        log("stopping on signal " + std::to_string(info.ssi_signo));
        return false;
    }
    if (descriptors[1].revents & (POLLIN | POLLHUP | POLLERR)) {
        auto received = transport_.receive();
        if (received.peerChanged) {
            reader_.reset();
            responder_.forget();
        }
        reader_.feed(received.bytes);
    }
    return true;
}

void KVRSimServer::onFrame(const KVRSimFrameReader::Frame& frame) {
    KVRSimOutcome outcome;
    if (frame.overlong) {
        outcome = KVRSimOutcome::refuse("frame text longer than " + std::to_string(KVRSimFrameReader::kMaximumText) +
                                        " characters");
    } else if (!frame.crcMatches) {
        outcome = KVRSimOutcome::refuse("bad CRC on a frame of " + std::to_string(frame.text.size()) + " characters");
    } else if (!frame.malformed.empty()) {
        outcome = KVRSimOutcome::refuse("malformed packet: " + frame.malformed);
    } else {
        outcome = processor_.process(frame.text);
    }
    if (commandLog_) {
        *commandLog_ << (outcome.logged.empty() ? processor_.loggable(frame.text) : outcome.logged) << std::endl;
    }
    if (outcome.refused) {
        std::cerr << "kovra-pinpad-sim: NAK " << commandName(frame.text) << ": " << outcome.reason << std::endl;
    } else if (verbose_) {
        log("<- " + commandName(frame.text) + " -> " + outcome.reply.substr(0, std::min<size_t>(outcome.reply.size(), 6)));
    }
    responder_.deliver(outcome);
}

void KVRSimServer::onControl(unsigned char byte) {
    if (byte == static_cast<unsigned char>(KVRSimFrame::kCan)) {
        if (verbose_) log("CAN: pending replies dropped, EOT");
        responder_.abandon();
    } else if (byte == static_cast<unsigned char>(KVRSimFrame::kNak)) {
        if (verbose_) log("NAK from the host: last frame sent again");
        responder_.resendLast();
    } else if (verbose_) {
        char text[64];
        std::snprintf(text, sizeof text, "ignored byte 0x%02X outside a frame", byte);
        log(text);
    }
}

void KVRSimServer::log(const std::string& line) const {
    std::cerr << "kovra-pinpad-sim: " << line << std::endl;
}
