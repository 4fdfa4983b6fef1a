#include "testing/KVRPseudoTerminal.h"

#include "Platform/KVRFdInputStream.h"
#include "Platform/KVRFdOutputStream.h"

#include <fcntl.h>
#include <stdexcept>
#include <stdlib.h>
#include <termios.h>

KVRPseudoTerminal::KVRPseudoTerminal(bool raw) {
    int fd = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0 || grantpt(fd) != 0 || unlockpt(fd) != 0) throw std::runtime_error("no pseudo-terminal");
    master_ = std::make_shared<KVRFileDescriptor>(fd);
    char name[128];
    if (ptsname_r(fd, name, sizeof name) != 0) throw std::runtime_error("no pseudo-terminal name");
    slavePath_ = name;
    // Line discipline would eat SYN/ETB and CR/LF: raw on the master side too.
    if (raw) {
        struct termios tio {};
        tcgetattr(fd, &tio);
        cfmakeraw(&tio);
        tcsetattr(fd, TCSANOW, &tio);
    }
    input_ = std::make_shared<KVRFdInputStream>(master_);
    output_ = std::make_shared<KVRFdOutputStream>(master_);
    input_->open();
    output_->open();
}

KVRPseudoTerminal::~KVRPseudoTerminal() { hangUp(); }

void KVRPseudoTerminal::hangUp() {
    if (input_) input_->close();
    if (output_) output_->close();
    master_.reset();
}
