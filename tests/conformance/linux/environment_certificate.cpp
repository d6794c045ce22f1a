// libcurl names the system's certificates to OpenSSL, and no variable of the environment changes that: the
// functions it uses are replaced, as a test program that exports its own may, and name another file to the
// real ones.
#include "tests/conformance/environment_server.h"

#include <dlfcn.h>

#include <string>

namespace conformance {

namespace {

std::string trusted;

/// From the library that libcurl brought with it, which is not among those that the test is linked to.
template <typename Function>
Function real(const char* name) {
    static void* const library = dlopen("libcrypto.so.3", RTLD_LAZY | RTLD_NOLOAD);
    return reinterpret_cast<Function>(dlsym(library, name));
}

} // namespace

struct TrustedCertificate::State {};

TrustedCertificate::TrustedCertificate(const std::string& file) {
    trusted = file;
}

TrustedCertificate::~TrustedCertificate() {
    trusted.clear();
}

} // namespace conformance

// https://docs.openssl.org/3.0/man3/X509_STORE_add_cert/
extern "C" int X509_STORE_load_file(void* store, const char* file) {
    using Function = int (*)(void*, const char*);
    return conformance::real<Function>("X509_STORE_load_file")(
        store, conformance::trusted.empty() ? file : conformance::trusted.c_str());
}

extern "C" int X509_STORE_load_path(void* store, const char* folder) {
    using Function = int (*)(void*, const char*);
    if (conformance::trusted.empty())
        return conformance::real<Function>("X509_STORE_load_path")(store, folder);
    return conformance::real<Function>("X509_STORE_load_file")(store, conformance::trusted.c_str());
}
