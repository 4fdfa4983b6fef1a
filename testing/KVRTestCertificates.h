#pragma once

#include <string>
#include <vector>

/// A certificate authority and one server certificate signed by it, made
/// fresh with OpenSSL (EC P-256, SHA-256, valid from an hour ago for 30
/// days) and written as PEM files, for local HTTPS servers in tests. Give
/// caCertificatePath to the library as "Kovra CA File". Every call makes a new
/// authority, so a second set is a certificate the first CA never signed.
struct KVRTestCertificates {
    std::string caCertificatePath;
    std::string certificatePath;
    std::string privateKeyPath;
    /// The server key's pin in curl's form: "sha256//" + base64 of the SHA-256
    /// of its DER SubjectPublicKeyInfo.
    std::string publicKeyPin;

    /// Files are named <name>-ca.pem, <name>-cert.pem, <name>-key.pem inside
    /// `directory`. The server certificate names the addresses and host names
    /// given (subjectAltName). Throws std::runtime_error on an OpenSSL failure.
    static KVRTestCertificates generate(const std::string& directory, const std::string& name = "server",
                                        const std::vector<std::string>& ipAddresses = {"127.0.0.1"},
                                        const std::vector<std::string>& dnsNames = {"localhost"});
};
