#pragma once

#include "KVRSimTestClient.h"

#include "testing/KVRProcess.h"
#include "testing/KVRTempDirectory.h"

#include <memory>
#include <string>
#include <vector>

/// One emulator process in a scratch directory, on a free TCP port or a
/// pseudo-terminal, and the host connections the test opens to it.
class KVRSimTestBench {
public:
    enum class Endpoint { Tcp, Pty };

    /// `scenario` (JSON), when given, is passed as a scenario file.
    explicit KVRSimTestBench(std::vector<std::string> arguments = {}, Endpoint endpoint = Endpoint::Tcp,
                             const std::string& scenario = "");
    /// Stops the emulator and fails the test unless it ends cleanly.
    ~KVRSimTestBench();
    KVRSimTestBench(const KVRSimTestBench&) = delete;
    KVRSimTestBench& operator=(const KVRSimTestBench&) = delete;

    KVRSimTestClient& client();
    std::unique_ptr<KVRSimTestClient> connect() const { return std::make_unique<KVRSimTestClient>(endpoint_); }
    const std::string& endpoint() const { return endpoint_; }
    KVRProcess& process() { return *process_; }
    /// What the emulator wrote to standard error.
    std::string errors() const { return process_->errors(); }
    /// Loads one AID and one CAPK record with the library's stamp.
    void loadTables();
    /// Waits for a new ready line (after a terminal hang-up) and reconnects.
    void reopen();

private:
    KVRTempDirectory directory_;
    std::unique_ptr<KVRProcess> process_;
    std::string endpoint_;
    std::unique_ptr<KVRSimTestClient> client_;
};

/// Runs the emulator to its end (a start that must fail).
KVRProcess::Result runSim(const std::vector<std::string>& arguments);
