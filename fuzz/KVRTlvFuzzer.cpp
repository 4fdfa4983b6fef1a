// Feeds arbitrary text to the walk over the chip's BER-TLV data that finds
// the ARQC (tag 9F26). Besides the sanitizers, it traps when the value found
// is not whole bytes of hexadecimal digits.

#include "KVRFuzzCheck.h"
#include "Transactions/KVRTransactionController.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    KVRTransactionController controller;
    auto arqc = controller.getArqcWithEmv(std::string(reinterpret_cast<const char*>(data), size));
    if (arqc) {
        check(arqc->size() % 2 == 0 && arqc->size() <= size);
        for (char c : *arqc) check((c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'));
    }
    return 0;
}
