// kovra: the command-line tool over the Kovra library's public providers.
#include "KovraCli.h"
#include "KovraInterrupts.h"

#include <cstdio>
#include <iostream>
#include <unistd.h>

int main(int argc, char** argv) {
    // First, before the library starts any thread (see KovraInterrupts).
    KovraInterrupts interrupts;
    int code = KovraCli(interrupts).run(argc, argv);
    // The library's worker threads live for the process and may still be
    // finishing a late completion (a second enrolment callback); leaving
    // without static destructors keeps them from running into torn-down state.
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
    _exit(code);
}
