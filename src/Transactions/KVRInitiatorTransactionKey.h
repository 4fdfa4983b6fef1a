#pragma once

#include <optional>
#include <string>

/// The key a sale is known by at the acquirer.
namespace KVRInitiatorTransactionKey {

/// "<serial without spaces>-<yy><day ordinality><count, 4 digits at
/// least><vendor identifier characters 24-27><bundle version without dots>".
/// The count is the number of records, but never less than one more than the
/// count of any key the acquirer was sent, so no key repeats when records are
/// deleted; it is kept in `keyCount` as soon as it is known. Nothing when the
/// key cannot be built.
std::optional<std::string> generate(const std::string& serialNumber, std::optional<long long>& keyCount);

}  // namespace KVRInitiatorTransactionKey
