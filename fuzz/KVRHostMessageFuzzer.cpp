// Feeds arbitrary text to the XML reader and to every reader of a host reply
// (authorisation response, cancellation advice response, configuration
// update), and to the masking of logged XML. Besides the sanitizers, it traps
// when the element tree is not a tree or masking changes a text's length.

#include "Host/Messages/KVRAcceptorAuthorisationResponse.h"
#include "Host/Messages/KVRAcceptorCancellationAdviceResponse.h"
#include "Host/TBXML.h"
#include "KVRFuzzCheck.h"
#include "Tms/KVRAcceptorConfigurationUpdate.h"
#include "Utils/KVRCardDataMasking.h"

#include <cstring>
#include <string>

namespace {

// Visits every element without recursion: a deep document must not need a deep stack here either.
void walk(const TBXML& document) {
    const TBXMLElement* element = document.rootXMLElement();
    while (element) {
        // Reading both strings to their end lets the sanitizers see an unterminated one.
        check(element->name && element->text && std::strlen(element->name) + std::strlen(element->text) < SIZE_MAX);
        for (const TBXMLAttribute* a = element->firstAttribute; a; a = a->next) check(a->name && a->value);
        if (element->firstChild) {
            check(element->firstChild->parentElement == element && !element->firstChild->previousSibling);
            element = element->firstChild;
            continue;
        }
        while (element && !element->nextSibling) element = element->parentElement;
        if (element) {
            check(element->nextSibling->previousSibling == element);
            element = element->nextSibling;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    std::optional<KVRError> error;
    TBXML document(text, &error);
    walk(document);
    check(document.rootXMLElement() || error);

    KVRAcceptorAuthorisationResponse authorisation;
    authorisation.read(text);
    KVRAcceptorCancellationAdviceResponse cancellation;
    cancellation.read(text);
    KVRAcceptorConfigurationUpdate update;
    update.read(text);
    check(KVRCardDataMasking::maskXml(text).size() == text.size());
    return 0;
}
