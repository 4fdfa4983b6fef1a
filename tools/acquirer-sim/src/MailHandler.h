#pragma once

#include "SimReply.h"
#include "SimState.h"

#include <filesystem>
#include <string>

namespace acqsim {

// "/send": the mail service. Checks the request (template, mail_header with
// subject and to, body_parameters with exactly the keys of its template and
// values in the forms the receipts use; a receipt of a sale in the ledger must
// show its authorised amount in reais) and keeps each accepted message as
// outbox/<n>.json, pretty-printed. Answers {"status":"sent"}; a malformed
// request gets status 400 and {"status":"error","error":"..."}.
class MailHandler {
public:
    MailHandler(SimState& state, std::filesystem::path outbox);

    SimReply handle(const std::string& body);

private:
    SimState& state_;
    std::filesystem::path outbox_;
};

} // namespace acqsim
