#include <kovra/KVRManagedObject.h>

#include <kovra/KVRLoggingUtil.h>

#include "Persistence/KVREntityDescription.h"
#include "Persistence/KVRManagedObjectContext.h"
#include "Persistence/KVRManagedObjectState.h"
#include "Persistence/KVRPersistenceController.h"

#include <stdexcept>

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

std::shared_ptr<KVRManagedObjectContext> sharedContext() {
    return KVRPersistenceController::sharedController().managedObjectContext();
}

size_t attributeIndex(const KVREntityDescription& entity, const char* attribute) {
    auto index = entity.attributeIndex(attribute);
    if (!index) throw std::logic_error(entity.name() + " has no attribute " + attribute);
    return *index;
}

const KVRRelationshipDescription& relationshipNamed(const KVREntityDescription& entity, const char* name) {
    const auto* relationship = entity.relationship(name);
    if (!relationship) throw std::logic_error(entity.name() + " has no relationship " + name);
    return *relationship;
}

template <class T>
std::optional<T> valueAs(const KVRStoredValue& value) {
    if (const auto* typed = std::get_if<T>(&value)) return *typed;
    return std::nullopt;
}

template <class T>
KVRStoredValue storedFrom(std::optional<T> value) {
    if (!value) return std::monostate{};
    return KVRStoredValue(std::move(*value));
}

KVRFetchCondition linkCondition(const KVREntityDescription& entity, const std::string& relationship,
                                std::shared_ptr<KVRManagedObject> object) {
    return KVRFetchCondition{entity.relationship(relationship), entity.foreignKeyIndex(relationship), {}, std::move(object)};
}

const char* typeName(KVRAttributeType type) {
    switch (type) {
        case KVRAttributeType::Text: return "text";
        case KVRAttributeType::Number: return "a number";
        case KVRAttributeType::Date: return "a date";
    }
    return "";
}

KVRAttributeType typeOf(const KVRAttributeValue& value) {
    if (std::holds_alternative<std::string>(value)) return KVRAttributeType::Text;
    if (std::holds_alternative<KVRNumber>(value)) return KVRAttributeType::Number;
    return KVRAttributeType::Date;
}

}  // namespace

KVRManagedObject::KVRManagedObject(const KVREntityDescription& entity) : state_(std::make_unique<KVRManagedObjectState>()) {
    state_->entity = &entity;
    state_->values.resize(entity.attributes().size());
    state_->links.resize(entity.foreignKeys().size());
}

KVRManagedObject::~KVRManagedObject() = default;

const std::string& KVRManagedObject::entityName() const { return state_->entity->name(); }

void KVRManagedObject::save() {
    Lock lock(KVRManagedObjectContext::mutex());
    auto context = state_->context.lock();
    if (!context) context = sharedContext();
    if (auto error = context->save()) KVRLoggingUtil::console("An error!! " + error->description());
}

void KVRManagedObject::deleteRecord() {
    Lock lock(KVRManagedObjectContext::mutex());
    if (auto context = state_->context.lock()) context->deleteObject(shared_from_this());
    save();
}

bool KVRManagedObject::isInserted() const {
    Lock lock(KVRManagedObjectContext::mutex());
    return state_->status == KVRObjectStatus::Inserted && !state_->context.expired();
}

bool KVRManagedObject::isDeleted() const {
    Lock lock(KVRManagedObjectContext::mutex());
    return state_->status == KVRObjectStatus::Deleted || state_->status == KVRObjectStatus::Detached ||
           state_->context.expired();
}

bool KVRManagedObject::hasChanges() const {
    Lock lock(KVRManagedObjectContext::mutex());
    if (state_->context.expired()) return false;
    return state_->status == KVRObjectStatus::Inserted || state_->status == KVRObjectStatus::Updated ||
           state_->status == KVRObjectStatus::Deleted;
}

std::optional<std::string> KVRManagedObject::textValue(const char* attribute) const {
    Lock lock(KVRManagedObjectContext::mutex());
    return valueAs<std::string>(state_->values[attributeIndex(*state_->entity, attribute)]);
}

void KVRManagedObject::setTextValue(const char* attribute, std::optional<std::string> value) {
    setStoredValue(attribute, storedFrom(std::move(value)));
}

std::optional<KVRNumber> KVRManagedObject::numberValue(const char* attribute) const {
    Lock lock(KVRManagedObjectContext::mutex());
    return valueAs<KVRNumber>(state_->values[attributeIndex(*state_->entity, attribute)]);
}

void KVRManagedObject::setNumberValue(const char* attribute, std::optional<KVRNumber> value) {
    setStoredValue(attribute, storedFrom(value));
}

std::optional<KVRManagedObject::TimePoint> KVRManagedObject::dateValue(const char* attribute) const {
    Lock lock(KVRManagedObjectContext::mutex());
    return valueAs<TimePoint>(state_->values[attributeIndex(*state_->entity, attribute)]);
}

void KVRManagedObject::setDateValue(const char* attribute, std::optional<TimePoint> value) {
    setStoredValue(attribute, storedFrom(value));
}

void KVRManagedObject::setStoredValue(const char* attribute, KVRStoredValue value) {
    Lock lock(KVRManagedObjectContext::mutex());
    auto& slot = state_->values[attributeIndex(*state_->entity, attribute)];
    if (slot == value) return;
    slot = std::move(value);
    if (auto context = state_->context.lock()) context->objectDidChange(*this);
}

std::shared_ptr<KVRManagedObject> KVRManagedObject::toOneValue(const char* relationship) const {
    Lock lock(KVRManagedObjectContext::mutex());
    const auto& description = relationshipNamed(*state_->entity, relationship);
    if (description.isForeignKey()) {
        auto& link = state_->links[*state_->entity->foreignKeyIndex(relationship)];
        auto context = state_->context.lock();
        return context ? context->followLink(description, link) : link.object;
    }
    auto others = inverseObjects(description);
    return others.empty() ? nullptr : others.front();
}

std::vector<std::shared_ptr<KVRManagedObject>> KVRManagedObject::toManyValue(const char* relationship) const {
    Lock lock(KVRManagedObjectContext::mutex());
    return inverseObjects(relationshipNamed(*state_->entity, relationship));
}

// The records of the other side whose link points here.
std::vector<std::shared_ptr<KVRManagedObject>> KVRManagedObject::inverseObjects(
    const KVRRelationshipDescription& relationship) const {
    auto context = state_->context.lock();
    if (!context) return {};
    const auto& destination = relationship.destination();
    auto condition = linkCondition(destination, relationship.inverseName,
                                   std::const_pointer_cast<KVRManagedObject>(shared_from_this()));
    return context->fetch(destination, &condition);
}

void KVRManagedObject::setToOneValue(const char* relationship, std::shared_ptr<KVRManagedObject> value) {
    Lock lock(KVRManagedObjectContext::mutex());
    const auto& description = relationshipNamed(*state_->entity, relationship);
    if (description.isForeignKey()) {
        setLink(description, std::move(value));
        return;
    }
    for (const auto& other : inverseObjects(description)) {
        if (other != value) other->setLink(*other->state_->entity->relationship(description.inverseName), nullptr);
    }
    if (value) value->setLink(*value->state_->entity->relationship(description.inverseName), shared_from_this());
}

// A link whose other side is to-one as well is unique: whoever pointed at the
// new target before loses its link.
void KVRManagedObject::setLink(const KVRRelationshipDescription& relationship, std::shared_ptr<KVRManagedObject> value) {
    auto context = state_->context.lock();
    const auto* inverse = relationship.destination().relationship(relationship.inverseName);
    if (context && value && inverse && inverse->kind == KVRRelationshipKind::InverseToOne) {
        const auto& owner = state_->entity->root();
        auto condition = linkCondition(owner, relationship.name, value);
        for (const auto& other : context->fetch(owner, &condition)) {
            if (other.get() != this) other->setLink(relationship, nullptr);
        }
    }
    auto& link = state_->links[*state_->entity->foreignKeyIndex(relationship.name)];
    std::shared_ptr<KVRManagedObject> current = context ? context->followLink(relationship, link) : link.object;
    if (current == value && (value || link.isEmpty())) return;
    link = KVRObjectLink{std::move(value), 0};
    if (context) context->objectDidChange(*this);
}

std::shared_ptr<KVRManagedObject> KVRManagedObject::insertNewObject(const KVREntityDescription& entity) {
    Lock lock(KVRManagedObjectContext::mutex());
    return sharedContext()->insertNewObject(entity);
}

std::vector<std::shared_ptr<KVRManagedObject>> KVRManagedObject::fetchAll(const KVREntityDescription& entity) {
    Lock lock(KVRManagedObjectContext::mutex());
    return sharedContext()->fetch(entity, nullptr);
}

long long KVRManagedObject::countAll(const KVREntityDescription& entity) {
    Lock lock(KVRManagedObjectContext::mutex());
    return sharedContext()->count(entity);
}

std::vector<std::shared_ptr<KVRManagedObject>> KVRManagedObject::fetchByAttribute(const KVREntityDescription& entity,
                                                                                  const std::string& attribute,
                                                                                  const KVRAttributeValue& value) {
    auto index = entity.attributeIndex(attribute);
    if (!index) {
        KVRLoggingUtil::console("Unknown attribute \"" + attribute + "\" of " + entity.name() + "; nothing fetched");
        return {};
    }
    auto expected = entity.attributes()[*index].type;
    if (typeOf(value) != expected) {
        KVRLoggingUtil::console("Attribute \"" + attribute + "\" of " + entity.name() + " holds " + typeName(expected) +
                                ", not " + typeName(typeOf(value)) + "; nothing fetched");
        return {};
    }
    KVRFetchCondition condition{nullptr, index, std::visit([](const auto& v) { return KVRStoredValue(v); }, value), nullptr};
    Lock lock(KVRManagedObjectContext::mutex());
    return sharedContext()->fetch(entity, &condition);
}
