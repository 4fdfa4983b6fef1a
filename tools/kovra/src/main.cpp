// kovra: the command-line tool over the Kovra library's public providers.
#include "KovraCli.h"
#include "KovraInterrupts.h"

#include <kovra/KVRStoreProvider.h>

#include <cstdio>
#include <iostream>
#include <unistd.h>

int main(int argc, char** argv) {
    // First, before the library starts any thread (see KovraInterrupts).
    KovraInterrupts interrupts;
    // The last clean-up on an interruption: the store file alone holds everything.
    interrupts.add([] { KVRStoreProvider::closeStore(); });
    int code = interrupts.exitCode(KovraCli(interrupts).run(argc, argv));
    KVRStoreProvider::closeStore();
    // The library's worker threads live for the process and may still be
    // finishing a late completion (a second enrolment callback); leaving
    // without static destructors (and so without the library's own closing
    // of the store, done above) keeps them from running into torn-down state.
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
    _exit(code);
}
