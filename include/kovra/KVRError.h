#pragma once

#include <kovra/KVRExport.h>

#include <map>
#include <string>

/// Key of the one user-information entry every library error carries.
inline constexpr const char* NSLocalizedDescriptionKey = "NSLocalizedDescription";
/// Further user-information keys of errors that wrap another one.
inline constexpr const char* NSLocalizedFailureReasonErrorKey = "NSLocalizedFailureReason";
inline constexpr const char* NSUnderlyingErrorKey = "NSUnderlyingError";
/// Domain of transport errors reported by the HTTP exchange (URL-loading codes).
inline constexpr const char* NSURLErrorDomain = "NSURLErrorDomain";

/// An error value: domain, code and user information. Two errors are equal
/// when their domain and code are equal, whatever their texts say.
class KOVRA_API KVRError {
public:
    using UserInfo = std::map<std::string, std::string>;

    KVRError() = default;
    KVRError(std::string domain, long code, UserInfo userInfo = {});

    const std::string& domain() const { return domain_; }
    long code() const { return code_; }
    const UserInfo& userInfo() const { return userInfo_; }

    /// The description of the user information, or a generic text naming
    /// domain and code when there is none.
    std::string localizedDescription() const;
    /// The error as logs show it:
    /// `Error Domain=<domain> Code=<code> "<description>" UserInfo={key=value; ...}`
    std::string description() const;
    /// "{key=value; ...}", keys in order.
    static std::string describeUserInfo(const UserInfo& userInfo);

    bool operator==(const KVRError& other) const;
    bool operator!=(const KVRError& other) const { return !(*this == other); }

private:
    std::string domain_;
    long code_ = 0;
    UserInfo userInfo_;
};
