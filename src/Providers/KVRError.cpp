#include <kovra/KVRError.h>

KVRError::KVRError(std::string domain, long code, UserInfo userInfo)
    : domain_(std::move(domain)), code_(code), userInfo_(std::move(userInfo)) {}

std::string KVRError::localizedDescription() const {
    auto it = userInfo_.find(NSLocalizedDescriptionKey);
    if (it != userInfo_.end()) return it->second;
    return "The operation couldn't be completed. (" + domain_ + " error " + std::to_string(code_) + ".)";
}

bool KVRError::operator==(const KVRError& other) const {
    return code_ == other.code_ && domain_ == other.domain_;
}
