#include "KovraInfoTemplate.h"

#include "KovraCommandError.h"
#include "KovraOutput.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

void writeInfoTemplate(const std::string& file, KovraOutput& output) {
    size_t size = std::strlen(kKovraInfoTemplate);
    if (file.empty()) {
        std::fwrite(kKovraInfoTemplate, 1, size, stdout);
        return;
    }
    int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0) {
        throw KovraCommandError::failure(errno == EEXIST ? file + " exists; it is left as it is"
                                                         : "cannot create " + file + ": " + std::strerror(errno));
    }
    bool written = ::write(fd, kKovraInfoTemplate, size) == static_cast<ssize_t>(size);
    int error = errno;
    ::close(fd);
    if (!written) {
        ::unlink(file.c_str());
        throw KovraCommandError::failure("cannot write " + file + ": " + std::strerror(error));
    }
    output.line("information dictionary template written to " + file);
    output.document({{"file", file}});
}
