#include <kovra/KVRNumber.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

KVRNumber::KVRNumber(long long value) : isInteger_(true), integer_(value), real_(static_cast<double>(value)) {}

KVRNumber::KVRNumber(double value) : isInteger_(false), integer_(0), real_(value) {}

KVRNumber KVRNumber::fromString(const std::string& text) {
    const char* begin = text.c_str();
    char* end = nullptr;
    double real = std::strtod(begin, &end);
    if (end == begin || !std::isfinite(real)) return KVRNumber(0LL);
    std::string consumed(begin, static_cast<size_t>(end - begin));
    bool fractional = consumed.find_first_of(".eE") != std::string::npos;
    if (!fractional && std::fabs(real) < 9.2e18) return KVRNumber(std::strtoll(begin, nullptr, 10));
    return KVRNumber(real);
}

long long KVRNumber::longLongValue() const {
    if (isInteger_) return integer_;
    if (!std::isfinite(real_)) return 0;
    if (real_ >= 9.2e18) return std::numeric_limits<long long>::max();
    if (real_ <= -9.2e18) return std::numeric_limits<long long>::min();
    return static_cast<long long>(real_);
}

double KVRNumber::doubleValue() const { return isInteger_ ? static_cast<double>(integer_) : real_; }

std::string KVRNumber::description() const {
    if (isInteger_) return std::to_string(integer_);
    if (std::isnan(real_)) return "nan";
    if (std::isinf(real_)) return real_ > 0 ? "inf" : "-inf";
    // Shortest text that reads back as the same double, as the platform prints.
    char buffer[40];
    for (int precision = 15; precision <= 17; ++precision) {
        std::snprintf(buffer, sizeof buffer, "%.*g", precision, real_);
        if (std::strtod(buffer, nullptr) == real_) break;
    }
    return buffer;
}

bool KVRNumber::operator==(const KVRNumber& other) const {
    if (isInteger_ && other.isInteger_) return integer_ == other.integer_;
    return doubleValue() == other.doubleValue();
}
