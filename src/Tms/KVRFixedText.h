#pragma once

#include "Pinpad/Commands/KVRCommandRequestBuilder.h"

#include <kovra/KVRException.h>

#include "Utils/KVRStringUtil.h"

#include <cstddef>
#include <cstring>
#include <string_view>

/// A character field of a PIN pad table record: room for the record's
/// `Width` characters and a terminator. A host text longer than the field is
/// not stored; the field remembers its length and refuses to be written, with
/// the record builder's own "String doesn't fit", so the table load reports
/// it instead of sending a cut value to the PIN pad.
template <size_t Width>
class KVRFixedText {
public:
    static constexpr size_t width = Width;

    KVRFixedText() { text_[0] = '\0'; }

    void assign(std::string_view text) {
        if (text.size() > Width) {
            text_[0] = '\0';
            rejectedLength_ = text.size();
            return;
        }
        std::memcpy(text_, text.data(), text.size());
        text_[text.size()] = '\0';
        rejectedLength_ = 0;
    }
    KVRFixedText& operator=(std::string_view text) {
        assign(text);
        return *this;
    }

    std::string_view view() const { return std::string_view(text_); }
    const char* c_str() const { return text_; }
    size_t length() const { return std::strlen(text_); }
    /// The length of a host text that did not fit; 0 when the field holds its text.
    size_t rejectedLength() const { return rejectedLength_; }

    /// The text then `padding` up to the width.
    void appendRight(KVRCommandRequestBuilder& builder, char padding) const {
        requireFits();
        builder.appendStringRight(view(), static_cast<int>(Width), padding);
    }
    /// `padding` up to the width, then the text.
    void appendLeft(KVRCommandRequestBuilder& builder, char padding) const {
        requireFits();
        builder.appendStringLeft(view(), static_cast<int>(Width), padding);
    }
    /// The text, which must fill the width exactly.
    void appendExact(KVRCommandRequestBuilder& builder) const {
        requireFits();
        builder.appendString(view(), static_cast<int>(Width));
    }

private:
    void requireFits() const {
        if (rejectedLength_ == 0) return;
        throw KVRException("String doesn't fit",
                           KVRStringUtil::format("String has a length of %ld while the limit is %d",
                                                 static_cast<long>(rejectedLength_), static_cast<int>(Width)));
    }

    char text_[Width + 1];
    size_t rejectedLength_ = 0;
};
