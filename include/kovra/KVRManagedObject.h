#pragma once

#include <kovra/KVRExport.h>
#include <kovra/KVRNumber.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

class KVREntityDescription;
struct KVRManagedObjectState;
struct KVRRelationshipDescription;

/// A value compared by the find operations: text, number or date.
using KVRAttributeValue = std::variant<std::string, KVRNumber, std::chrono::system_clock::time_point>;

/// A record of the library's object store. Every record lives in the one
/// shared context: a find returns the same object for the same stored row, a
/// change is kept in memory until some record is saved, and saving any record
/// writes every pending change of the context at once.
///
/// Records are shared between the library's threads; every accessor and
/// operation takes the store's lock, so a record may be read and changed from
/// any thread.
class KOVRA_API KVRManagedObject : public std::enable_shared_from_this<KVRManagedObject> {
public:
    using TimePoint = std::chrono::system_clock::time_point;

    KVRManagedObject(const KVRManagedObject&) = delete;
    KVRManagedObject& operator=(const KVRManagedObject&) = delete;
    virtual ~KVRManagedObject();

    const std::string& entityName() const;

    /// Writes every pending change of the context in one transaction. A
    /// failure is logged; the changes stay pending.
    void save();
    /// Removes the record (and what belongs to it) and saves.
    void deleteRecord();

    /// Created and not yet written.
    bool isInserted() const;
    /// Deleted, or never part of a store: changes to it are not kept.
    bool isDeleted() const;
    /// Created, changed or deleted since the last save.
    bool hasChanges() const;

protected:
    explicit KVRManagedObject(const KVREntityDescription& entity);

    std::optional<std::string> textValue(const char* attribute) const;
    void setTextValue(const char* attribute, std::optional<std::string> value);
    std::optional<KVRNumber> numberValue(const char* attribute) const;
    void setNumberValue(const char* attribute, std::optional<KVRNumber> value);
    std::optional<TimePoint> dateValue(const char* attribute) const;
    void setDateValue(const char* attribute, std::optional<TimePoint> value);

    /// The record at the other end of a to-one relationship, whichever side
    /// keeps the link.
    std::shared_ptr<KVRManagedObject> toOneValue(const char* relationship) const;
    void setToOneValue(const char* relationship, std::shared_ptr<KVRManagedObject> value);
    std::vector<std::shared_ptr<KVRManagedObject>> toManyValue(const char* relationship) const;

    // The generic operations behind KVRRecord.
    static std::shared_ptr<KVRManagedObject> insertNewObject(const KVREntityDescription& entity);
    static std::vector<std::shared_ptr<KVRManagedObject>> fetchAll(const KVREntityDescription& entity);
    static long long countAll(const KVREntityDescription& entity);
    static std::vector<std::shared_ptr<KVRManagedObject>> fetchByAttribute(const KVREntityDescription& entity,
                                                                           const std::string& attribute,
                                                                           const KVRAttributeValue& value);

private:
    friend class KVRManagedObjectContext;
    using StoredValue = std::variant<std::monostate, std::string, KVRNumber, TimePoint>;

    KVRManagedObjectState& state() const { return *state_; }
    void setStoredValue(const char* attribute, StoredValue value);
    std::vector<std::shared_ptr<KVRManagedObject>> inverseObjects(const KVRRelationshipDescription& relationship) const;
    void setLink(const KVRRelationshipDescription& relationship, std::shared_ptr<KVRManagedObject> value);

    std::unique_ptr<KVRManagedObjectState> state_;
};
