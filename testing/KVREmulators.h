#pragma once

#include <kovra/KVRPropertyValue.h>

#include "testing/KVRProcess.h"
#include "testing/KVRTempDirectory.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The two emulators on loopback for an integration test: the PIN pad on a
/// pseudo-terminal and the acquirer on an HTTPS port, each with its own state
/// directory and logs in a temporary folder. While the object lives, the
/// information dictionary points the library at them ("Kovra Pinpad", the
/// TMS, authoriser and mail hosts, "Kovra CA File", the reachability probe on
/// 127.0.0.1, no write pause); the previous dictionary comes back afterwards.
class KVREmulators {
public:
    struct Options {
        /// Built programs; an empty path leaves that emulator out.
        std::string pinpadBinary;
        std::string acquirerBinary;
        /// The card the PIN pad presents (chip-visa, chip-master, stripe, stripe-pin, stripe-chip).
        std::string card = "chip-visa";
        /// When set, one card per card read answered 000 (the last repeats), in place of `card`.
        std::vector<std::string> cards;
        /// Fault rules of the PIN pad (JSON objects, see its --help).
        std::vector<std::string> pinpadFaults;
        /// More arguments for the PIN pad ("--bit-rate", "19200"...).
        std::vector<std::string> pinpadArguments;
        /// More arguments for the acquirer ("--auth-delay", "3"...).
        std::vector<std::string> acquirerArguments;
    };

    explicit KVREmulators(Options options);
    ~KVREmulators();
    KVREmulators(const KVREmulators&) = delete;
    KVREmulators& operator=(const KVREmulators&) = delete;

    /// Both requested emulators printed their ready lines.
    bool ready() const { return ready_; }
    /// Why not, when not.
    const std::string& failure() const { return failure_; }

    const std::string& pinpadDevice() const { return pinpadDevice_; }

    /// The PIN pad's display states, "first line|second line" with both lines 16 characters wide.
    std::vector<std::string> displayLog() const;
    /// The request texts the PIN pad received, in order.
    std::vector<std::string> commandLog() const;
    /// The three-letter names of commandLog().
    std::vector<std::string> commandNames() const;
    /// One line per request the acquirer received.
    std::vector<std::string> acquirerLog() const;
    /// The mails the acquirer accepted, in order.
    std::vector<nlohmann::json> outbox() const;
    /// The acquirer's ledger: its authorisations by RcptTxId ("response",
    /// "initiatorId", "cancelled"...).
    nlohmann::json ledger() const;

    /// Stops both; true when they ended cleanly.
    bool stop();

private:
    bool startPinpad();
    bool startAcquirer();

    Options options_;
    KVRTempDirectory directory_;
    KVRPropertyDictionary savedInfo_;
    std::unique_ptr<KVRProcess> pinpad_;
    std::unique_ptr<KVRProcess> acquirer_;
    bool ready_ = false;
    std::string failure_;
    std::string acquirerHost_;
    std::string pinpadDevice_;
};
