#pragma once

#include <kovra/KVRExport.h>
#include <kovra/KVRRecord.h>

#include <memory>
#include <optional>
#include <string>

class KVRTransactionModel;

/// The identity of the PIN pad a transaction was made on.
class KOVRA_API KVRPinpadModel : public KVRRecord<KVRPinpadModel> {
public:
    static const KVREntityDescription& entity();

    std::optional<std::string> name() const;
    void setName(std::optional<std::string> value);
    std::optional<std::string> model() const;
    void setModel(std::optional<std::string> value);
    std::optional<std::string> serialNumber() const;
    void setSerialNumber(std::optional<std::string> value);

    /// The transaction made on this PIN pad record (one each way).
    std::shared_ptr<KVRTransactionModel> transaction() const;
    void setTransaction(std::shared_ptr<KVRTransactionModel> value);

protected:
    KVRPinpadModel() = default;
};
