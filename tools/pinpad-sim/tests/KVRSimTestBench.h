#pragma once

#include "KVRSimTestClient.h"
#include "KVRSimTestDirectory.h"
#include "KVRSimTestProcess.h"

#include <memory>
#include <string>
#include <vector>

/// One emulator process in a scratch directory, on a free TCP port or a
/// pseudo-terminal, and the host connections the test opens to it.
class KVRSimTestBench {
public:
    enum class Endpoint { Tcp, Pty };

    explicit KVRSimTestBench(std::vector<std::string> arguments = {}, Endpoint endpoint = Endpoint::Tcp);
    /// Starts with a scenario file holding `scenario` (JSON).
    /// Stops the emulator and fails the test unless it ends cleanly.
    ~KVRSimTestBench();
    KVRSimTestBench(const KVRSimTestBench&) = delete;
    KVRSimTestBench& operator=(const KVRSimTestBench&) = delete;

    static std::unique_ptr<KVRSimTestBench> withScenario(const std::string& scenario,
                                                         std::vector<std::string> arguments = {});

    KVRSimTestClient& client();
    std::unique_ptr<KVRSimTestClient> connect() const { return std::make_unique<KVRSimTestClient>(endpoint_); }
    const std::string& endpoint() const { return endpoint_; }
    KVRSimTestProcess& process() { return *process_; }
    const KVRSimTestDirectory& directory() const { return *directory_; }
    /// What the emulator wrote to standard error.
    std::string errors() const { return directory_->read("stderr.txt"); }
    /// Loads one AID and one CAPK record with the library's stamp.
    void loadTables();
    /// Waits for a new ready line (after a terminal hang-up) and reconnects.
    void reopen();

private:
    KVRSimTestBench(std::shared_ptr<KVRSimTestDirectory> directory, std::vector<std::string> arguments, Endpoint endpoint);

    std::shared_ptr<KVRSimTestDirectory> directory_;
    std::unique_ptr<KVRSimTestProcess> process_;
    std::string endpoint_;
    std::unique_ptr<KVRSimTestClient> client_;
};
