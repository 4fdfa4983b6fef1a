// Feeds arbitrary text to the AID and CAPK table readers and prints every
// record they build, as the table load would. Besides the sanitizers, it
// traps when a record does not come out at its fixed length.

#include "KVRFuzzCheck.h"
#include "Pinpad/Commands/KVRCommandRequestBuilder.h"
#include "Tms/KVRAidTable.h"
#include "Tms/KVRCapkTable.h"

#include <kovra/KVRException.h>

#include <string>

namespace {

// A record as the table-load command carries it: three-digit length, then the record.
size_t recordLength(const KVRTableRecordCommand& record) {
    char buffer[KVRCommandBufferSize];
    KVRCommandRequestBuilder builder(buffer);
    record.getCommand(builder);
    return static_cast<size_t>(builder.position());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    std::optional<KVRError> error;
    try {
        KVRAidTable aids;
        if (auto records = aids.readAidString(text, &error))
            for (const auto& record : *records) check(recordLength(*record) == 3 + KVRAidTableCommand::recordLength);
        KVRCapkTable capks;
        if (auto records = capks.readCapkString(text, &error))
            for (const auto& record : *records) check(recordLength(*record) == 3 + KVRCapkTableCommand::recordLength);
    } catch (const KVRException&) {
        // A host value that cannot be written into its record is refused with an exception; that is not a fault.
    }
    return 0;
}
