#include <kovra/KVRError.h>

KVRError::KVRError(std::string domain, long code, UserInfo userInfo)
    : domain_(std::move(domain)), code_(code), userInfo_(std::move(userInfo)) {}

std::string KVRError::localizedDescription() const {
    auto it = userInfo_.find(NSLocalizedDescriptionKey);
    if (it != userInfo_.end()) return it->second;
    return "The operation couldn't be completed. (" + domain_ + " error " + std::to_string(code_) + ".)";
}

std::string KVRError::description() const {
    return "Error Domain=" + domain_ + " Code=" + std::to_string(code_) + " \"" + localizedDescription() +
           "\" UserInfo=" + describeUserInfo(userInfo_);
}

std::string KVRError::describeUserInfo(const UserInfo& userInfo) {
    std::string text = "{";
    for (const auto& [key, value] : userInfo) {
        if (text.size() > 1) text += "; ";
        text += key + "=" + value;
    }
    return text + "}";
}

bool KVRError::operator==(const KVRError& other) const {
    return code_ == other.code_ && domain_ == other.domain_;
}
