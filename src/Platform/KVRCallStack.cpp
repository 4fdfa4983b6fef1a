#include "Platform/KVRCallStack.h"

#include "Utils/KVRStringUtil.h"

#include <execinfo.h>

#include <cstdlib>

std::string KVRCallStack::describe() {
    void* frames[64];
    int count = backtrace(frames, 64);
    char** symbols = backtrace_symbols(frames, count);
    std::string text = "(\n";
    for (int i = 0; symbols && i < count; ++i) text += KVRStringUtil::format("    %d %s\n", i, symbols[i]);
    free(symbols);
    return text + ")";
}
