#pragma once

#include "KovraEmulatorProcess.h"
#include "KovraInterrupts.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The demo's world: a work directory, the PIN pad emulator on a
/// pseudo-terminal and the acquirer emulator on a free loopback port, both
/// started in it, and the information dictionary that points the library at
/// them. Everything is stopped, and a temporary directory removed, when the
/// object dies or the tool is interrupted.
class KovraDemoEnvironment {
public:
    /// The cards the PIN pad presents, one per card read: the first chip sale,
    /// the declined one, the stripe sale.
    static const std::vector<std::string>& cards();

    /// An empty `keepDirectory` means a temporary directory removed at the end.
    KovraDemoEnvironment(const std::string& keepDirectory, double writePause, KovraInterrupts& interrupts);
    ~KovraDemoEnvironment();
    KovraDemoEnvironment(const KovraDemoEnvironment&) = delete;
    KovraDemoEnvironment& operator=(const KovraDemoEnvironment&) = delete;

    /// Starts both emulators and configures the library (information
    /// dictionary, data directory). Throws KovraCommandError when something
    /// cannot start.
    void start();

    const std::string& directory() const { return directory_; }
    bool kept() const { return kept_; }
    const std::string& acquirerUrl() const { return acquirerUrl_; }
    const std::string& pinpadDevice() const { return pinpadDevice_; }
    std::string path(const std::string& name) const { return directory_ + "/" + name; }
    std::string infoFile() const { return path("Info.plist"); }
    std::string dataDirectory() const { return path("data"); }

    /// Requests the PIN pad emulator has received so far.
    int pinpadCommandCount() const;
    /// What the PIN pad displays now, its two lines joined: "TRANSACAO / APROVADA".
    std::optional<std::string> lastDisplay() const;
    /// The newest mail in the acquirer's outbox.
    std::optional<std::string> newestOutboxFile() const;

private:
    void prepareDirectory(const std::string& keepDirectory);
    void startAcquirer(const std::string& program);
    void startPinpad(const std::string& program);
    void configureLibrary() const;
    void stopAll();
    static std::string locate(const std::string& name, const std::string& buildFolder);

    KovraInterrupts& interrupts_;
    KovraInterrupts::Token cleanup_ = 0;
    double writePause_;
    std::string directory_;
    bool kept_ = false;
    std::unique_ptr<KovraEmulatorProcess> acquirer_;
    std::unique_ptr<KovraEmulatorProcess> pinpad_;
    std::string acquirerUrl_;
    std::string acquirerHost_;
    std::string caFile_;
    std::string pinpadDevice_;
};
