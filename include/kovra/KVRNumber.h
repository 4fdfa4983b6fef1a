#pragma once

#include <kovra/KVRExport.h>

#include <cstdint>
#include <string>

/// A stored number that keeps integer or fractional values and prints the way
/// the platform's number description does: 1000 -> "1000", 10.5 -> "10.5".
class KOVRA_API KVRNumber {
public:
    KVRNumber() = default;
    KVRNumber(long long value);  // NOLINT(google-explicit-constructor)
    KVRNumber(int value) : KVRNumber(static_cast<long long>(value)) {}  // NOLINT
    KVRNumber(long value) : KVRNumber(static_cast<long long>(value)) {}  // NOLINT
    KVRNumber(double value);  // NOLINT(google-explicit-constructor)

    /// Integer when the text is an integer, real when it is a decimal number;
    /// the leading number of the text, 0 when there is none.
    static KVRNumber fromString(const std::string& text);

    bool isInteger() const { return isInteger_; }
    long long longLongValue() const;
    int intValue() const { return static_cast<int>(longLongValue()); }
    double doubleValue() const;
    std::string description() const;

    bool operator==(const KVRNumber& other) const;
    bool operator!=(const KVRNumber& other) const { return !(*this == other); }

private:
    bool isInteger_ = true;
    long long integer_ = 0;
    double real_ = 0;
};
