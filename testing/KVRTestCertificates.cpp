#include "testing/KVRTestCertificates.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>

namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

void check(bool ok, const char* what) {
    if (!ok) throw std::runtime_error(std::string("test certificates: ") + what + " failed");
}

Key makeKey() {
    Key key(EVP_EC_gen("P-256"), EVP_PKEY_free);
    check(key != nullptr, "EVP_EC_gen");
    return key;
}

void addExtension(X509* certificate, X509* issuer, int nid, const std::string& value) {
    X509V3_CTX ctx;
    X509V3_set_ctx_nodb(&ctx);
    X509V3_set_ctx(&ctx, issuer, certificate, nullptr, nullptr, 0);
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &ctx, nid, value.c_str());
    check(extension != nullptr, "X509V3_EXT_conf_nid");
    check(X509_add_ext(certificate, extension, -1) == 1, "X509_add_ext");
    X509_EXTENSION_free(extension);
}

Certificate makeCertificate(EVP_PKEY* key, const std::string& commonName, long serial) {
    Certificate certificate(X509_new(), X509_free);
    check(certificate != nullptr, "X509_new");
    X509* x = certificate.get();
    check(X509_set_version(x, 2) == 1, "X509_set_version");
    check(ASN1_INTEGER_set(X509_get_serialNumber(x), serial) == 1, "serial");
    check(X509_gmtime_adj(X509_getm_notBefore(x), -3600) != nullptr, "notBefore");
    check(X509_gmtime_adj(X509_getm_notAfter(x), 30L * 24 * 3600) != nullptr, "notAfter");
    check(X509_set_pubkey(x, key) == 1, "X509_set_pubkey");
    X509_NAME* subject = X509_get_subject_name(x);
    check(X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_ASC,
                                     reinterpret_cast<const unsigned char*>(commonName.c_str()), -1, -1, 0) == 1,
          "subject");
    return certificate;
}

void writeFile(const std::string& path, const std::function<int(BIO*)>& write) {
    std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new_file(path.c_str(), "w"), BIO_free);
    check(bio != nullptr, "BIO_new_file");
    check(write(bio.get()) == 1, "PEM write");
}

std::string pinOf(EVP_PKEY* key) {
    unsigned char* der = nullptr;
    int length = i2d_PUBKEY(key, &der);
    check(length > 0, "i2d_PUBKEY");
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int digestLength = 0;
    bool hashed = EVP_Digest(der, static_cast<size_t>(length), digest, &digestLength, EVP_sha256(), nullptr) == 1;
    OPENSSL_free(der);
    check(hashed, "EVP_Digest");
    std::string encoded(4 * ((digestLength + 2) / 3) + 1, '\0');
    int written = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()), digest, static_cast<int>(digestLength));
    encoded.resize(static_cast<size_t>(written));
    return "sha256//" + encoded;
}

std::string subjectAltName(const std::vector<std::string>& ipAddresses, const std::vector<std::string>& dnsNames) {
    std::string names;
    for (const auto& ip : ipAddresses) names += (names.empty() ? "IP:" : ",IP:") + ip;
    for (const auto& dns : dnsNames) names += (names.empty() ? "DNS:" : ",DNS:") + dns;
    return names;
}

}  // namespace

KVRTestCertificates KVRTestCertificates::generate(const std::string& directory, const std::string& name,
                                                  const std::vector<std::string>& ipAddresses,
                                                  const std::vector<std::string>& dnsNames) {
    static std::atomic<long> serial{1};
    Key caKey = makeKey();
    Certificate ca = makeCertificate(caKey.get(), "Kovra Test CA " + name, serial++);
    check(X509_set_issuer_name(ca.get(), X509_get_subject_name(ca.get())) == 1, "issuer");
    addExtension(ca.get(), ca.get(), NID_basic_constraints, "critical,CA:TRUE");
    addExtension(ca.get(), ca.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
    addExtension(ca.get(), ca.get(), NID_subject_key_identifier, "hash");
    check(X509_sign(ca.get(), caKey.get(), EVP_sha256()) > 0, "CA X509_sign");

    Key serverKey = makeKey();
    Certificate server = makeCertificate(serverKey.get(), ipAddresses.empty() ? dnsNames.front() : ipAddresses.front(),
                                         serial++);
    check(X509_set_issuer_name(server.get(), X509_get_subject_name(ca.get())) == 1, "issuer");
    addExtension(server.get(), ca.get(), NID_basic_constraints, "critical,CA:FALSE");
    addExtension(server.get(), ca.get(), NID_key_usage, "critical,digitalSignature,keyEncipherment");
    addExtension(server.get(), ca.get(), NID_ext_key_usage, "serverAuth");
    addExtension(server.get(), ca.get(), NID_subject_alt_name, subjectAltName(ipAddresses, dnsNames));
    addExtension(server.get(), ca.get(), NID_authority_key_identifier, "keyid:always");
    check(X509_sign(server.get(), caKey.get(), EVP_sha256()) > 0, "server X509_sign");

    KVRTestCertificates made;
    made.caCertificatePath = directory + "/" + name + "-ca.pem";
    made.certificatePath = directory + "/" + name + "-cert.pem";
    made.privateKeyPath = directory + "/" + name + "-key.pem";
    writeFile(made.caCertificatePath, [&](BIO* bio) { return PEM_write_bio_X509(bio, ca.get()); });
    writeFile(made.certificatePath, [&](BIO* bio) { return PEM_write_bio_X509(bio, server.get()); });
    writeFile(made.privateKeyPath, [&](BIO* bio) {
        return PEM_write_bio_PrivateKey(bio, serverKey.get(), nullptr, nullptr, 0, nullptr, nullptr);
    });
    made.publicKeyPin = pinOf(serverKey.get());
    return made;
}
