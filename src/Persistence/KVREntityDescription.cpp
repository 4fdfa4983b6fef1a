#include "Persistence/KVREntityDescription.h"

KVREntityDescription::KVREntityDescription(std::string name, std::vector<KVRAttributeDescription> attributes,
                                           std::vector<KVRRelationshipDescription> relationships, Factory factory)
    : name_(std::move(name)),
      attributes_(std::move(attributes)),
      relationships_(std::move(relationships)),
      factory_(std::move(factory)) {}

KVREntityDescription::KVREntityDescription(std::string name, const KVREntityDescription& parent, Factory factory)
    : name_(std::move(name)),
      parent_(&parent),
      attributes_(parent.attributes_),
      relationships_(parent.relationships_),
      factory_(std::move(factory)) {}

bool KVREntityDescription::isKindOf(const KVREntityDescription& other) const {
    for (const KVREntityDescription* e = this; e; e = e->parent_) {
        if (e == &other) return true;
    }
    return false;
}

std::optional<size_t> KVREntityDescription::attributeIndex(const std::string& name) const {
    for (size_t i = 0; i < attributes_.size(); ++i) {
        if (attributes_[i].name == name) return i;
    }
    return std::nullopt;
}

std::optional<size_t> KVREntityDescription::foreignKeyIndex(const std::string& name) const {
    size_t index = 0;
    for (const auto& r : relationships_) {
        if (!r.isForeignKey()) continue;
        if (r.name == name) return index;
        ++index;
    }
    return std::nullopt;
}

const KVRRelationshipDescription* KVREntityDescription::relationship(const std::string& name) const {
    for (const auto& r : relationships_) {
        if (r.name == name) return &r;
    }
    return nullptr;
}

std::vector<const KVRRelationshipDescription*> KVREntityDescription::foreignKeys() const {
    std::vector<const KVRRelationshipDescription*> keys;
    for (const auto& r : relationships_) {
        if (r.isForeignKey()) keys.push_back(&r);
    }
    return keys;
}
