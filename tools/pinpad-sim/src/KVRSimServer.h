#pragma once

#include "KVRSimCommandProcessor.h"
#include "KVRSimFrameReader.h"
#include "KVRSimResponder.h"
#include "KVRSimTransport.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <ostream>
#include <string>

/// Serves the host until SIGINT or SIGTERM: reads frames, hands their texts
/// to the processor and the outcomes to the responder, and answers the host's
/// CAN (EOT, abandoning what is pending) and NAK (the last frame again).
class KVRSimServer {
public:
    static constexpr const char* kReadyPrefix = "kovra-pinpad-sim ready on ";

    KVRSimServer(KVRSimTransport& transport, KVRSimCommandProcessor& processor,
                 std::optional<std::filesystem::path> commandLog, bool verbose);

    /// Opens the transport, announces it on `announcements` and serves.
    /// Returns the process exit status.
    int run(std::ostream& announcements);

private:
    void onFrame(const KVRSimFrameReader::Frame& frame);
    void onControl(unsigned char byte);
    void log(const std::string& line) const;
    bool serve(int signals);
    void hangUp(std::ostream& announcements);

    KVRSimTransport& transport_;
    KVRSimCommandProcessor& processor_;
    KVRSimResponder responder_;
    KVRSimFrameReader reader_;
    std::optional<std::ofstream> commandLog_;
    bool verbose_;
};
