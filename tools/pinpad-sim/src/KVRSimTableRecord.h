#pragma once

#include <string>
#include <string_view>

/// One EMV table record as loaded by TLR: an application (AID, table type 1,
/// 281 characters) or a certification-authority public key (CAPK, table
/// type 2, 608 characters). Parsing checks every field's width and form.
class KVRSimTableRecord {
public:
    enum class Type { Aid = 1, Capk = 2 };

    static constexpr size_t kAidLength = 281;
    static constexpr size_t kCapkLength = 608;

    /// Throws KVRSimLayoutError when the text is not a well-formed record.
    static KVRSimTableRecord parse(std::string_view text);
    /// Length of a record of the type named by its first character; 0 when unknown.
    static size_t lengthForType(char typeDigit);

    Type type() const { return type_; }
    int acquirer() const { return acquirer_; }
    const std::string& recordIndex() const { return recordIndex_; }
    const std::string& text() const { return text_; }

private:
    static KVRSimTableRecord parseAid(std::string_view text);
    static KVRSimTableRecord parseCapk(std::string_view text);

    Type type_ = Type::Aid;
    int acquirer_ = 0;
    std::string recordIndex_;
    std::string text_;
};
