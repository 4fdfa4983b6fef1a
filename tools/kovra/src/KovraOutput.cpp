#include "KovraOutput.h"

#include <iostream>

void KovraOutput::line(const std::string& text) {
    if (json_) return;
    std::lock_guard lock(mutex_);
    std::cout << text << std::endl;
}

void KovraOutput::document(const nlohmann::ordered_json& value) {
    if (!json_) return;
    std::lock_guard lock(mutex_);
    std::cout << value.dump(2) << std::endl;
}

void KovraOutput::pinpadMessage(const std::string& text) {
    std::lock_guard lock(mutex_);
    (json_ ? std::cerr : std::cout) << text << std::endl;
}

void KovraOutput::note(const std::string& text) {
    std::lock_guard lock(mutex_);
    std::cerr << text << std::endl;
}

void KovraOutput::raw(const std::string& text) {
    std::lock_guard lock(mutex_);
    std::cerr << text << std::flush;
}

void KovraOutput::error(const std::string& line, const nlohmann::ordered_json& document) {
    std::lock_guard lock(mutex_);
    if (json_) {
        std::cout << document.dump(2) << std::endl;
        return;
    }
    std::cout << std::flush;
    std::cerr << line << std::endl;
}
