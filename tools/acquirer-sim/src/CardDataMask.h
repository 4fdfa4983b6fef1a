#pragma once

#include <string>
#include <string_view>

namespace acqsim {

// What the emulator writes about a request (requests.log, standard error)
// shows card data only masked, unless --log-card-data asks for clear text.
// Fields are masked by the element they come from: PAN keeps its first six
// and last four digits; track values, PIN blocks, key serial numbers,
// security codes and cardholder identifications become asterisks.
class CardDataMask {
public:
    static void setClearText(bool clear);

    // The value of the element `name` as it may be logged.
    static std::string value(std::string_view name, std::string_view text);
};

} // namespace acqsim
