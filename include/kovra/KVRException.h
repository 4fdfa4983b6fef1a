#pragma once

#include <kovra/KVRExport.h>

#include <exception>
#include <string>

/// A programming error of the library (a field that does not fit its width, a
/// value with no code...), raised with a fixed name and reason.
class KOVRA_API KVRException : public std::exception {
public:
    KVRException(std::string name, std::string reason);

    const std::string& name() const noexcept { return name_; }
    const std::string& reason() const noexcept { return reason_; }
    /// "name: reason".
    const char* what() const noexcept override { return what_.c_str(); }

private:
    std::string name_;
    std::string reason_;
    std::string what_;
};
