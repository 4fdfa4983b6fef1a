#pragma once

#include "Platform/KVRFileDescriptor.h"
#include "Platform/KVRInputStream.h"
#include "Platform/KVROutputStream.h"

#include <memory>
#include <string>

/// A pseudo-terminal whose master side plays the PIN pad: raw mode (the
/// pair shares one line setting), non-blocking, with open streams over it. The library opens the slave path.
class KVRPseudoTerminal {
public:
    /// `raw` false leaves the line as the system made it (cooked), so a test
    /// can see the library put it in raw mode.
    explicit KVRPseudoTerminal(bool raw = true);
    ~KVRPseudoTerminal();
    KVRPseudoTerminal(const KVRPseudoTerminal&) = delete;
    KVRPseudoTerminal& operator=(const KVRPseudoTerminal&) = delete;

    const std::string& slavePath() const { return slavePath_; }
    int masterFd() const { return master_ ? master_->fd() : -1; }
    const std::shared_ptr<KVRInputStream>& input() const { return input_; }
    const std::shared_ptr<KVROutputStream>& output() const { return output_; }
    /// Closes the master: the slave side sees a hang-up.
    void hangUp();

private:
    std::shared_ptr<KVRFileDescriptor> master_;
    std::string slavePath_;
    std::shared_ptr<KVRInputStream> input_;
    std::shared_ptr<KVROutputStream> output_;
};
