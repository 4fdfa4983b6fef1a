// Replays seed corpora through a fuzz entry without libFuzzer, so that the
// normal build and ctest keep every fixed crash fixed. Arguments are files or
// folders; a folder's files are fed one by one.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

void replay(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    std::string input = bytes.str();
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
}

}  // namespace

int main(int argc, char** argv) {
    size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        std::filesystem::path path(argv[i]);
        if (std::filesystem::is_directory(path)) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(path))
                if (entry.is_regular_file()) replay(entry.path()), ++count;
        } else if (std::filesystem::is_regular_file(path)) {
            replay(path), ++count;
        } else {
            std::fprintf(stderr, "no such corpus: %s\n", argv[i]);
            return 1;
        }
    }
    if (count == 0) {
        std::fprintf(stderr, "empty corpus\n");
        return 1;
    }
    std::printf("%zu inputs replayed\n", count);
    return 0;
}
