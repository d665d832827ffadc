#include "support/TestAuthority.h"

#include "support/OpenSslFree.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <stdexcept>

namespace quorbel::testing {

namespace {

constexpr long kHour = 60L * 60;
constexpr long kDay = 24 * kHour;

using Free = OpenSslFree;
using Key = std::unique_ptr<EVP_PKEY, Free>;
using Certificate = std::unique_ptr<X509, Free>;

void require(bool works) {
    if (!works) {
        throw std::runtime_error("OpenSSL cannot make a certificate");
    }
}

Key newKey() {
    Key key(EVP_EC_gen("P-256"));
    require(key != nullptr);
    return key;
}

void addExtension(X509 *certificate, X509 *issuer, int kind, const char *value) {
    X509V3_CTX context{};
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, Free> extension(
        X509V3_EXT_conf_nid(nullptr, &context, kind, value));
    require(extension && X509_add_ext(certificate, extension.get(), -1) == 1);
}

/// Unsigned.
Certificate newCertificate(const std::string &name, EVP_PKEY *key) {
    Certificate certificate(X509_new());
    require(certificate != nullptr);
    X509_set_version(certificate.get(), X509_VERSION_3);
    std::uint64_t serial = 0;
    RAND_bytes(reinterpret_cast<unsigned char *>(&serial), sizeof serial);
    ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate.get()), serial);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -kDay);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), kDay);
    const auto *text = reinterpret_cast<const unsigned char *>(name.c_str());
    require(X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN",
                                       MBSTRING_UTF8, text, -1, -1, 0) == 1 &&
            X509_set_pubkey(certificate.get(), key) == 1);
    return certificate;
}

template <typename Write>
std::string asPem(const Write &write) {
    const std::unique_ptr<BIO, Free> bio(BIO_new(BIO_s_mem()));
    require(bio && write(bio.get()) == 1);
    char *text = nullptr;
    const long length = BIO_get_mem_data(bio.get(), &text);
    return {text, static_cast<std::size_t>(length)};
}

}  // namespace

struct TestAuthority::Impl {
    Key key = newKey();
    Certificate certificate;
};

TestAuthority::TestAuthority(const std::string &name) : m_impl(std::make_unique<Impl>()) {
    m_impl->certificate = newCertificate(name, m_impl->key.get());
    X509 *self = m_impl->certificate.get();
    X509_set_issuer_name(self, X509_get_subject_name(self));
    addExtension(self, self, NID_basic_constraints, "critical,CA:TRUE");
    require(X509_sign(self, m_impl->key.get(), EVP_sha256()) != 0);
}

TestAuthority::~TestAuthority() = default;

std::string TestAuthority::certificate() const {
    return asPem([this](BIO *bio) { return PEM_write_bio_X509(bio, m_impl->certificate.get()); });
}

TestAuthority::Issued TestAuthority::issue(const std::string &names) const {
    return issueUntil(names, kDay);
}

TestAuthority::Issued TestAuthority::issueExpired(const std::string &names) const {
    return issueUntil(names, -kHour);
}

TestAuthority::Issued TestAuthority::issueUntil(const std::string &names, long seconds) const {
    const Key key = newKey();
    const Certificate certificate = newCertificate("Test", key.get());
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), seconds);
    X509 *issuer = m_impl->certificate.get();
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(issuer));
    addExtension(certificate.get(), issuer, NID_subject_alt_name, names.c_str());
    require(X509_sign(certificate.get(), m_impl->key.get(), EVP_sha256()) != 0);
    return {asPem([&](BIO *bio) { return PEM_write_bio_X509(bio, certificate.get()); }),
            asPem([&](BIO *bio) {
                return PEM_write_bio_PrivateKey(bio, key.get(), nullptr, nullptr, 0, nullptr,
                                                nullptr);
            })};
}

}  // namespace quorbel::testing
