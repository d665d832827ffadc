#pragma once

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

namespace quorbel::testing {

/// The deleter of what OpenSSL makes.
struct OpenSslFree {
    void operator()(SSL_CTX *context) const { SSL_CTX_free(context); }
    void operator()(SSL *ssl) const { SSL_free(ssl); }
    void operator()(BIO *bio) const { BIO_free(bio); }
    void operator()(X509 *certificate) const { X509_free(certificate); }
    void operator()(X509_EXTENSION *extension) const { X509_EXTENSION_free(extension); }
    void operator()(EVP_PKEY *key) const { EVP_PKEY_free(key); }
};

}  // namespace quorbel::testing
