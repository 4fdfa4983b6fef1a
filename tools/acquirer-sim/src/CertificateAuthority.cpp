#include "CertificateAuthority.h"

#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

namespace acqsim {
namespace {

using KeyPtr = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using CertPtr = std::unique_ptr<X509, decltype(&X509_free)>;
using BioPtr = std::unique_ptr<BIO, decltype(&BIO_free)>;

constexpr long kDay = 24 * 60 * 60;
constexpr long kCaDays = 3650;
constexpr long kServerDays = 825;
constexpr const char* kOrganisation = "Kovra acquirer emulator";

[[noreturn]] void fail(const std::string& what) {
    unsigned long code = ERR_get_error();
    char detail[256] = "";
    if (code != 0) {
        ERR_error_string_n(code, detail, sizeof detail);
    }
    ERR_clear_error();
    throw std::runtime_error(what + (code != 0 ? std::string(": ") + detail : std::string()));
}

std::string readFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void writeFile(const std::filesystem::path& file, const std::string& text, bool secret) {
    std::filesystem::path temporary = file;
    temporary += ".tmp";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        if (secret) {
            std::filesystem::permissions(temporary, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
        }
        out << text;
        if (!out) {
            throw std::runtime_error("cannot write " + temporary.string());
        }
    }
    std::filesystem::rename(temporary, file);
}

CertPtr loadCertificate(const std::filesystem::path& file) {
    std::string text = readFile(file);
    BioPtr bio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())), BIO_free);
    CertPtr cert(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr), X509_free);
    ERR_clear_error();
    return cert;
}

KeyPtr loadKey(const std::filesystem::path& file) {
    std::string text = readFile(file);
    BioPtr bio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())), BIO_free);
    KeyPtr key(PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr), EVP_PKEY_free);
    ERR_clear_error();
    return key;
}

std::string pemOf(X509* cert) {
    BioPtr bio(BIO_new(BIO_s_mem()), BIO_free);
    if (!PEM_write_bio_X509(bio.get(), cert)) {
        fail("cannot encode a certificate");
    }
    char* data = nullptr;
    long length = BIO_get_mem_data(bio.get(), &data);
    return std::string(data, static_cast<size_t>(length));
}

std::string pemOf(EVP_PKEY* key) {
    BioPtr bio(BIO_new(BIO_s_mem()), BIO_free);
    if (!PEM_write_bio_PrivateKey(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr)) {
        fail("cannot encode a private key");
    }
    char* data = nullptr;
    long length = BIO_get_mem_data(bio.get(), &data);
    return std::string(data, static_cast<size_t>(length));
}

// Still valid a day from now, so a running emulator does not expire under a test.
bool currentlyValid(X509* cert) {
    time_t tomorrow = time(nullptr) + kDay;
    return X509_cmp_current_time(X509_get0_notBefore(cert)) < 0 &&
           X509_cmp_time(X509_get0_notAfter(cert), &tomorrow) > 0;
}

KeyPtr newKey() {
    KeyPtr key(EVP_EC_gen("P-256"), EVP_PKEY_free);
    if (!key) {
        fail("cannot generate a key");
    }
    return key;
}

void addExtension(X509* cert, X509* issuer, int nid, const char* value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, cert, nullptr, nullptr, 0);
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value);
    if (extension == nullptr || !X509_add_ext(cert, extension, -1)) {
        X509_EXTENSION_free(extension);
        fail(std::string("cannot add the extension ") + value);
    }
    X509_EXTENSION_free(extension);
}

CertPtr newCertificate(EVP_PKEY* key, const char* commonName, long days) {
    CertPtr cert(X509_new(), X509_free);
    std::unique_ptr<BIGNUM, decltype(&BN_free)> serial(BN_new(), BN_free);
    if (!cert || !serial || !X509_set_version(cert.get(), 2) || !BN_rand(serial.get(), 127, BN_RAND_TOP_ANY, BN_RAND_BOTTOM_ANY) ||
        !BN_to_ASN1_INTEGER(serial.get(), X509_get_serialNumber(cert.get())) ||
        !X509_gmtime_adj(X509_getm_notBefore(cert.get()), -kDay) ||
        !X509_gmtime_adj(X509_getm_notAfter(cert.get()), days * kDay) || !X509_set_pubkey(cert.get(), key)) {
        fail("cannot prepare a certificate");
    }
    X509_NAME* name = X509_get_subject_name(cert.get());
    auto text = [](const char* s) { return reinterpret_cast<const unsigned char*>(s); };
    if (!X509_NAME_add_entry_by_txt(name, "O", MBSTRING_UTF8, text(kOrganisation), -1, -1, 0) ||
        !X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, text(commonName), -1, -1, 0)) {
        fail("cannot name a certificate");
    }
    return cert;
}

void sign(X509* cert, EVP_PKEY* signer) {
    if (!X509_sign(cert, signer, EVP_sha256())) {
        fail("cannot sign a certificate");
    }
}

} // namespace

CertificateAuthority::CertificateAuthority(std::filesystem::path directory) : directory_(std::move(directory)) {}

void CertificateAuthority::ensure() {
    std::filesystem::create_directories(directory_);

    CertPtr ca = loadCertificate(caFile());
    KeyPtr caKey = loadKey(caKeyFile());
    bool caUsable = ca && caKey && X509_check_private_key(ca.get(), caKey.get()) == 1 && currentlyValid(ca.get());
    ERR_clear_error();
    if (!caUsable) {
        caKey = newKey();
        ca = newCertificate(caKey.get(), "Kovra acquirer emulator CA", kCaDays);
        X509_set_issuer_name(ca.get(), X509_get_subject_name(ca.get()));
        addExtension(ca.get(), ca.get(), NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
        addExtension(ca.get(), ca.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
        addExtension(ca.get(), ca.get(), NID_subject_key_identifier, "hash");
        addExtension(ca.get(), ca.get(), NID_authority_key_identifier, "keyid:always");
        sign(ca.get(), caKey.get());
        writeFile(caKeyFile(), pemOf(caKey.get()), true);
        writeFile(caFile(), pemOf(ca.get()), false);
    }

    CertPtr server = loadCertificate(serverCertificateFile());
    KeyPtr serverKey = loadKey(serverKeyFile());
    bool serverUsable = caUsable && server && serverKey && X509_check_private_key(server.get(), serverKey.get()) == 1 &&
                        X509_verify(server.get(), X509_get0_pubkey(ca.get())) == 1 && currentlyValid(server.get()) &&
                        X509_check_ip_asc(server.get(), "127.0.0.1", 0) == 1 &&
                        X509_check_host(server.get(), "localhost", 0, 0, nullptr) == 1;
    ERR_clear_error();
    if (serverUsable) {
        return;
    }
    serverKey = newKey();
    server = newCertificate(serverKey.get(), "127.0.0.1", kServerDays);
    X509_set_issuer_name(server.get(), X509_get_subject_name(ca.get()));
    addExtension(server.get(), ca.get(), NID_basic_constraints, "critical,CA:FALSE");
    addExtension(server.get(), ca.get(), NID_key_usage, "critical,digitalSignature,keyEncipherment");
    addExtension(server.get(), ca.get(), NID_ext_key_usage, "serverAuth");
    addExtension(server.get(), ca.get(), NID_subject_alt_name, "IP:127.0.0.1,DNS:localhost");
    addExtension(server.get(), ca.get(), NID_subject_key_identifier, "hash");
    addExtension(server.get(), ca.get(), NID_authority_key_identifier, "keyid:always");
    sign(server.get(), caKey.get());
    writeFile(serverKeyFile(), pemOf(serverKey.get()), true);
    writeFile(serverCertificateFile(), pemOf(server.get()), false);
}

} // namespace acqsim
