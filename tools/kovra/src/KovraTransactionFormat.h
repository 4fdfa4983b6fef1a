#pragma once

#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <utility>
#include <vector>

class KVRTransactionModel;
class KovraTextTable;

/// How the tool shows a stored transaction. Only the last four digits of the
/// card are ever stored, and the cardholder's name is left out.
class KovraTransactionFormat {
public:
    using Transaction = std::shared_ptr<KVRTransactionModel>;

    KovraTransactionFormat() = delete;

    static nlohmann::ordered_json toJson(const Transaction& transaction);
    static nlohmann::ordered_json toJson(const std::vector<Transaction>& transactions);
    /// Label and value pairs, one per printed line.
    static std::vector<std::pair<std::string, std::string>> details(const Transaction& transaction);
    static std::vector<std::string> detailLines(const Transaction& transaction, const std::string& indent = "");
    static KovraTextTable table(const std::vector<Transaction>& transactions);
};
