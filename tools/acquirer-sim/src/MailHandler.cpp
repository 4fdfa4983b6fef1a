#include "MailHandler.h"

#include "RequestRejected.h"

#include <fstream>
#include <regex>
#include <set>

#include <nlohmann/json.hpp>

namespace acqsim {
namespace {

using json = nlohmann::ordered_json;

const std::set<std::string> kReceiptKeys = {
    "card_brand",          "company_name",          "company_address",        "company_tax_document_number",
    "transaction_aid",     "transaction_arqc",      "transaction_kovra_id",   "client_name",
    "client_masked_card_number", "transaction_date", "transaction_time",      "transaction_amount",
    "display_aid_arqc",    "display_company_information"};

[[noreturn]] void reject(const std::string& detail) {
    throw RequestRejected("IMSG", detail);
}

std::set<std::string> keysOf(const json& object) {
    std::set<std::string> keys;
    for (const auto& item : object.items()) {
        keys.insert(item.key());
    }
    return keys;
}

void expectKeys(const json& object, const std::set<std::string>& expected, const std::string& where) {
    std::set<std::string> present = keysOf(object);
    for (const std::string& key : expected) {
        if (!present.count(key)) {
            reject(where + " lacks \"" + key + "\"");
        }
    }
    for (const std::string& key : present) {
        if (!expected.count(key)) {
            reject(where + " has the unexpected key \"" + key + "\"");
        }
    }
}

std::string stringAt(const json& object, const std::string& key, const std::string& where) {
    if (!object.at(key).is_string()) {
        reject(where + "." + key + " must be a string");
    }
    return object.at(key).get<std::string>();
}

void expectFormat(const std::string& value, const char* pattern, const std::string& what) {
    if (!std::regex_match(value, std::regex(pattern))) {
        reject(what + " is not in the form " + pattern);
    }
}

// "1234,50" for 123450 cents.
std::string reais(const std::string& cents) {
    std::string digits = cents.size() < 3 ? std::string(3 - cents.size(), '0') + cents : cents;
    return digits.substr(0, digits.size() - 2) + "," + digits.substr(digits.size() - 2);
}

// A receipt of a sale we authorised must show the amount we authorised, in reais.
void checkAmountAgainstLedger(SimState& state, const std::string& authorisationCode, const std::string& amount) {
    std::vector<std::string> authorised = state.approvedAmounts(authorisationCode);
    if (authorised.empty()) {
        return;
    }
    for (const std::string& cents : authorised) {
        if (reais(cents) == amount) {
            return;
        }
    }
    reject("transaction_amount " + amount + " is not the amount authorised with the code " + authorisationCode +
           " (" + reais(authorised.front()) + ")");
}

void checkReceipt(const json& parameters, SimState& state) {
    expectKeys(parameters, kReceiptKeys, "body_parameters");
    for (const std::string& key : kReceiptKeys) {
        stringAt(parameters, key, "body_parameters");
    }
    auto text = [&parameters](const char* key) { return parameters.at(key).get<std::string>(); };
    expectFormat(text("transaction_amount"), R"(\d+,\d{2})", "transaction_amount");
    expectFormat(text("transaction_date"), R"(\d{2}/\d{2}/\d{4})", "transaction_date");
    expectFormat(text("transaction_time"), R"(\d{2}:\d{2})", "transaction_time");
    // Only the last digits of the card may ever reach a mail.
    expectFormat(text("client_masked_card_number"), R"(\*{4} \*{4} \*{4} \d{4})", "client_masked_card_number");
    // A single payment reads "à vista"; otherwise two instalments or more.
    expectFormat(text("card_brand"), R"(.+ - .+ (à vista|[2-9]|[1-9]\d+))", "card_brand");
    expectFormat(text("display_company_information"), "true|false", "display_company_information");
    const std::string aid = text("transaction_aid");
    const std::string display = text("display_aid_arqc");
    if (display != (aid.empty() ? "false" : "true")) {
        reject("display_aid_arqc is \"" + display + "\" although transaction_aid is " + (aid.empty() ? "empty" : "set"));
    }
    checkAmountAgainstLedger(state, text("transaction_kovra_id"), text("transaction_amount"));
}

// Returns the template name.
std::string checkMail(const json& mail, SimState& state) {
    if (!mail.is_object()) {
        reject("the body is not a JSON object");
    }
    expectKeys(mail, {"template", "mail_header", "body_parameters"}, "the request");
    const std::string name = stringAt(mail, "template", "request");
    const json& header = mail.at("mail_header");
    if (!header.is_object()) {
        reject("mail_header must be an object");
    }
    expectKeys(header, {"subject", "to"}, "mail_header");
    const std::string subject = stringAt(header, "subject", "mail_header");
    expectFormat(stringAt(header, "to", "mail_header"), R"([^@\s]+@[^@\s]+)", "mail_header.to");
    const json& parameters = mail.at("body_parameters");
    if (!parameters.is_object()) {
        reject("body_parameters must be an object");
    }
    if (name == "transaction" || name == "void_transaction") {
        const char* expected = name == "transaction" ? "Comprovante de transação" : "Comprovante de cancelamento";
        if (subject != expected) {
            reject("the subject of a " + name + " receipt is \"" + expected + "\", not \"" + subject + "\"");
        }
        checkReceipt(parameters, state);
    } else if (name == "default") {
        if (subject.empty()) {
            reject("mail_header.subject is empty");
        }
        expectKeys(parameters, {"body_message"}, "body_parameters");
        stringAt(parameters, "body_message", "body_parameters");
    } else {
        reject("unknown template \"" + name + "\"");
    }
    return name;
}

} // namespace

MailHandler::MailHandler(SimState& state, std::filesystem::path outbox) : state_(state), outbox_(std::move(outbox)) {}

SimReply MailHandler::handle(const std::string& body) {
    json mail = json::parse(body, nullptr, false);
    if (mail.is_discarded()) {
        throw RequestRejected("PARS", "the body is not JSON");
    }
    const std::string name = checkMail(mail, state_);
    const int number = state_.nextOutboxNumber();
    const std::filesystem::path file = outbox_ / (std::to_string(number) + ".json");
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << mail.dump(2) << '\n';
    if (!out) {
        throw std::runtime_error("cannot write " + file.string());
    }
    return SimReply{200, "application/json", R"({"status":"sent"})",
                    "sent outbox/" + file.filename().string() + " template " + name};
}

} // namespace acqsim
