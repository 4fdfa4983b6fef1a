#include <kovra/KVRTmsTableModel.h>

#include "Persistence/KVREntityDescription.h"

const KVREntityDescription& KVRTmsTableModel::entity() {
    static const KVREntityDescription description(
        "KVRTmsTableModel", {{"aidTable", KVRAttributeType::Text}, {"capkTable", KVRAttributeType::Text}}, {},
        [] { return std::shared_ptr<KVRManagedObject>(new KVRTmsTableModel()); });
    return description;
}

std::optional<std::string> KVRTmsTableModel::aidTable() const { return textValue("aidTable"); }
void KVRTmsTableModel::setAidTable(std::optional<std::string> value) { setTextValue("aidTable", std::move(value)); }
std::optional<std::string> KVRTmsTableModel::capkTable() const { return textValue("capkTable"); }
void KVRTmsTableModel::setCapkTable(std::optional<std::string> value) { setTextValue("capkTable", std::move(value)); }
