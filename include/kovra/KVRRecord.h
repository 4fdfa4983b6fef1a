#pragma once

#include <kovra/KVRExport.h>
#include <kovra/KVRManagedObject.h>

#include <memory>
#include <string>
#include <vector>

/// The generic record operations, typed for one record type. `Model` names
/// the record type; `Base` is the type it derives from (a record type that
/// specialises another passes its parent).
///
/// Attribute names are those of the stored model ("kovracode", "reference",
/// "pan"...). An unknown name, or a value of the wrong kind, is refused with a
/// log line and gives an empty result. Values are compared exactly.
template <class Model, class Base = KVRManagedObject>
class KOVRA_API KVRRecord : public Base {
public:
    using Pointer = std::shared_ptr<Model>;
    using List = std::vector<Pointer>;

    /// A new record in the context: found by the finds at once, written by the
    /// next save. Without a store it is a record that nothing keeps.
    static Pointer create() { return std::static_pointer_cast<Model>(KVRManagedObject::insertNewObject(Model::entity())); }

    /// Stored rows first, in the order they were written, then new records in
    /// the order they were created.
    static List findAll() { return cast(KVRManagedObject::fetchAll(Model::entity())); }
    /// As many as findAll() returns, without loading them.
    static long long countAll() { return KVRManagedObject::countAll(Model::entity()); }

    static List findAllByAttribute(const std::string& attribute, const std::string& value) {
        return findAllMatching(attribute, KVRAttributeValue(value));
    }
    static List findAllByAttribute(const std::string& attribute, const char* value) {
        return findAllMatching(attribute, KVRAttributeValue(std::string(value)));
    }
    static List findAllByAttribute(const std::string& attribute, const KVRNumber& value) {
        return findAllMatching(attribute, KVRAttributeValue(value));
    }
    static List findAllByAttribute(const std::string& attribute, KVRManagedObject::TimePoint value) {
        return findAllMatching(attribute, KVRAttributeValue(value));
    }

    /// The first of findAll, or none.
    static Pointer findFirst() { return first(findAll()); }

    static Pointer findFirstByAttribute(const std::string& attribute, const std::string& value) {
        return first(findAllByAttribute(attribute, value));
    }
    static Pointer findFirstByAttribute(const std::string& attribute, const char* value) {
        return first(findAllByAttribute(attribute, value));
    }
    static Pointer findFirstByAttribute(const std::string& attribute, const KVRNumber& value) {
        return first(findAllByAttribute(attribute, value));
    }
    static Pointer findFirstByAttribute(const std::string& attribute, KVRManagedObject::TimePoint value) {
        return first(findAllByAttribute(attribute, value));
    }

protected:
    KVRRecord() : Base(Model::entity()) {}
    explicit KVRRecord(const KVREntityDescription& entity) : Base(entity) {}

private:
    static List findAllMatching(const std::string& attribute, const KVRAttributeValue& value) {
        return cast(KVRManagedObject::fetchByAttribute(Model::entity(), attribute, value));
    }
    static List cast(const std::vector<std::shared_ptr<KVRManagedObject>>& objects) {
        List list;
        list.reserve(objects.size());
        for (const auto& object : objects) list.push_back(std::static_pointer_cast<Model>(object));
        return list;
    }
    static Pointer first(const List& list) { return list.empty() ? nullptr : list.front(); }
};
