#pragma once

#include <filesystem>

namespace acqsim {

// The emulator's own private CA and the server certificate it issues for
// 127.0.0.1 and localhost, kept as PEM files in the state directory:
//   ca.pem, ca-key.pem, server.pem, server-key.pem
// Created at first start and reused afterwards, so a client configured once
// with ca.pem (the library's "Kovra CA File") keeps working across restarts.
class CertificateAuthority {
public:
    explicit CertificateAuthority(std::filesystem::path directory);

    // Reuses the files when they still form a valid chain for the loopback
    // names; reissues only the server certificate when the CA is still good;
    // creates everything otherwise. Throws std::runtime_error on failure.
    void ensure();

    std::filesystem::path caFile() const { return directory_ / "ca.pem"; }
    std::filesystem::path caKeyFile() const { return directory_ / "ca-key.pem"; }
    std::filesystem::path serverCertificateFile() const { return directory_ / "server.pem"; }
    std::filesystem::path serverKeyFile() const { return directory_ / "server-key.pem"; }

private:
    std::filesystem::path directory_;
};

} // namespace acqsim
