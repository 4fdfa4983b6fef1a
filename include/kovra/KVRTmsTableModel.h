#pragma once

#include <kovra/KVRExport.h>
#include <kovra/KVRRecord.h>

#include <optional>
#include <string>

/// The EMV tables as last received from the terminal-management host: the AID
/// and CAPK table blocks as texts.
class KOVRA_API KVRTmsTableModel : public KVRRecord<KVRTmsTableModel> {
public:
    static const KVREntityDescription& entity();

    std::optional<std::string> aidTable() const;
    void setAidTable(std::optional<std::string> value);
    std::optional<std::string> capkTable() const;
    void setCapkTable(std::optional<std::string> value);

protected:
    KVRTmsTableModel() = default;
};
