// An application built only against the installed package.
#include <kovra/Kovra.h>

#include <cstdio>
#include <cstring>

int main() {
    if (std::strcmp(KovraSDKVersionString, KOVRA_SDK_VERSION_STRING) != 0) return 1;
    if (KVRErrors::invalidAmount().code() != 203) return 1;
    std::printf("consumer linked against kovra %s\n", KovraSDKVersionString);
    return 0;
}
