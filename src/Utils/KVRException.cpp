#include <kovra/KVRException.h>

KVRException::KVRException(std::string name, std::string reason)
    : name_(std::move(name)), reason_(std::move(reason)), what_(name_ + ": " + reason_) {}
