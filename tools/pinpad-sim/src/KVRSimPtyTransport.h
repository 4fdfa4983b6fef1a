#pragma once

#include "KVRSimTransport.h"

#include <filesystem>
#include <optional>

/// A pseudo-terminal whose slave side the host opens like a serial device.
/// Both sides are raw, so SYN, ETB and line-ending bytes pass untouched. The
/// emulator keeps a slave descriptor of its own, so the terminal stays
/// usable when the host closes and reopens it.
class KVRSimPtyTransport : public KVRSimTransport {
public:
    /// `link`: a symbolic link kept pointing at the current slave path.
    explicit KVRSimPtyTransport(std::optional<std::filesystem::path> link);
    ~KVRSimPtyTransport() override;

    std::string open() override;
    int waitDescriptor() const override { return master_; }
    Received receive() override;
    void send(std::string_view bytes) override;
    std::optional<std::string> hangUp() override;
    void close() override;

private:
    static constexpr int kDrainPatienceMs = 2000;
    static constexpr int kDrainStepMs = 10;

    void waitUntilRead();
    void closeTerminal();
    void pointLinkAt(const std::string& slavePath);

    std::optional<std::filesystem::path> link_;
    int master_ = -1;
    int slave_ = -1;
};
