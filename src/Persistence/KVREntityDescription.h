#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class KVRManagedObject;
class KVREntityDescription;

enum class KVRAttributeType { Text, Number, Date };

struct KVRAttributeDescription {
    std::string name;
    KVRAttributeType type;
};

/// How a relationship is kept. The side with `ForeignKey` stores the other
/// record's row id in a column named after the relationship; the other side is
/// answered by looking for the records that point here.
enum class KVRRelationshipKind { ForeignKey, InverseToOne, InverseToMany };

/// What deleting a record does to the records that point at it through an
/// inverse relationship.
enum class KVRDeleteRule { Nullify, Cascade };

struct KVRRelationshipDescription {
    std::string name;
    const KVREntityDescription& (*destination)();
    std::string inverseName;
    KVRRelationshipKind kind;
    KVRDeleteRule deleteRule = KVRDeleteRule::Nullify;

    bool isForeignKey() const { return kind == KVRRelationshipKind::ForeignKey; }
};

/// One record type of the store: its attributes, relationships and how to
/// make an object of it. A type may specialise another (a sub-entity); it then
/// shares its parent's table and attributes, and its rows are marked with its
/// name.
class KVREntityDescription {
public:
    using Factory = std::function<std::shared_ptr<KVRManagedObject>()>;

    KVREntityDescription(std::string name, std::vector<KVRAttributeDescription> attributes,
                         std::vector<KVRRelationshipDescription> relationships, Factory factory);
    /// A sub-entity of `parent`, with the same attributes and relationships.
    KVREntityDescription(std::string name, const KVREntityDescription& parent, Factory factory);

    const std::string& name() const { return name_; }
    const KVREntityDescription& root() const { return parent_ ? parent_->root() : *this; }
    /// The table of the entity's rows: the name of its root.
    const std::string& tableName() const { return root().name(); }
    bool isKindOf(const KVREntityDescription& other) const;

    const std::vector<KVRAttributeDescription>& attributes() const { return attributes_; }
    const std::vector<KVRRelationshipDescription>& relationships() const { return relationships_; }
    std::optional<size_t> attributeIndex(const std::string& name) const;
    std::optional<size_t> foreignKeyIndex(const std::string& name) const;
    const KVRRelationshipDescription* relationship(const std::string& name) const;
    /// The relationships kept as foreign keys, in column order.
    std::vector<const KVRRelationshipDescription*> foreignKeys() const;

    std::shared_ptr<KVRManagedObject> makeObject() const { return factory_(); }

private:
    std::string name_;
    const KVREntityDescription* parent_ = nullptr;
    std::vector<KVRAttributeDescription> attributes_;
    std::vector<KVRRelationshipDescription> relationships_;
    Factory factory_;
};
