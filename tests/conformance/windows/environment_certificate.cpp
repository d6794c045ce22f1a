#include "tests/conformance/environment_server.h"

#include <windows.h>

#include <wincrypt.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace conformance {

namespace {

/// The bytes of a certificate out of its text form.
std::vector<BYTE> decoded(const std::string& file) {
    std::ifstream stream(file);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    DWORD size = 0;
    CryptStringToBinaryA(text.c_str(), 0, CRYPT_STRING_BASE64HEADER, nullptr, &size, nullptr, nullptr);
    std::vector<BYTE> bytes(size);
    if (CryptStringToBinaryA(text.c_str(), 0, CRYPT_STRING_BASE64HEADER, bytes.data(), &size, nullptr,
                             nullptr) == FALSE)
        throw std::runtime_error(file + " is no certificate");
    return bytes;
}

} // namespace

/// The machine's store and not the user's, which asks the user.
struct TrustedCertificate::State {
    HCERTSTORE store = CertOpenStore(CERT_STORE_PROV_SYSTEM_A, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE, "Root");
    PCCERT_CONTEXT certificate = nullptr;
};

TrustedCertificate::TrustedCertificate(const std::string& file) : state_(std::make_unique<State>()) {
    const std::vector<BYTE> bytes = decoded(file);
    if (CertAddEncodedCertificateToStore(state_->store, X509_ASN_ENCODING, bytes.data(),
                                         static_cast<DWORD>(bytes.size()), CERT_STORE_ADD_ALWAYS,
                                         &state_->certificate) == FALSE ||
        CertControlStore(state_->store, 0, CERT_STORE_CTRL_COMMIT, nullptr) == FALSE)
        throw std::runtime_error("the system does not take " + file);
}

TrustedCertificate::~TrustedCertificate() {
    CertDeleteCertificateFromStore(state_->certificate); // frees it, too
    CertCloseStore(state_->store, 0);
}

} // namespace conformance
