#pragma once

class XMLWriter;

/// A message element that appends itself to an open writer.
class KVRWritableElement {
public:
    virtual ~KVRWritableElement() = default;
    virtual void write(XMLWriter& writer) const = 0;
};
