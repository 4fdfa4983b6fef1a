#pragma once

/// The application-information keys the library reads (KVRApplicationInfo).
/// Applications write these texts in their property lists, so each one is
/// fixed byte for byte.
namespace KVRSettingsKeys {

// Hosts and their trust.
inline constexpr const char* kTmsHost = "Kovra TMS Host";
inline constexpr const char* kTmsStagingHost = "Kovra TMS Staging Host";
inline constexpr const char* kAuthorizerHost = "Kovra Authorizer Host";
inline constexpr const char* kAuthorizerStagingHost = "Kovra Authorizer Staging Host";
inline constexpr const char* kMailHost = "Kovra Mail Host";
/// True: the staging hosts instead of the production ones.
inline constexpr const char* kHomologation = "Kovra Homologation";
inline constexpr const char* kCaFile = "Kovra CA File";
inline constexpr const char* kPinnedPublicKeys = "Kovra Pinned Public Keys";
inline constexpr const char* kReachabilityHost = "Kovra Reachability Host";
inline constexpr const char* kSupportMailbox = "Kovra Support Mailbox";

// The PIN pad.
inline constexpr const char* kPinpad = "Kovra Pinpad";
inline constexpr const char* kPinpadWritePause = "Kovra Pinpad Write Pause";
inline constexpr const char* kPinpadReadTimeout = "Kovra Pinpad Read Timeout";
inline constexpr const char* kPinpadLink = "Kovra Pinpad Link";

// The application and its logs.
inline constexpr const char* kBundleIdentifier = "Kovra Bundle Identifier";
inline constexpr const char* kRecoveryInterval = "Kovra Recovery Interval";
inline constexpr const char* kDebugLog = "Kovra Debugginho Developer";
inline constexpr const char* kLogCardData = "Kovra Log Card Data";

}  // namespace KVRSettingsKeys
