#include "support/KVRBenchEnvironment.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRLoggingUtil.h>

#include <filesystem>
#include <malloc.h>
#include <system_error>
#include <unistd.h>

namespace {
constexpr double kReadTimeoutSeconds = 10.0;
// Large blocks stay on the heap and the heap is not given back to the system:
// a benchmark that frees everything at each iteration would otherwise measure
// the kernel mapping and zeroing the same pages again, by chance of the order.
// (32 MiB is the largest mmap threshold glibc accepts on 64-bit machines.)
constexpr int kMmapThreshold = 32 << 20;
constexpr int kTrimThreshold = 256 << 20;
}  // namespace

KVRBenchEnvironment::KVRBenchEnvironment()
    : directory_((std::filesystem::temp_directory_path() / ("kovra-bench-" + std::to_string(getpid()))).string()) {
    mallopt(M_MMAP_THRESHOLD, kMmapThreshold);
    mallopt(M_TRIM_THRESHOLD, kTrimThreshold);
    KVRDirectories::setDataDirectory(directory_);
    KVRApplicationInfo::setValue("Kovra Pinpad Write Pause", 0.0);
    KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", kReadTimeoutSeconds);
    KVRLoggingUtil::setSink([](const std::string&) {});
}

KVRBenchEnvironment::~KVRBenchEnvironment() {
    KVRLoggingUtil::setSink({});
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}
